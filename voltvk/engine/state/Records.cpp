// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Records.h"

#include "voltvk/VirtualVolume.h"

#include <algorithm>
#include <numeric>

namespace voltvk {

std::uint64_t PoolRecord::placedChunks() const {
  return std::accumulate(
      members.begin(), members.end(), std::uint64_t{0},
      [](std::uint64_t sum, const PoolMemberRecord& member) { return sum + member.chunks; });
}

bool VolumeRecord::isCached() const {
  return type == TVK_VOLUME_CACHED;
}

bool VolumeRecord::wasLaidOnSsd(std::uint64_t chunk) const {
  return std::any_of(laidOnSsd.begin(), laidOnSsd.end(), [&](const Extent& laid) {
    return chunk >= laid.first && chunk - laid.first < laid.chunks;
  });
}

void VolumeRecord::layAsNew() {
  laidOnSsd.clear();
  if (!isCached() && ssdChunks > 0) {
    laidOnSsd.push_back({hddChunks, ssdChunks});
  }
}

}  // namespace voltvk
