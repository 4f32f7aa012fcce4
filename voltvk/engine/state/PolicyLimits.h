// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_POLICYLIMITS_H
#define VOLTVK_ENGINE_STATE_POLICYLIMITS_H

#include <cstdint>

namespace voltvk {

/** How much the policy engine does for a volume in one round. */
struct PolicyLimits {
  std::uint32_t maxMoveChunks;  ///< maximum number of chunks moved to the SSD pool
  std::uint32_t moveThreshold;  ///< accesses that make a chunk hot
};

/** What a volume's knob means: the more aggressive, the sooner chunks are moved and the more of them. */
constexpr PolicyLimits policyLimits(std::uint8_t knob) {
  return knob == 1 ? PolicyLimits{32, 2} : knob == 3 ? PolicyLimits{8, 8} : PolicyLimits{16, 4};
}

}  // namespace voltvk

#endif
