// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMREPLACEMENT_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMREPLACEMENT_H

#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/backing/lvm/LvmGroup.h"

#include <string>
#include <vector>

namespace voltvk {

/**
 * Gives a drive's place in its pool to another drive. Meanwhile both carry the marks of that place, and every
 * extent is at the same place of one of them, so the chunks of the pool keep their numbers and nothing that
 * the state or a volume says of them changes. Functions throw Refusal.
 */
class LvmReplacement {
public:
  /** All arguments must outlive this object. @param pool has the first drive as a member */
  LvmReplacement(
      const LvmCommand& command, std::string group, const PoolRecord& pool, const DriveExchange& drives,
      const Configuration& configuration);

  /** As Backing::replaceDrive. */
  void carryOut(const MoveProgress& progress);
  /** As Backing::undoReplacement. */
  bool undo();

private:
  /** Extents of logical volumes on a drive, by their places; in pieces that are moved one at a time. */
  static std::vector<LvmPart> partsOn(const LvmGroup& group, const DriveRecord& drive);
  /** Nothing can be added to a group that lacks a drive. */
  void requireNoneMissing() const;
  void move(const LvmPart& part);

  const LvmCommand& m_command;
  const std::string m_group;
  const PoolRecord& m_pool;
  const Configuration& m_configuration;
  const DriveRecord& m_from;
  const DriveRecord& m_to;
};

}  // namespace voltvk

#endif
