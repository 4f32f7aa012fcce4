// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedPlugin.h"
#include "providers/Plugins.h"

namespace tvp::cim::fwf {

/**
 * The collection of drives. COMPAT: an enumeration reports 2 drives and getting the instance 10; clients rely
 * on both, neither is counted.
 */
class TVP_LogicalDevices : public FixedPlugin {
public:
  TVP_LogicalDevices()
      : FixedPlugin(
            {keyProperty("CreationClassName", "TVP_LogicalDevices"),
             keyProperty("NumberOfLogicalDevices", 2U)},
            {keyProperty("CreationClassName", "TVP_LogicalDevices"),
             keyProperty("NumberOfLogicalDevices", 10U)}) {}
};

AbstractProviderPlugin* createLogicalDevices() {
  return new TVP_LogicalDevices;
}

}  // namespace tvp::cim::fwf
