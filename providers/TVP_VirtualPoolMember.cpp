// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedPlugin.h"
#include "providers/Plugins.h"

namespace tvp::cim::fwf {

/**
 * A sample member of a pool with two extents, sectors 0 to 40 and 51 to 79. COMPAT: getting it omits the
 * extents; clients rely on both forms.
 */
class TVP_VirtualPoolMember : public FixedPlugin {
public:
  TVP_VirtualPoolMember()
      : FixedPlugin(
            {keyProperty("CreationClassName", "TVP_VirtualPoolMember"),
             keyProperty("SerialNumber", "23432125"),
             keyProperty("StartRange", std::vector<unsigned long long>{0, 51}),
             keyProperty("EndRange", std::vector<unsigned long long>{40, 79}),
             keyProperty<unsigned char>("NumberOfValidLDExtn", 2)},
            {keyProperty("CreationClassName", "TVP_VirtualPoolMember"),
             keyProperty("SerialNumber", "23432125"), keyProperty<unsigned char>("NumberOfValidLDExtn", 2)}) {
  }
};

AbstractProviderPlugin* createVirtualPoolMember() {
  return new TVP_VirtualPoolMember;
}

}  // namespace tvp::cim::fwf
