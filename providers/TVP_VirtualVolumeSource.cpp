// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedPlugin.h"
#include "providers/Plugins.h"

namespace tvp::cim::fwf {

/**
 * A sample source of a volume. COMPAT: an enumeration calls the identifier VirtualPoolId, getting it calls it
 * VirtualVolumeSourceId; clients rely on both.
 */
class TVP_VirtualVolumeSource : public FixedPlugin {
public:
  TVP_VirtualVolumeSource()
      : FixedPlugin(
            {keyProperty("CreationClassName", "TVP_VirtualVolumeSource"), keyProperty("VirtualPoolId", 21U),
             keyProperty("MaxAllowedChunks", 512ULL)},
            {keyProperty("CreationClassName", "TVP_VirtualVolumeSource"),
             keyProperty<unsigned char>("VirtualVolumeSourceId", 21),
             keyProperty("MaxAllowedChunks", 512ULL)}) {}
};

AbstractProviderPlugin* createVirtualVolumeSource() {
  return new TVP_VirtualVolumeSource;
}

}  // namespace tvp::cim::fwf
