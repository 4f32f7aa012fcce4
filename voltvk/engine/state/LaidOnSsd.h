// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_LAIDONSSD_H
#define VOLTVK_ENGINE_STATE_LAIDONSSD_H

namespace voltvk {

/** As VolumeRecord::wasLaidOnSsd, of a row of the table chunk, for statements: 0 or 1. */
constexpr const char* LAID_ON_SSD =
    "EXISTS (SELECT 1 FROM laid_on_ssd AS laid WHERE laid.volume = chunk.volume"
    " AND chunk.number BETWEEN laid.first AND laid.first + laid.chunks - 1)";

}  // namespace voltvk

#endif
