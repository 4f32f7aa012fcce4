// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_VOLUMECOUNTERS_H
#define VOLTVK_ENGINE_BACKING_LVM_VOLUMECOUNTERS_H

#include "voltvk/engine/backing/KernelCounters.h"
#include "voltvk/engine/backing/lvm/DeviceMapper.h"
#include "voltvk/engine/state/Records.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace voltvk {

/**
 * What the kernel counts for the volumes of a volume group: reads and writes of a tiered volume's chunks, and
 * hits and misses of a cached volume. May be used by any thread. What cannot be read is empty; lastError of
 * the device mapper says why.
 */
class VolumeCounters {
public:
  /** Maximum number of areas that the kernel counts separately for one volume. */
  static constexpr std::uint64_t MAX_AREAS = 65536;
  /** Maximum age of what counters returns. */
  static constexpr std::chrono::milliseconds MAX_AGE{1000};

  /** @param mapper must outlive this object */
  VolumeCounters(std::string group, const DeviceMapper& mapper)
      : m_group(std::move(group)), m_mapper(mapper) {}

  /** Size of the areas for a volume: its chunk, or several chunks of a volume that has many. */
  static std::uint64_t areaSectors(const VolumeRecord& volume);

  /** Makes the kernel count, unless it does already. Nothing has to be done for cached volumes. */
  void begin(const VolumeRecord& volume);

  /**
   * What has been counted since it was last taken, by whatever process; at most MAX_AGE old. A second call
   * within that time returns the same, unless it has been taken meanwhile.
   */
  KernelCounters counters(const VolumeRecord& volume);

  /**
   * The same as of now, and the kernel counts areas from 0 again; the counters of a cache go on. Begins
   * counting if the kernel does not count yet.
   */
  KernelCounters take(const VolumeRecord& volume);

private:
  using Clock = std::chrono::steady_clock;
  struct Reading {
    Clock::time_point time;
    std::uint64_t timesTaken = 0;
    KernelCounters counters;
  };

  void forget(const VolumeRecord& volume);
  std::string deviceName(const VolumeRecord& volume) const;
  std::optional<StatisticsRegion> usableRegion(const VolumeRecord& volume) const;
  std::optional<StatisticsRegion> makeRegion(const VolumeRecord& volume) const;
  KernelCounters readCache(const VolumeRecord& volume) const;

  const std::string m_group;
  const DeviceMapper& m_mapper;
  std::mutex m_mutex;                         ///< taken before libdevmapper's
  std::map<std::uint32_t, Reading> m_latest;  ///< by volume
};

}  // namespace voltvk

#endif
