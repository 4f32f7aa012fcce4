// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_BACKING_H
#define VOLTVK_ENGINE_BACKING_BACKING_H

#include "voltvk/engine/backing/KernelCounters.h"
#include "voltvk/engine/state/Backings.h"
#include "voltvk/engine/state/Intents.h"
#include "voltvk/engine/state/Records.h"
#include "voltvk/engine/state/Snapshot.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace voltvk {

/** The progress of moving chunks from one drive to another, in sectors. @return whether to go on */
using MoveProgress = std::function<bool(std::uint64_t moved, std::uint64_t total)>;

/** The progress of a flush: blocks that have still to be written back. @return whether to go on */
using FlushProgress = std::function<bool(std::uint64_t dirtyBlocks)>;

/** Follows the name of a pool or volume among the differences of a backing: what is recorded beside its data
 * is not what the configuration says. */
constexpr const char* OTHER_MARKS = "has other marks than the state: ";

/** A drive of a pool, and one that takes its place. */
struct DriveExchange {
  std::uint16_t from = 0;
  std::uint16_t to = 0;
};

/**
 * Where the chunks of pools and volumes really are. The rules, the state and the events do not know which
 * backing is in use; changes go through it, between two transactions of the state.
 *
 * Every step can be repeated: making what exists as wanted, and removing what does not exist, succeed. A step
 * throws Refusal TVK_BACKING_FAILED with the message of what failed, and leaves what it cannot undo for the
 * next attempt. Only one step at a time: the caller holds the backing's lock. The functions that only read
 * may be called from any thread at any time and start no program.
 */
class Backing {
public:
  /** A backing for the choice. */
  static std::unique_ptr<Backing> of(const BackingChoice& choice);

  Backing() = default;
  virtual ~Backing() = default;
  Backing(const Backing&) = delete;
  Backing& operator=(const Backing&) = delete;

  /** False if there are no steps to carry out, so that a change is one transaction of the state. */
  virtual bool isReal() const = 0;

  /**
   * @throws Refusal TVK_BACKING_UNAVAILABLE that says what is missing: programs, the device mapper,
   *   permission; or that a volume group of the chosen name belongs to somebody else
   */
  virtual void requireUsable() = 0;

  /** Makes volumes available that a start of the machine left inactive; completes interrupted moves. */
  virtual void activate() = 0;

  /**
   * Looks whether what is to be made exists already, before any of it is made or, if that fails, removed.
   * @param configuration contains the drives of the steps
   * @throws Refusal TVK_BACKING_FAILED if a pool or volume has the number of one that is to be made: the
   * state is older than what is on the drives
   */
  virtual void requireUnknown(const std::vector<Intent>& steps, const Configuration& configuration) = 0;

  /**
   * Claims the drives of a pool. @param configuration contains the pool and its drives
   * @throws Refusal TVK_DEVICE_NOT_ELIGIBLE if a drive is used otherwise
   */
  virtual void makePool(const PoolRecord& pool, const Configuration& configuration) = 0;
  /** Releases the drives of a pool, also those that were claimed in part. @param configuration as above */
  virtual void removePool(const PoolRecord& pool, const Configuration& configuration) = 0;
  /**
   * Claims a drive for a pool that exists. @param pool with the drive as its last member
   * @throws Refusal as makePool
   */
  virtual void extendPool(const PoolRecord& pool, const Configuration& configuration) = 0;
  /** Releases a drive that a pool does not have. @param pool without the drive, which holds nothing of it */
  virtual void
  releaseDrive(const PoolRecord& pool, std::uint16_t drive, const Configuration& configuration) = 0;
  /**
   * Moves all chunks from one drive to another, to the same places, and releases the first one. Volumes can
   * be used meanwhile. Goes on where an earlier call ended.
   * @param pool has the first drive as a member @param progress is called between moves; may be empty
   * @throws Refusal TVK_BACKING_FAILED also if progress ends it early; what is moved stays where it is
   */
  virtual void replaceDrive(
      const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration,
      const MoveProgress& progress) = 0;
  /** Releases the second drive, unless chunks have been moved to it, or the first one is released already.
   * @return whether the first drive is the pool's as before */
  virtual bool undoReplacement(
      const PoolRecord& pool, const DriveExchange& drives, const Configuration& configuration) = 0;
  /** Records a changed name or description beside the data. @return whether something else was recorded there
   */
  virtual bool describePool(const PoolRecord& pool, const Configuration& configuration) = 0;

  /** Makes the block device of a volume. @param configuration contains its pools and their drives */
  virtual void makeVolume(const VolumeRecord& volume, const Configuration& configuration) = 0;
  /** @throws Refusal TVK_VOLUME_OPEN if the volume is mounted or otherwise open */
  virtual void removeVolume(std::uint32_t volumeId) = 0;
  /** The same for a volume. */
  virtual bool describeVolume(const VolumeRecord& volume) = 0;
  /**
   * Makes a volume as large as its record says: adds what is missing at its end, or drops what is behind it.
   * Everything before that stays as it is, and the volume can be used meanwhile.
   */
  virtual void resizeVolume(const VolumeRecord& volume, const Configuration& configuration) = 0;

  /**
   * Moves chunks of a tiered volume between its two pools. Contents do not change, and the volume can be used
   * meanwhile.
   * @param demoted numbers of chunks that move to hard disks first, to free chunks of that pool
   * @param promoted numbers of chunks that then move to SSDs, to chunks that are free by then
   * @throws Refusal TVK_NOT_ENOUGH_SPACE if there is no room, or the volume would have too many pieces
   */
  virtual void exchange(
      const VolumeRecord& volume, const std::vector<std::uint64_t>& demoted,
      const std::vector<std::uint64_t>& promoted, const Configuration& configuration) = 0;

  /** Where the chunks of a volume are, in the order of its addresses. */
  virtual std::vector<VolumeExtentRecord>
  layout(const VolumeRecord& volume, const Configuration& configuration) = 0;

  /**
   * Writes back what is only in the cache of a volume, and lets the cache work as usual again.
   * @param progress is called about once a second; when it returns false the flush ends early
   * @return blocks that were written back
   */
  virtual std::uint64_t flush(const VolumeRecord& volume, const FlushProgress& progress) = 0;
  /** Lets the cache of a volume work as usual again, after a flush that was cut off. */
  virtual void endFlush(const VolumeRecord& volume) = 0;

  /** Differences between the configuration and what there is: one sentence each, in the order of numbers. */
  virtual std::vector<std::string> differences(const Configuration& configuration) = 0;

  /**
   * Those of the differences that show a configuration of another time or machine: pools, volumes or drives
   * that only one of both has, or that have other marks. Not what is missing or broken, nor where chunks are.
   */
  virtual std::vector<std::string> contradictions(const Configuration& configuration) = 0;

  /** The configuration as far as it can be told from the drives alone: drives are matched by device node. */
  virtual Configuration recovered(const std::vector<DriveRecord>& drives) = 0;

  // Reading: any thread, no program is started.

  /** The device node of a volume, such as "/dev/tvp/vol1"; empty if it has none. */
  virtual std::string devicePath(std::uint32_t volumeId) const = 0;
  /** True while somebody has the volume open, by mounting it for example. */
  virtual bool isOpen(std::uint32_t volumeId) const = 0;
  /** What the kernel has counted for a volume, since the last takeCounters; at most a second old. */
  virtual KernelCounters counters(const VolumeRecord& volume) const = 0;
  /** The same, and the kernel begins anew. Begins counting if the kernel does not count yet. */
  virtual KernelCounters takeCounters(const VolumeRecord& volume) = 0;
};

}  // namespace voltvk

#endif
