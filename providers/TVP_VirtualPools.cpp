// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedPlugin.h"
#include "providers/Plugins.h"

namespace tvp::cim::fwf {

/**
 * The collection of pools. COMPAT: an enumeration reports 2 pools and getting the instance 5; clients rely on
 * both, neither is counted.
 */
class TVP_VirtualPools : public FixedPlugin {
public:
  TVP_VirtualPools()
      : FixedPlugin(
            {keyProperty("CreationClassName", "TVP_VirtualPools"),
             keyProperty<unsigned char>("NumberOfStoragePool", 2)},
            {keyProperty("CreationClassName", "TVP_VirtualPools"),
             keyProperty<unsigned char>("NumberOfStoragePool", 5)}) {}
};

AbstractProviderPlugin* createVirtualPools() {
  return new TVP_VirtualPools;
}

}  // namespace tvp::cim::fwf
