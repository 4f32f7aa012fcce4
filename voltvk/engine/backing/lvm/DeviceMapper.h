// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_DEVICEMAPPER_H
#define VOLTVK_ENGINE_BACKING_LVM_DEVICEMAPPER_H

#include "voltvk/engine/backing/KernelCounters.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace voltvk {

/** A device of the device mapper. */
struct MappedDevice {
  std::uint32_t openCount = 0;  ///< by mounts, programs and other devices
  bool isSuspended = false;
};

/** The state of a device whose only target is a cache. */
struct CacheStatus {
  CacheCounters counters;
  std::string policy;       ///< "smq", "cleaner" ...
  bool hasFailed = false;   ///< all I/O fails; the counters are 0
  bool needsCheck = false;  ///< the cache's metadata has to be checked before it can be changed again
};

/** A region of a device whose reads and writes the kernel counts for us, area by area. */
struct StatisticsRegion {
  std::uint64_t id = 0;
  std::uint64_t firstSector = 0;
  std::uint64_t sectors = 0;
  std::uint64_t areaSectors = 0;  ///< of each area; the last one may be smaller
  std::uint64_t timesTaken = 0;   ///< how often the counters have been taken, by any process

  std::uint64_t areas() const { return areaSectors == 0 ? 0 : (sectors + areaSectors - 1) / areaSectors; }
};

/** What the kernel has counted for one area of a region. */
struct AreaStatistics {
  std::uint64_t firstSector = 0;
  std::uint64_t sectors = 0;
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;
};

/**
 * The kernel's device mapper, through libdevmapper. Starts no program and prints nothing.
 *
 * Any number of threads may use any number of these objects: libdevmapper itself is used by one of them at a
 * time. What cannot be read, because the device mapper, the device or the permission is missing, reads as
 * nothing; lastError says why. Functions throw std::bad_alloc only.
 */
class DeviceMapper {
public:
  /** The name of a logical volume's device, such as "tvp-vol1". */
  static std::string deviceName(const std::string& group, const std::string& volume);

  /** Why the device mapper cannot be used: a sentence for an administrator; empty if it can be used. */
  std::string obstacle() const;

  /** @return nothing if there is no such device */
  std::optional<MappedDevice> device(const std::string& name) const;

  /** Does not make the cache write anything. @return nothing if the device is no cache */
  std::optional<CacheStatus> cacheStatus(const std::string& name) const;

  /** Our region of a device. @return nothing if the kernel does not count for us */
  std::optional<StatisticsRegion> region(const std::string& name) const;

  /**
   * Makes the kernel count reads and writes of a device from its first sector on, instead of in any region of
   * ours there may be. The region lasts until the device is deactivated. The kernel may not have the memory
   * for so many areas; then they are larger, by powers of two.
   */
  std::optional<StatisticsRegion>
  createRegion(const std::string& name, std::uint64_t sectors, std::uint64_t areaSectors) const;

  /** The areas with reads or writes, in ascending order. */
  std::vector<AreaStatistics> read(const std::string& name, const StatisticsRegion& region) const;

  /** The same, and each area begins to count from 0 again. What is read before a failure is returned. */
  std::vector<AreaStatistics> take(const std::string& name, const StatisticsRegion& region) const;

  /** Why the last call of this object returned less than there is; empty if it did not. */
  std::string lastError() const;

private:
  class Session;

  std::vector<AreaStatistics>
  print(const std::string& name, const StatisticsRegion& region, bool clear) const;

  mutable std::string m_lastError;  ///< guarded by the mutex of all sessions
};

}  // namespace voltvk

#endif
