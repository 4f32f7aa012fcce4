// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/VolumeRules.h"

#include "text/Quote.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/VirtualVolume.h"
#include "voltvk/engine/rules/ChunkAllocator.h"
#include "voltvk/engine/rules/Limits.h"
#include "voltvk/engine/rules/TextRules.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Refusal.h"

#include <algorithm>

namespace voltvk {

namespace {

std::uint8_t checkedKnob(std::uint32_t knob) {
  require(knob <= TVK_KNOB_PASSIVE, TVK_INVALID_KNOB, [&] {
    return "the knob setting " + std::to_string(knob) +
           " is unknown; use 1 (aggressive), 2 (normal) or 3 (passive)";
  });
  return static_cast<std::uint8_t>(knob);
}

bool isSsd(const PoolRecord& pool) {
  return pool.tierLevel == TVK_TIER_SSD;
}

}  // namespace

void VolumeRules::checkNameUnused(const std::string& name) const {
  const auto holder = std::find_if(
      m_volumes.begin(), m_volumes.end(), [&](const VolumeRecord& volume) { return volume.name == name; });
  require(holder == m_volumes.end(), TVK_NAME_IN_USE, [&] {
    return "the name " + tvp::text::quoted(name) + " is used by volume " + std::to_string(holder->id) +
           "; choose another";
  });
}

const PoolRecord& VolumeRules::pool(std::uint32_t poolId) const {
  const PoolRecord* found = findById(m_pools, poolId);
  require(found != nullptr, TVK_NO_SUCH_POOL, [&] { return missing("pool", poolId); });
  return *found;
}

const PoolRecord& VolumeRules::userPool(std::uint32_t poolId) const {
  const PoolRecord& found = pool(poolId);
  require(!found.internal, TVK_POOL_IS_INTERNAL, [&] {
    return nameOf(found) + " is internal: it belongs to a cached volume; choose another pool";
  });
  return found;
}

const VolumeRecord& VolumeRules::volume(std::uint32_t volumeId) const {
  const VolumeRecord* found = findById(m_volumes, volumeId);
  require(found != nullptr, TVK_NO_SUCH_VOLUME, [&] { return missing("volume", volumeId); });
  return *found;
}

VolumeRecord VolumeRules::heading(const VirtualVolumeSpec& spec) const {
  VolumeRecord volume;
  volume.name = requiredName(givenName(spec));
  volume.description = checkedDescription(givenDescription(spec));
  checkNameUnused(volume.name);
  require(m_volumes.size() < MAX_VOLUMES, TVK_TOO_MANY_VOLUMES, [] {
    return "there are " + counted(MAX_VOLUMES, "volume") + " already, which is the limit; delete one first";
  });
  volume.type = spec.featureType1;
  require(volume.type == TVK_VOLUME_TIERED || volume.isCached(), TVK_INVALID_VOLUME_TYPE, [&] {
    return "the volume type " + std::to_string(volume.type) + " is unknown; use 1 (tiered) or 2 (cached)";
  });
  volume.knob = checkedKnob(spec.knobSetting);
  if (volume.knob == 0) {
    volume.knob = TVK_KNOB_NORMAL;
  }
  return volume;
}

void VolumeRules::checkPoolCount(const VolumeRecord& volume, const VirtualVolumeSpec& spec) {
  const std::uint32_t count = spec.numPoolIds;
  require(count == spec.numValidPools && count == spec.numPoolSizes, TVK_POOL_COUNT_MISMATCH, [&] {
    return counted(spec.numValidPools, "pool") + " announced, but " + counted(count, "identifier") + " and " +
           counted(spec.numPoolSizes, "size") + " listed; make all three numbers the same";
  });
  require(count >= 1 && count <= TVK_SPEC_POOLS, TVK_POOL_COUNT_MISMATCH, [&] {
    return counted(count, "pool") + " listed; a volume takes one or two pools";
  });
  require(count == TVK_SPEC_POOLS || !volume.isCached(), TVK_POOL_COUNT_MISMATCH, [] {
    return "1 pool listed; a cached volume needs a pool of hard disks and one of SSDs";
  });
  require(count == 1 || spec.pools[0].poolId != spec.pools[1].poolId, TVK_POOL_DUPLICATE, [&] {
    return "pool " + std::to_string(spec.pools[0].poolId) +
           " is named twice; name two different pools, or one";
  });
}

VolumeRecord VolumeRules::creation(const VirtualVolumeSpec& spec) const {
  VolumeRecord volume = heading(spec);
  checkPoolCount(volume, spec);
  const std::uint32_t count = spec.numPoolIds;
  const bool isSecondAlone = count == 1 && spec.pools[0].poolId == TVK_NO_ID;
  std::vector<Part> parts;
  for (std::uint32_t i = 0; i < count; ++i) {
    const VirtualPoolEntry& entry = spec.pools[isSecondAlone ? 1 : i];
    parts.push_back({&userPool(entry.poolId), entry.capacityInSectors});
  }
  require(count == 1 || isSsd(*parts[0].pool) != isSsd(*parts[1].pool), TVK_POOL_KINDS_CONFLICT, [&] {
    return nameOf(*parts[0].pool) + " and " + nameOf(*parts[1].pool) + " are both pools of " +
           (isSsd(*parts[0].pool) ? "SSDs" : "hard disks") +
           "; a volume takes one of hard disks and one of SSDs";
  });
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
  require(volume.isCached(), TVK_INVALID_VOLUME_TYPE, [&] {
    return "the volume type is " + std::to_string(volume.type) +
           " (tiered); a drive with a cache is a volume of the type 2 (cached)";
  });
  const PoolRecord& drive = pool(internalPool);
  const PoolRecord& ssd = userPool(cache.poolId);
  require(isSsd(ssd), TVK_POOL_KINDS_CONFLICT, [&] {
    return nameOf(ssd) + " is a pool of hard disks; a cache is taken from a pool of SSDs";
  });
  require(!isSsd(drive), TVK_POOL_KINDS_CONFLICT, [&] {
    return "drive " + std::to_string(drive.members.front().drive) +
           " is an SSD; what is cached is a hard disk";
  });
  lay(volume, {{&drive, drive.chunks * drive.chunkSectors}, {&ssd, cache.capacityInSectors}});
  return volume;
}

void VolumeRules::checkTotal(
    const VolumeRecord& volume, std::uint64_t requested, const std::vector<Part>& parts) {
  std::uint64_t total = parts[0].sectors;
  if (!volume.isCached() && parts.size() > 1) {
    require(parts[1].sectors <= UINT64_MAX - total, TVK_INVALID_CAPACITY, [&] {
      return sizeText(total) + " and " + sizeText(parts[1].sectors) +
             " are more together than any volume has";
    });
    total += parts[1].sectors;
  }
  require(requested == 0 || requested == total, TVK_INVALID_CAPACITY, [&] {
    return sizeText(requested) + " asked for, but " + sizeText(total) +
           " taken from the pools; make both the same, or leave the first out";
  });
}

void VolumeRules::requirePossibleSize(const VolumeRecord& volume, std::uint64_t chunks) {
  require(chunks <= MAX_VOLUME_CHUNKS, TVK_INVALID_CAPACITY, [&] {
    return "a volume with chunks of " + sizeText(volume.chunkSectors) + " has at most " +
           sizeText(volume.chunkSectors * MAX_VOLUME_CHUNKS) + "; a larger one needs larger chunks";
  });
}

void VolumeRules::lay(VolumeRecord& volume, const std::vector<Part>& parts) const {
  // Chunks move between the two pools of a tiered volume, so they have the larger of both chunk sizes.
  volume.chunkSectors = parts[0].pool->chunkSectors;
  if (!volume.isCached() && parts.size() > 1) {
    volume.chunkSectors = std::max(volume.chunkSectors, parts[1].pool->chunkSectors);
  }
  for (const Part& part : parts) {
    require(part.sectors >= MIN_SECTORS_FROM_POOL, TVK_INVALID_CAPACITY, [&] {
      return sizeText(part.sectors) + " asked of " + nameOf(*part.pool) + "; a volume takes at least " +
             sizeText(MIN_SECTORS_FROM_POOL) + " from a pool";
    });
    // Sizes are powers of two: the larger chunk is a whole number of the smaller ones.
    const std::uint64_t unit = std::max(volume.chunkSectors, part.pool->chunkSectors);
    const std::uint64_t units = roundedUp(part.sectors, unit);
    const std::uint64_t chunks = units * (unit / volume.chunkSectors);
    requirePossibleSize(volume, chunks);
    (isSsd(*part.pool) ? volume.ssdChunks : volume.hddChunks) = chunks;
    addExtents(volume, part, units * (unit / part.pool->chunkSectors));
  }
  requirePossibleSize(volume, volume.capacityChunks());
  volume.layAsNew();
}

ChunkAllocator VolumeRules::freeChunksOf(const PoolRecord& from) const {
  std::vector<Extent> used;
  for (const VolumeRecord& other : m_volumes) {
    for (const VolumeExtentRecord& taken : other.extents) {
      if (taken.pool == from.id) {
        used.push_back(taken.extent);
      }
    }
  }
  return {from.placedChunks(), std::move(used)};
}

std::uint64_t VolumeRules::availableIn(const PoolRecord& pool, const ChunkAllocator& free) {
  // What a real backing keeps for moves has no place of its own: any free chunks will do.
  const std::uint64_t reserved = pool.placedChunks() - pool.chunks;
  return free.freeChunks() - std::min(free.freeChunks(), reserved);
}

void VolumeRules::addExtents(VolumeRecord& volume, const Part& part, std::uint64_t chunks) const {
  const PoolRecord& from = *part.pool;
  ChunkAllocator allocator = freeChunksOf(from);
  const std::uint64_t available = availableIn(from, allocator);
  const std::vector<Extent> extents =
      chunks <= available ? allocator.allocate(chunks) : std::vector<Extent>();
  require(!extents.empty(), TVK_NOT_ENOUGH_SPACE, [&] {
    const std::uint64_t rounded = chunks * from.chunkSectors;
    return nameOf(from) + " has " + sizeText(available * from.chunkSectors) + " free, less than the " +
           sizeText(part.sectors) + " asked for" +
           (rounded == part.sectors ? "" : ", which take " + sizeText(rounded) + " in whole chunks");
  });
  for (const Extent& extent : extents) {
    volume.extents.push_back({from.id, extent});
  }
}

const PoolRecord&
VolumeRules::poolOfGrowth(const VolumeRecord& volume, std::optional<std::uint32_t> wanted) const {
  const PoolRecord* chosen = nullptr;
  for (const VolumeExtentRecord& part : volume.extents) {
    const PoolRecord& used = pool(part.pool);
    const bool isBetter = chosen == nullptr || isSsd(used) < isSsd(*chosen);
    chosen = wanted ? (used.id == *wanted ? &used : chosen) : isBetter ? &used : chosen;
  }
  require(chosen != nullptr, TVK_NO_SUCH_POOL, [&] {
    return nameOf(volume) + " does not use " + nameOf(pool(*wanted)) + "; it grows on a pool that it uses";
  });
  require(!volume.isCached() || !isSsd(*chosen), TVK_POOL_KINDS_CONFLICT, [&] {
    return nameOf(*chosen) + " holds the cache of " + nameOf(volume) +
           ", which does not grow; the volume grows on its pool of hard disks";
  });
  return *chosen;
}

VolumeRecord VolumeRules::growth(std::uint32_t volumeId, const VolumeGrowth& wanted) const {
  VolumeRecord grown = volume(volumeId);
  const std::uint64_t current = grown.capacitySectors();
  const PoolRecord& from = poolOfGrowth(grown, wanted.pool);
  const std::uint64_t unit = std::max(grown.chunkSectors, from.chunkSectors);
  Part added{&from, wanted.sectors - std::min(current, wanted.sectors)};
  if (wanted.percent > 0) {
    const std::uint64_t room = availableIn(from, freeChunksOf(from)) * from.chunkSectors / unit;
    added.sectors = (room / 100 * wanted.percent + room % 100 * wanted.percent / 100) * unit;
    require(added.sectors > 0, TVK_NOT_ENOUGH_SPACE, [&] {
      return nameOf(from) + " has no room for " + nameOf(grown) + " to grow: " + sizeText(room * unit) +
             " in whole chunks; add a drive to it";
    });
  }
  require(added.sectors > 0, TVK_INVALID_CAPACITY, [&] {
    return nameOf(grown) + " has " + sizeText(current) +
           (wanted.sectors == current ? " already; give the larger size that it is to have"
                                      : ", more than the " + sizeText(wanted.sectors) +
                                            " asked for; a volume cannot be made smaller");
  });
  const std::uint64_t units = roundedUp(added.sectors, unit);
  const std::uint64_t chunks = units * (unit / grown.chunkSectors);
  requirePossibleSize(grown, chunks);
  requirePossibleSize(grown, grown.capacityChunks() + chunks);
  VolumeRecord more;
  addExtents(more, added, units * (unit / from.chunkSectors));
  auto end = grown.extents.end();
  if (grown.isCached()) {  // its cache comes last
    end = std::find_if(grown.extents.begin(), end, [&](const auto& part) { return part.pool != from.id; });
  } else if (isSsd(from)) {
    const Extent laid{grown.capacityChunks(), chunks};
    const bool continues = !grown.laidOnSsd.empty() &&
                           grown.laidOnSsd.back().first + grown.laidOnSsd.back().chunks == laid.first;
    if (continues) {
      grown.laidOnSsd.back().chunks += chunks;
    } else {
      grown.laidOnSsd.push_back(laid);
    }
  }
  grown.extents.insert(end, more.extents.begin(), more.extents.end());
  (isSsd(from) ? grown.ssdChunks : grown.hddChunks) += chunks;
  return grown;
}

void VolumeRules::checkHealth(const VolumeRecord& volume, const Health& health) const {
  for (const VolumeExtentRecord& part : volume.extents) {
    const std::string& trouble = health.ofPool(part.pool);
    require(trouble.empty(), TVK_POOL_DEGRADED, [&] {
      return nameOf(pool(part.pool)) + " is degraded: " + trouble + "; mend that, or choose another pool";
    });
  }
}

VolumeChange VolumeRules::modification(std::uint32_t volumeId, const VirtualVolumeSpec& spec) const {
  const VolumeRecord& current = volume(volumeId);
  const std::string name = checkedName(givenName(spec));
  const std::string description = checkedDescription(givenDescription(spec));
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
