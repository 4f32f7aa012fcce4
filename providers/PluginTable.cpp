// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/PluginTable.h"

#include "providers/TVP_LogicalDevice.h"
#include "providers/TVP_LogicalDevices.h"
#include "providers/TVP_TarvexProIdentity.h"
#include "providers/TVP_TierService.h"
#include "providers/TVP_VirtualPool.h"
#include "providers/TVP_VirtualPoolMember.h"
#include "providers/TVP_VirtualPools.h"
#include "providers/TVP_VirtualVolume.h"
#include "providers/TVP_VirtualVolumeSource.h"
#include "providers/TVP_VirtualVolumes.h"

#include <array>

namespace tvp::cim::fwf {

namespace {

template <typename Plugin>
AbstractProviderPlugin* create() {
  return new Plugin();
}

}  // namespace

PluginTable pluginTable() {
  static constexpr std::array<PluginTableRow, 10> ROWS = {
      {{"tvp_tarvexproidentity", create<TVP_TarvexProIdentity>},
       {"tvp_logicaldevice", create<TVP_LogicalDevice>},
       {"tvp_logicaldevices", create<TVP_LogicalDevices>},
       {"tvp_virtualpoolmember", create<TVP_VirtualPoolMember>},
       {"tvp_virtualpool", create<TVP_VirtualPool>},
       {"tvp_virtualpools", create<TVP_VirtualPools>},
       {"tvp_virtualvolumesource", create<TVP_VirtualVolumeSource>},
       {"tvp_virtualvolume", create<TVP_VirtualVolume>},
       {"tvp_virtualvolumes", create<TVP_VirtualVolumes>},
       {"tvp_tierservice", create<TVP_TierService>}}};
  return {ROWS.data(), ROWS.size()};
}

}  // namespace tvp::cim::fwf
