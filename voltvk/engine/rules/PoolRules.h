// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_POOLRULES_H
#define VOLTVK_ENGINE_RULES_POOLRULES_H

#include "voltvk/Specs.h"
#include "voltvk/engine/state/Backings.h"
#include "voltvk/engine/state/Records.h"

#include <optional>
#include <string>
#include <vector>

namespace voltvk {

/** The effect of a change to a pool. A field without a value is unchanged. */
struct PoolChange {
  std::optional<std::string> name;
  std::optional<std::string> description;
  std::optional<std::uint8_t> tierLevel;
};

/** What a drive that is replaced holds of volumes. */
enum class Contents { ToBeMoved, Moved };

/**
 * Decides whether a pool may be created, changed or deleted, given the existing drives, pools and volumes.
 * Changes nothing itself. Functions throw Refusal with the status of the first rule that is broken.
 */
class PoolRules {
public:
  /** @param limits of the backing; without meaning for changes and deletions */
  PoolRules(
      const std::vector<DriveRecord>& drives, const std::vector<PoolRecord>& pools,
      const std::vector<VolumeRecord>& volumes, const BackingLimits& limits = {})
      : m_drives(drives), m_pools(pools), m_volumes(volumes), m_limits(limits) {}

  /** @return the pool to create, with its members, without an identifier. */
  PoolRecord creation(const VirtualPoolSpec& spec) const;

  /** @return what to change: only what differs from the current pool. */
  PoolChange modification(std::uint32_t poolId, const VirtualPoolSpec& spec) const;

  /** @return the pool with one more drive, whose room it has from then on. */
  PoolRecord extension(std::uint32_t poolId, std::uint16_t drive) const;

  /** @return the pool with one drive in the place of another, which holds the same chunks. */
  PoolRecord replacement(
      std::uint32_t poolId, std::uint16_t from, std::uint16_t to,
      Contents contents = Contents::ToBeMoved) const;

  /** @return the pool to delete. */
  const PoolRecord& deletion(std::uint32_t poolId) const;

  /** The volumes that have chunks on a drive of a pool, as a sentence names them. */
  std::vector<std::string> usersOf(const PoolRecord& pool, std::uint16_t drive) const;

private:
  const PoolRecord& pool(std::uint32_t poolId) const;
  /** A pool that is not internal. */
  const PoolRecord& userPool(std::uint32_t poolId) const;
  const DriveRecord& drive(std::uint16_t number) const;
  const DriveRecord& freeDrive(std::uint16_t number) const;
  /** A free drive of the pool's kind. */
  const DriveRecord& fittingDrive(std::uint16_t number, const PoolRecord& pool) const;
  /** The volumes that have chunks among these, as a sentence names them. */
  std::vector<std::string> usersOf(const PoolRecord& pool, const Extent& chunks) const;
  std::vector<const DriveRecord*> drivesOf(const VirtualPoolSpec& spec) const;
  /** The volumes that use the pool, as a sentence names them. */
  std::vector<std::string> usersOf(const PoolRecord& pool) const;
  /** @param when how the advice to delete what uses it ends */
  void requireUnused(const PoolRecord& pool, const char* when) const;
  void checkNameUnused(const std::string& name) const;
  /** Chunks that a drive has room for. */
  std::uint64_t chunksOn(const DriveRecord& drive, const PoolRecord& pool) const;
  /**
   * Gives a pool its chunks, and the room on its drives that the backing reserves.
   * @param sectors what was requested, before rounding to whole chunks
   */
  void layOut(PoolRecord& pool, std::uint64_t sectors, const std::vector<const DriveRecord*>& drives) const;

  const std::vector<DriveRecord>& m_drives;
  const std::vector<PoolRecord>& m_pools;
  const std::vector<VolumeRecord>& m_volumes;
  const BackingLimits m_limits;
};

}  // namespace voltvk

#endif
