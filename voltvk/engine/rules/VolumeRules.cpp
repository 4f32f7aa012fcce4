// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/VolumeRules.h"

#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/rules/ChunkAllocator.h"
#include "voltvk/engine/rules/Limits.h"
#include "voltvk/engine/rules/Refusal.h"
#include "voltvk/engine/rules/TextRules.h"

#include <algorithm>

namespace voltvk {

namespace {

std::uint8_t checkedKnob(std::uint32_t knob) {
  require(knob <= TVK_KNOB_PASSIVE, TVK_INVALID_KNOB);
  return static_cast<std::uint8_t>(knob);
}

bool isSsd(const PoolRecord& pool) {
  return pool.tierLevel == TVK_TIER_SSD;
}

}  // namespace

void VolumeRules::checkNameUnused(const std::string& name) const {
  require(
      std::none_of(
          m_volumes.begin(), m_volumes.end(),
          [&](const VolumeRecord& volume) { return volume.name == name; }),
      TVK_NAME_IN_USE);
}

const PoolRecord& VolumeRules::pool(std::uint32_t poolId) const {
  const auto found = std::find_if(
      m_pools.begin(), m_pools.end(), [&](const PoolRecord& candidate) { return candidate.id == poolId; });
  require(found != m_pools.end(), TVK_NO_SUCH_POOL);
  return *found;
}

const VolumeRecord& VolumeRules::volume(std::uint32_t volumeId) const {
  const auto found = std::find_if(m_volumes.begin(), m_volumes.end(), [&](const VolumeRecord& candidate) {
    return candidate.id == volumeId;
  });
  require(found != m_volumes.end(), TVK_NO_SUCH_VOLUME);
  return *found;
}

VolumeRecord VolumeRules::heading(const VirtualVolumeSpec& spec) const {
  VolumeRecord volume;
  volume.name = checkedName(spec.name, spec.nameTooLong);
  require(!volume.name.empty(), TVK_INVALID_NAME);
  volume.description = checkedDescription(spec.description, spec.descriptionTooLong);
  checkNameUnused(volume.name);
  require(m_volumes.size() < MAX_VOLUMES, TVK_TOO_MANY_VOLUMES);
  require(
      spec.featureType1 == TVK_VOLUME_TIERED || spec.featureType1 == TVK_VOLUME_CACHED,
      TVK_INVALID_VOLUME_TYPE);
  volume.type = spec.featureType1;
  volume.knob = checkedKnob(spec.knobSetting);
  if (volume.knob == 0) {
    volume.knob = TVK_KNOB_NORMAL;
  }
  return volume;
}

VolumeRecord VolumeRules::creation(const VirtualVolumeSpec& spec) const {
  VolumeRecord volume = heading(spec);
  const std::uint32_t count = spec.numPoolIds;
  require(
      count == spec.numValidPools && count == spec.numPoolSizes && count >= 1 && count <= TVK_SPEC_POOLS,
      TVK_POOL_COUNT_MISMATCH);
  require(count == TVK_SPEC_POOLS || !volume.isCached(), TVK_POOL_COUNT_MISMATCH);
  require(count == 1 || spec.pools[0].poolId != spec.pools[1].poolId, TVK_POOL_DUPLICATE);
  const bool isSecondAlone = count == 1 && spec.pools[0].poolId == TVK_NO_ID;
  std::vector<Part> parts;
  for (std::uint32_t i = 0; i < count; ++i) {
    const VirtualPoolEntry& entry = spec.pools[isSecondAlone ? 1 : i];
    parts.push_back({&pool(entry.poolId), entry.capacityInSectors});
    require(!parts.back().pool->internal, TVK_POOL_IS_INTERNAL);
  }
  require(count == 1 || isSsd(*parts[0].pool) != isSsd(*parts[1].pool), TVK_POOL_KINDS_CONFLICT);
  std::stable_sort(parts.begin(), parts.end(), [](const Part& a, const Part& b) {
    return isSsd(*a.pool) < isSsd(*b.pool);
  });
  checkTotal(volume, spec.capacityInSectors, parts);
  lay(volume, parts);
  return volume;
}

VolumeRecord VolumeRules::cachedDrive(
    const VirtualVolumeSpec& spec, std::uint32_t internalPool, const VirtualPoolEntry& cache) const {
  VolumeRecord volume = heading(spec);
  require(volume.isCached(), TVK_INVALID_VOLUME_TYPE);
  const PoolRecord& drive = pool(internalPool);
  const PoolRecord& ssd = pool(cache.poolId);
  require(!ssd.internal, TVK_POOL_IS_INTERNAL);
  require(isSsd(ssd) && !isSsd(drive), TVK_POOL_KINDS_CONFLICT);
  lay(volume, {{&drive, drive.chunks * drive.chunkSectors}, {&ssd, cache.capacityInSectors}});
  return volume;
}

void VolumeRules::checkTotal(
    const VolumeRecord& volume, std::uint64_t requested, const std::vector<Part>& parts) {
  std::uint64_t total = parts[0].sectors;
  if (!volume.isCached() && parts.size() > 1) {
    require(parts[1].sectors <= UINT64_MAX - total, TVK_INVALID_CAPACITY);
    total += parts[1].sectors;
  }
  require(requested == 0 || requested == total, TVK_INVALID_CAPACITY);
}

void VolumeRules::lay(VolumeRecord& volume, const std::vector<Part>& parts) const {
  // Chunks move between the two pools of a tiered volume, so they are as large as those of either.
  volume.chunkSectors = parts[0].pool->chunkSectors;
  if (!volume.isCached() && parts.size() > 1) {
    volume.chunkSectors = std::max(volume.chunkSectors, parts[1].pool->chunkSectors);
  }
  for (const Part& part : parts) {
    require(part.sectors >= MIN_SECTORS_FROM_POOL, TVK_INVALID_CAPACITY);
    // Sizes are powers of two: the larger chunk is a whole number of the smaller ones.
    const std::uint64_t unit = std::max(volume.chunkSectors, part.pool->chunkSectors);
    const std::uint64_t units = roundedUp(part.sectors, unit);
    const std::uint64_t chunks = units * (unit / volume.chunkSectors);
    require(chunks <= MAX_VOLUME_CHUNKS, TVK_INVALID_CAPACITY);
    (isSsd(*part.pool) ? volume.ssdChunks : volume.hddChunks) = chunks;
    addExtents(volume, *part.pool, units * (unit / part.pool->chunkSectors));
  }
  require(volume.capacityChunks() <= MAX_VOLUME_CHUNKS, TVK_INVALID_CAPACITY);
}

void VolumeRules::addExtents(VolumeRecord& volume, const PoolRecord& from, std::uint64_t chunks) const {
  std::vector<Extent> used;
  for (const VolumeRecord& other : m_volumes) {
    for (const VolumeExtentRecord& part : other.extents) {
      if (part.pool == from.id) {
        used.push_back(part.extent);
      }
    }
  }
  const std::vector<Extent> extents = ChunkAllocator(from.chunks, std::move(used)).allocate(chunks);
  require(!extents.empty(), TVK_NOT_ENOUGH_SPACE);
  for (const Extent& extent : extents) {
    volume.extents.push_back({from.id, extent});
  }
}

VolumeChange VolumeRules::modification(std::uint32_t volumeId, const VirtualVolumeSpec& spec) const {
  const VolumeRecord& current = volume(volumeId);
  const std::string name = checkedName(spec.name, spec.nameTooLong);
  const std::string description = checkedDescription(spec.description, spec.descriptionTooLong);
  const std::uint8_t knob = checkedKnob(spec.knobSetting);
  VolumeChange change;
  if (!name.empty() && name != current.name) {
    checkNameUnused(name);
    change.name = name;
  }
  if (!description.empty() && description != current.description) {
    change.description = description;
  }
  if (knob != 0 && knob != current.knob) {
    change.knob = knob;
  }
  return change;
}

}  // namespace voltvk
