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

/** The progress of a flush: blocks that have still to be written back. @return whether to go on */
using FlushProgress = std::function<bool(std::uint64_t dirtyBlocks)>;

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
   * @throws Refusal TVK_BACKING_FAILED if a pool or volume has the number of one that is to be made: the
   * state is older than what is on the drives
   */
  virtual void requireUnknown(const std::vector<Intent>& steps) = 0;

  /**
   * Claims the drives of a pool. @param configuration contains the pool and its drives
   * @throws Refusal TVK_DEVICE_NOT_ELIGIBLE if a drive is used otherwise
   */
  virtual void makePool(const PoolRecord& pool, const Configuration& configuration) = 0;
  /** Releases the drives of a pool, also those that were claimed in part. @param configuration as above */
  virtual void removePool(const PoolRecord& pool, const Configuration& configuration) = 0;
  /** Records a changed name or description beside the data. */
  virtual void describePool(const PoolRecord& pool, const Configuration& configuration) = 0;

  /** Makes the block device of a volume. @param configuration contains its pools and their drives */
  virtual void makeVolume(const VolumeRecord& volume, const Configuration& configuration) = 0;
  /** @throws Refusal TVK_VOLUME_OPEN if the volume is mounted or otherwise open */
  virtual void removeVolume(std::uint32_t volumeId) = 0;
  virtual void describeVolume(const VolumeRecord& volume) = 0;

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
