// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Records.h"

#include "voltvk/VirtualVolume.h"

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

}  // namespace voltvk
