// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedPlugin.h"
#include "providers/Plugins.h"

namespace tvp::cim::fwf {

/**
 * The collection of volumes. COMPAT: it calls itself a TVP_LogicalDevice, an enumeration reports 2 volumes
 * and getting the instance 8; clients rely on all three.
 */
class TVP_VirtualVolumes : public FixedPlugin {
public:
  TVP_VirtualVolumes()
      : FixedPlugin(
            {keyProperty("CreationClassName", "TVP_LogicalDevice"),
             keyProperty<unsigned char>("NumberOfVirtualVolumesPresent", 2)},
            {keyProperty("CreationClassName", "TVP_LogicalDevice"),
             keyProperty<unsigned char>("NumberOfVirtualVolumesPresent", 8)}) {}
};

AbstractProviderPlugin* createVirtualVolumes() {
  return new TVP_VirtualVolumes;
}

}  // namespace tvp::cim::fwf
