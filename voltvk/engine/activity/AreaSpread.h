// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_AREASPREAD_H
#define VOLTVK_ENGINE_ACTIVITY_AREASPREAD_H

#include "voltvk/engine/activity/TouchRecorder.h"
#include "voltvk/engine/backing/KernelCounters.h"

#include <cstdint>
#include <map>
#include <vector>

namespace voltvk {

/** Whether each chunk with a row is on SSD, by its number. */
using KnownChunks = std::map<std::uint64_t, bool>;

/** What was counted for the areas of a volume, chunk by chunk. */
struct SpreadTouches {
  VolumeTouches touches;
  Touches onSsd;  ///< how many of all went to SSDs
};

/**
 * Spreads what was counted for the areas of a tiered volume evenly over the chunks of each area. Besides the
 * known chunks, as many get touches of their own as are remembered: those of the hottest areas.
 */
SpreadTouches spreadOverChunks(
    const VolumeRecord& volume, const std::vector<AreaCounters>& areas, const KnownChunks& known);

}  // namespace voltvk

#endif
