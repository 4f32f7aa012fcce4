// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/Overview.h"

#include "host/tvpcim/output/Listing.h"

namespace tvp::host::tvpcim {
namespace {

void readExtents(Inventory& inventory, std::uint32_t pool, Overview& overview) {
  if (overview.extents.count(pool) == 0) {
    overview.extents[pool] = inventory.membersOf<DriveExtent>(Pool::KIND, pool);
  }
}

void readCounters(Inventory& inventory, std::uint32_t volume, Overview& overview) {
  const std::string method = "GetVirtualVolumeStats";
  Arguments arguments;
  arguments.add(Volume::KIND.number, Value::uint32(volume));
  const MethodOutcome outcome = inventory.callService(method, arguments);
  if (outcome.ok()) {
    const Instance answer = answerOf(method, outcome);
    if (numberOf(answer, "RetStat") == 0) {
      overview.counters.emplace(volume, answer);
    }
  }
}

}  // namespace

Overview readOverview(Inventory& inventory, OverviewDepth depth) {
  inventory.forget();
  Overview overview;
  overview.identity = inventory.requireIdentity();
  overview.drives = inventory.instances(Drive::KIND);
  overview.pools = inventory.instances(Pool::KIND);
  overview.volumes = inventory.instances(Volume::KIND);
  overview.complete = depth == OverviewDepth::All && inventory.mayCallMethods();
  if (!overview.complete) {
    return overview;
  }
  for (const Pool& pool : inventory.all<Pool>()) {
    readExtents(inventory, pool.number, overview);
  }
  for (const Volume& volume : inventory.all<Volume>()) {
    overview.uses[volume.number] = inventory.membersOf<PoolUse>(Volume::KIND, volume.number);
    for (const PoolUse& use : overview.uses[volume.number]) {
      readExtents(inventory, use.pool, overview);
    }
    readCounters(inventory, volume.number, overview);
  }
  return overview;
}

}  // namespace tvp::host::tvpcim
