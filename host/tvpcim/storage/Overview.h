// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_OVERVIEW_H
#define HOST_TVPCIM_STORAGE_OVERVIEW_H

#include "host/tvpcim/Inventory.h"

#include <cstdint>
#include <map>
#include <vector>

namespace tvp::host::tvpcim {

/** All that a client can see of the storage, as it was when it was read; a plain value. */
struct Overview {
  Instance identity;
  std::vector<Instance> drives;
  std::vector<Instance> pools;
  std::vector<Instance> volumes;

  /** Whether what follows could be asked for: it is what methods answer, to administrators only. */
  bool complete = false;
  std::map<std::uint32_t, std::vector<DriveExtent>> extents;  ///< by pool, those of cached drives included
  std::map<std::uint32_t, std::vector<PoolUse>> uses;         ///< by volume
  std::map<std::uint32_t, Instance> counters;                 ///< by volume, unless it has just vanished
};

/** How much of it is read. */
enum class OverviewDepth { Objects, All };

/**
 * Reads the present state. Where methods are refused to the user, the overview has the objects only.
 * @throws OperationError when there is no driver, or something cannot be read
 */
Overview readOverview(Inventory& inventory, OverviewDepth depth = OverviewDepth::All);

}  // namespace tvp::host::tvpcim

#endif
