// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_VOLUMEUPKEEP_H
#define VOLTVK_ENGINE_CONTRACT_VOLUMEUPKEEP_H

#include "voltvk/UserStatistics.h"
#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/contract/State.h"

#include <cstdint>

namespace voltvk {

/** What a round of the policy engine did for a volume, or would do. */
struct RoundResult {
  std::uint64_t promoted = 0;  ///< chunks moved to the SSD pool
  std::uint64_t demoted = 0;   ///< chunks moved to the hard-disk pool in exchange
};

/**
 * What keeps volumes going, with any backing: flushing, counting, moving chunks. Functions throw Refusal;
 * they may be called from any thread.
 */
class VolumeUpkeep {
public:
  explicit VolumeUpkeep(State& state) : m_state(state) {}

  /** Writes back what is only in the cache of a volume. @param progress as for Backing::flush; may be empty
   */
  void flush(std::uint32_t volumeId, const FlushProgress& progress = {});

  /** Adds what the kernel has counted to the statistics and the heat. */
  void collect(std::uint32_t volumeId);

  void resetStatistics(std::uint32_t volumeId);

  d_ioctl_user_stat statistics(std::uint32_t volumeId);

  /**
   * Runs one round of the policy engine for a volume; does nothing while the engine is stopped.
   * @param dryRun only finds out what would be moved
   */
  RoundResult runRound(std::uint32_t volumeId, bool dryRun = false);

private:
  VolumeRecord find(std::uint32_t volumeId);
  void collect(Backing& backing, const VolumeRecord& volume);
  RoundResult planRound(Backing& backing, std::uint32_t volumeId);
  RoundResult runRoundOnDrives(Backing& backing, std::uint32_t volumeId);

  State& m_state;
};

}  // namespace voltvk

#endif
