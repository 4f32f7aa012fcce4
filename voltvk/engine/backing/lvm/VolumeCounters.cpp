// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/VolumeCounters.h"

#include <algorithm>
#include <utility>

namespace voltvk {

namespace {

/** The areas of a volume's region in the volume's chunks. */
std::vector<AreaCounters> inChunks(const std::vector<AreaStatistics>& areas, const VolumeRecord& volume) {
  std::vector<AreaCounters> converted;
  converted.reserve(areas.size());
  for (const AreaStatistics& area : areas) {
    converted.push_back(
        {area.firstSector / volume.chunkSectors, area.sectors / volume.chunkSectors, area.reads,
         area.writes});
  }
  return converted;
}

}  // namespace

std::uint64_t VolumeCounters::areaSectors(const VolumeRecord& volume) {
  const std::uint64_t chunks = volume.capacityChunks();
  return (chunks + MAX_AREAS - 1) / MAX_AREAS * volume.chunkSectors;
}

void VolumeCounters::begin(const VolumeRecord& volume) {
  if (!volume.isCached() && !usableRegion(volume)) {
    makeRegion(volume);
    forget(volume);
  }
}

KernelCounters VolumeCounters::counters(const VolumeRecord& volume) {
  const std::optional<StatisticsRegion> region = volume.isCached() ? std::nullopt : usableRegion(volume);
  const std::lock_guard<std::mutex> lock(m_mutex);
  const Clock::time_point now = Clock::now();
  const std::uint64_t timesTaken = region ? region->timesTaken : 0;
  const auto known = m_latest.find(volume.id);
  if (known != m_latest.end() && now - known->second.time < MAX_AGE &&
      known->second.timesTaken == timesTaken) {
    return known->second.counters;
  }
  Reading& latest = m_latest[volume.id];
  latest = {now, timesTaken, {}};
  if (volume.isCached()) {
    latest.counters = readCache(volume);
  } else if (region) {
    latest.counters.areas = inChunks(m_mapper.read(deviceName(volume), *region), volume);
  }
  return latest.counters;
}

KernelCounters VolumeCounters::take(const VolumeRecord& volume) {
  KernelCounters taken;
  if (volume.isCached()) {
    taken = readCache(volume);
  } else if (const std::optional<StatisticsRegion> region = usableRegion(volume)) {
    taken.areas = inChunks(m_mapper.take(deviceName(volume), *region), volume);
  } else {
    makeRegion(volume);
  }
  forget(volume);
  return taken;
}

void VolumeCounters::forget(const VolumeRecord& volume) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_latest.erase(volume.id);
}

std::string VolumeCounters::deviceName(const VolumeRecord& volume) const {
  return DeviceMapper::deviceName(m_group, "vol" + std::to_string(volume.id));
}

std::optional<StatisticsRegion> VolumeCounters::usableRegion(const VolumeRecord& volume) const {
  const std::optional<StatisticsRegion> region = m_mapper.region(deviceName(volume));
  // The kernel may have had no memory for areas that are as small as they should be.
  const bool fits = region && region->firstSector == 0 && region->sectors == volume.capacitySectors() &&
                    region->areaSectors >= areaSectors(volume) &&
                    region->areaSectors % volume.chunkSectors == 0;
  return fits ? region : std::nullopt;
}

std::optional<StatisticsRegion> VolumeCounters::makeRegion(const VolumeRecord& volume) const {
  return m_mapper.createRegion(deviceName(volume), volume.capacitySectors(), areaSectors(volume));
}

KernelCounters VolumeCounters::readCache(const VolumeRecord& volume) const {
  KernelCounters counters;
  if (const std::optional<CacheStatus> status = m_mapper.cacheStatus(deviceName(volume))) {
    counters.cache = status->counters;
  }
  return counters;
}

}  // namespace voltvk
