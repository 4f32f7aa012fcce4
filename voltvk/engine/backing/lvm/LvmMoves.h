// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMMOVES_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMMOVES_H

#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/backing/lvm/LvmGroup.h"
#include "voltvk/engine/state/Snapshot.h"

#include <cstdint>
#include <string>
#include <vector>

namespace voltvk {

/** Extents that change their place. */
struct LvmMove {
  std::size_t fromDrive = 0;  ///< index in LvmGroup::drives
  std::uint64_t from = 0;
  std::size_t toDrive = 0;
  std::uint64_t to = 0;
  std::uint64_t extents = 0;
};

/** What a command that moves so many extents may take; the slowest drives move some MiB in a second. */
ProgramLimits limitsFor(std::uint64_t extents);

/** Moves that one command carries out: all of them from one drive. */
using LvmMoveBatch = std::vector<LvmMove>;

/**
 * Chooses free chunks for chunks of a tiered volume that are to be in one of its pools, and groups the moves.
 * What is there already stays.
 * @param chunks numbers of chunks of the volume
 * @param target one of the volume's pools
 * @throws Refusal TVK_NOT_ENOUGH_SPACE if there is no room, or the group would have too many pieces
 */
std::vector<LvmMoveBatch> planMoves(
    const LvmGroup& group, const VolumeRecord& volume, std::vector<std::uint64_t> chunks,
    const PoolRecord& target, const Configuration& configuration);

/** Moves chunks of tiered volumes while they are in use. Functions throw Refusal. */
class LvmMoves {
public:
  /**
   * Parts of all logical volumes that a group may have. Its metadata has room for more, but the time of every
   * command of the volume manager grows faster than their number: measured in the emulated machine, moving 12
   * extents takes 23 s with 8,192 parts and 65 s with 16,384.
   */
  static constexpr std::size_t MAX_PARTS = 16384;

  LvmMoves(const LvmCommand& command, std::string group) : m_command(command), m_group(std::move(group)) {}

  /** As Backing::exchange. */
  void exchange(
      const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
      const std::vector<std::uint64_t>& promoted, const Configuration& configuration);

  /** Completes moves that were interrupted. @return whether there were any */
  bool complete();

private:
  void move(
      const VolumeRecord& volume, const std::vector<std::uint64_t>& chunks, std::uint8_t tierLevel,
      const Configuration& configuration);
  void carryOut(const LvmGroup& group, const VolumeRecord& volume, const LvmMoveBatch& batch);

  const LvmCommand& m_command;
  const std::string m_group;
};

}  // namespace voltvk

#endif
