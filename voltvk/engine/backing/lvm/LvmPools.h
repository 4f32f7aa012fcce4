// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMPOOLS_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMPOOLS_H

#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/backing/lvm/LvmGroup.h"
#include "voltvk/engine/state/Snapshot.h"

#include <string>
#include <vector>

namespace voltvk {

/** Claims and releases the drives of pools. Functions throw Refusal. */
class LvmPools {
public:
  LvmPools(const LvmCommand& command, std::string group) : m_command(command), m_group(std::move(group)) {}

  /** Claims what is not the pool's yet. @param verb what for: "make", "extend" */
  void make(const PoolRecord& pool, const Configuration& configuration, const char* verb = "make");
  void remove(const PoolRecord& pool, const Configuration& configuration);
  /** @return whether the drives carried something else */
  bool describe(const PoolRecord& pool);

  /**
   * Claims a drive that is to have what another drive of a pool has: it gets the marks of that drive, too.
   * @param position of the other drive in the pool
   */
  void claimReplacement(const PoolRecord& pool, std::size_t position, const DriveRecord& drive);
  /**
   * Takes an empty drive out of a pool, however far it came into it; does nothing if it is not of the pool.
   * @throws Refusal also if it may be one that is missing and holds parts of volumes
   */
  void release(const PoolRecord& pool, std::uint16_t drive, const Configuration& configuration);

  /**
   * Drops the drives of a pool that are missing.
   * @param task what for: "delete pool 2 (fast)" @throws Refusal if parts of volumes are on them
   */
  void
  dropGoneDrives(const PoolRecord& pool, const Configuration& configuration, const std::string& task) const;

  /** Uses drives again that were missing when the group was changed: what is on them is still what it was. */
  void restoreReturned(const LvmGroup& group) const;

private:
  /** Drives of a pool that is removed, in every state they can be in. */
  struct Claimed {
    std::vector<std::string> members;  ///< device nodes in the group
    std::vector<std::string> loose;    ///< device nodes of physical volumes in no group
    bool someAreGone = false;
    bool areAll = false;  ///< nothing else is in the group
  };

  void claim(const DriveRecord& drive) const;
  Claimed claimed(const LvmGroup& group, const PoolRecord& pool, const Configuration& configuration) const;
  void mark(
      const LvmGroup& group, const PoolRecord& pool, std::size_t position, const DriveRecord& drive,
      const std::string& task) const;

  const LvmCommand& m_command;
  const std::string m_group;
};

/** The drive with a number. @throws Refusal TVK_BACKING_FAILED if the configuration has none */
const DriveRecord& driveOf(std::uint16_t number, const Configuration& configuration);
/** The drive of a member. @throws Refusal TVK_BACKING_FAILED if the configuration has none */
const DriveRecord& driveOf(const PoolMemberRecord& member, const Configuration& configuration);

/** @throws Refusal TVK_BACKING_UNAVAILABLE if a group of that name belongs to somebody else */
void requireOurGroup(const LvmGroup& group);

}  // namespace voltvk

#endif
