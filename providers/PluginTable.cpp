// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/PluginTable.h"

#include "providers/Plugins.h"

#include <iterator>

namespace tvp::cim::fwf {

PluginTable pluginTable() {
  static constexpr PluginTableRow ROWS[] = {
      {"tvp_tarvexproidentity", createTarvexProIdentity},
      {"tvp_logicaldevice", createLogicalDevice},
      {"tvp_logicaldevices", createLogicalDevices},
      {"tvp_virtualpoolmember", createVirtualPoolMember},
      {"tvp_virtualpool", createVirtualPool},
      {"tvp_virtualpools", createVirtualPools},
      {"tvp_virtualvolumesource", createVirtualVolumeSource},
      {"tvp_virtualvolume", createVirtualVolume},
      {"tvp_virtualvolumes", createVirtualVolumes},
      {"tvp_tierservice", createTierService}};
  return {ROWS, std::size(ROWS)};
}

}  // namespace tvp::cim::fwf
