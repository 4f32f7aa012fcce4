// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmVolumes.h"

#include "voltvk/VirtualPool.h"
#include "voltvk/engine/backing/lvm/LvmPools.h"
#include "voltvk/engine/backing/lvm/PoolLayout.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Wording.h"

#include <algorithm>

namespace voltvk {

namespace {

using Words = LvmCommand::Words;

/** The sizes of a cache's blocks that the kernel allows, in sectors, and how many blocks it manages well. */
constexpr std::uint64_t SMALLEST_CACHE_BLOCK = 64;
constexpr std::uint64_t LARGEST_CACHE_BLOCK = 2097152;
constexpr std::uint64_t MOST_CACHE_BLOCKS = 1000000;

bool isSsd(const PoolRecord& pool) {
  return pool.tierLevel == TVK_TIER_SSD;
}

void append(std::vector<LvmPart>& parts, LvmPart part) {
  part.logical = parts.empty() ? 0 : parts.back().logical + parts.back().extents;
  parts.push_back(part);
}

/** Where a volume's extents are to be. */
class Placement {
public:
  Placement(const LvmGroup& group, const Configuration& configuration)
      : m_group(group), m_configuration(configuration) {}

  void add(std::vector<LvmPart>& parts, const VolumeExtentRecord& extent) const {
    const PoolRecord& pool = poolOf(extent, m_configuration);
    for (const DrivePart& place : PoolLayout(pool).placesOf(extent.extent)) {
      append(parts, {driveIndex(pool, place.member), place.first, place.extents, 0});
    }
  }

private:
  std::size_t driveIndex(const PoolRecord& pool, std::size_t position) const {
    const LvmDrive* drive = m_group.member(pool.id, position);
    require(drive != nullptr && !drive->isMissing, TVK_BACKING_FAILED, [&] {
      return nameOf(driveOf(pool.members[position], m_configuration)) + " of " + nameOf(pool) +
             (drive == nullptr ? " is not in the volume group " : " is missing from the volume group ") +
             m_group.name + "; see `voltvkctl check`";
    });
    return m_group.indexOf(*drive);
  }

  const LvmGroup& m_group;
  const Configuration& m_configuration;
};

/** Where all of a volume is to be. */
struct VolumePlaces {
  std::vector<LvmPart> origin;
  std::vector<LvmPart> cache;
  const PoolRecord* ssdPool = nullptr;
};

VolumePlaces
placementOf(const VolumeRecord& volume, const Configuration& configuration, const LvmGroup& group) {
  const Placement placement(group, configuration);
  VolumePlaces places;
  for (const VolumeExtentRecord& extent : volume.extents) {
    const PoolRecord& pool = poolOf(extent, configuration);
    const bool isCache = volume.isCached() && isSsd(pool);
    placement.add(isCache ? places.cache : places.origin, extent);
    places.ssdPool = isSsd(pool) ? &pool : places.ssdPool;
  }
  return places;
}

/** The parts of what is wanted that do not exist yet. @throws Refusal if something else exists */
std::vector<LvmPart> missingParts(
    const std::vector<LvmPart>& wanted, const std::vector<LvmPart>& existing, const std::string& name) {
  std::vector<LvmPart> left = merged(wanted);
  for (const LvmPart& part : merged(existing)) {
    require(
        !left.empty() && left.front().drive == part.drive && left.front().first == part.first &&
            left.front().extents >= part.extents,
        TVK_BACKING_FAILED,
        [&] { return "the logical volume " + name + " exists already, elsewhere; see `voltvkctl check`"; });
    left.front().first += part.extents;
    left.front().extents -= part.extents;
    if (left.front().extents == 0) {
      left.erase(left.begin());
    }
  }
  return left;
}

std::string taskOf(const char* what, const VolumeRecord& volume) {
  return std::string(what) + " " + nameOf(volume);
}

std::uint64_t cacheBlockSectors(const VolumeRecord& volume, const PoolRecord& ssdPool) {
  std::uint64_t block = std::clamp(ssdPool.chunkSectors, SMALLEST_CACHE_BLOCK, LARGEST_CACHE_BLOCK);
  while (block < LARGEST_CACHE_BLOCK && volume.ssdChunks * volume.chunkSectors / block > MOST_CACHE_BLOCKS) {
    block *= 2;
  }
  return block;
}

}  // namespace

const PoolRecord& poolOf(const VolumeExtentRecord& extent, const Configuration& configuration) {
  const PoolRecord* found = findById(configuration.pools, extent.pool);
  require(found != nullptr, TVK_BACKING_FAILED, [&] { return missing("pool", extent.pool); });
  return *found;
}

std::string rangeOf(const LvmGroup& group, const LvmPart& part) {
  return group.drives[part.drive].node + ":" + std::to_string(part.first) + "-" +
         std::to_string(part.first + part.extents - 1);
}

std::vector<LvmPart> merged(const std::vector<LvmPart>& parts) {
  std::vector<LvmPart> result;
  for (const LvmPart& part : parts) {
    if (!result.empty() && result.back().drive == part.drive &&
        result.back().first + result.back().extents == part.first) {
      result.back().extents += part.extents;
    } else if (part.extents > 0) {
      append(result, part);
    }
  }
  return result;
}

std::vector<LvmPart> partsOf(const LvmGroup& group, std::uint32_t volumeId) {
  std::vector<LvmPart> parts;
  // With its cache attached, a volume consists of two hidden ones.
  const auto addFirstOf = [&](const std::string& whole, const std::string& hidden) {
    const LvmVolume* found = group.volume(hidden);
    found = found == nullptr ? group.volume(whole) : found;
    if (found != nullptr) {
      for (const LvmPart& part : merged(found->parts)) {
        append(parts, part);
      }
    }
  };
  addFirstOf(lvmNameOf(volumeId), lvmNameOf(volumeId) + "_corig");
  addFirstOf(lvmCacheNameOf(volumeId), lvmCacheNameOf(volumeId) + "_cvol");
  return parts;
}

std::vector<VolumeExtentRecord>
layoutOf(const LvmGroup& group, const VolumeRecord& volume, const std::vector<PoolRecord>& pools) {
  std::vector<VolumeExtentRecord> layout;
  for (const LvmPart& part : partsOf(group, volume.id)) {
    const LvmDrive& drive = group.drives[part.drive];
    const std::optional<PoolTag> tag = poolTagIn(drive.tags);
    const auto pool = std::find_if(pools.begin(), pools.end(), [&](const PoolRecord& candidate) {
      return tag && candidate.id == tag->pool.id;
    });
    const std::optional<Extent> chunks =
        pool == pools.end() ? std::nullopt
                            : PoolLayout(*pool).chunksAt({tag->position, part.first, part.extents});
    require(chunks.has_value(), TVK_BACKING_FAILED, [&] {
      return "the logical volume " + group.name + "/" + lvmNameOf(volume.id) + " uses " +
             (drive.node.empty() ? "a missing drive" : rangeOf(group, part)) +
             ", which is not where chunks of a pool are; see `voltvkctl check`";
    });
    layout.push_back({pool->id, *chunks});
  }
  return layout;
}

void LvmVolumes::makeLinear(
    const VolumeRecord& volume, const std::string& name, const std::vector<LvmPart>& wanted,
    const LvmGroup& group, const std::string& task) {
  const LvmVolume* existing = group.volume(name);
  const std::string fullName = m_group + "/" + name;
  require(existing == nullptr || volumeIdIn(existing->tags) == volume.id, TVK_BACKING_FAILED, [&] {
    return "the logical volume " + fullName + " belongs to somebody else; rename it with `lvrename`";
  });
  const LvmVolume* hidden = group.volume(name + "_corig");
  existing = hidden == nullptr ? existing : hidden;  // a cached volume has no parts of its own
  const std::vector<LvmPart> none;
  bool isNew = existing == nullptr;
  // One range at a time: of several, the volume manager takes the largest first.
  for (const LvmPart& part : missingParts(wanted, isNew ? none : existing->parts, fullName)) {
    const std::string extents = std::to_string(part.extents);
    Words command;
    if (isNew) {
      command = {"lvcreate", "-y", "-Wy", "-Zy", "-n", name, "-l", extents};
      const Words tags = tagChanges({}, tagsOf(volume));
      command.insert(command.end(), tags.begin(), tags.end());
      command.push_back(m_group);
    } else {
      command = {"lvextend", "-y", "-l", "+" + extents, fullName};
    }
    command.push_back(rangeOf(group, part));
    m_command.run(task, command);
    isNew = false;
  }
}

void LvmVolumes::attachCache(const VolumeRecord& volume, const PoolRecord& ssdPool) {
  m_command.run(
      taskOf("make the cache of", volume),
      {"lvconvert", "-y", "--type", "cache", "--cachevol", m_group + "/" + lvmCacheNameOf(volume.id),
       "--cachemode", "writeback", "--cachepolicy", "smq", "--chunksize",
       std::to_string(cacheBlockSectors(volume, ssdPool)) + "s", m_group + "/" + lvmNameOf(volume.id)});
}

void LvmVolumes::make(const VolumeRecord& volume, const Configuration& configuration) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  requireOurGroup(group);
  const std::string name = lvmNameOf(volume.id);
  const VolumePlaces places = placementOf(volume, configuration, group);
  const LvmVolume* existing = group.volume(name);
  if (existing == nullptr || existing->type != "cache") {
    makeLinear(volume, name, places.origin, group, taskOf("make", volume));
    if (volume.isCached() && places.ssdPool != nullptr) {
      makeLinear(volume, lvmCacheNameOf(volume.id), places.cache, group, taskOf("make the cache of", volume));
      attachCache(volume, *places.ssdPool);
    }
  }
}

void LvmVolumes::remove(std::uint32_t volumeId, const std::function<bool()>& isOpen) {
  const auto requireClosed = [&] {
    require(!isOpen(), TVK_VOLUME_OPEN, [&] {
      return "volume " + std::to_string(volumeId) + " (/dev/" + m_group + "/" + lvmNameOf(volumeId) +
             ") is mounted or otherwise open; unmount or close it first";
    });
  };
  // What is attached to a volume goes with it; what was not attached yet is removed by itself.
  for (const std::string& name : {lvmNameOf(volumeId), lvmCacheNameOf(volumeId)}) {
    const LvmGroup group = LvmGroup::read(m_command, m_group);
    const LvmVolume* existing = group.isOurs() ? group.volume(name) : nullptr;
    if (existing == nullptr || volumeIdIn(existing->tags) != volumeId || existing->isHidden) {
      continue;
    }
    requireClosed();
    try {
      m_command.run("delete volume " + std::to_string(volumeId), {"lvremove", "-y", m_group + "/" + name});
    } catch (const Refusal&) {
      requireClosed();  // it may have been opened meanwhile
      throw;
    }
  }
}

void LvmVolumes::resize(const VolumeRecord& volume, const Configuration& configuration) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const std::string name = lvmNameOf(volume.id);
  const LvmVolume* whole = group.volume(name);
  require(whole != nullptr && volumeIdIn(whole->tags) == volume.id, TVK_BACKING_FAILED, [&] {
    return "there is no logical volume " + m_group + "/" + name + "; see `voltvkctl check`";
  });
  const LvmVolume* hidden = group.volume(name + "_corig");
  const std::uint64_t extents = (hidden == nullptr ? whole : hidden)->extents();
  const std::uint64_t wanted = volume.capacitySectors() / EXTENT_SECTORS;
  if (extents > wanted) {
    m_command.run(
        taskOf("drop what was added to", volume),
        {"lvreduce", "-y", "-l", std::to_string(wanted), m_group + "/" + name});
  } else if (extents < wanted) {
    makeLinear(
        volume, name, placementOf(volume, configuration, group).origin, group, taskOf("extend", volume));
  }
  describe(volume);
}

bool LvmVolumes::describe(const VolumeRecord& volume) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const LvmVolume* existing = group.volume(lvmNameOf(volume.id));
  if (existing == nullptr || volumeIdIn(existing->tags) != volume.id) {
    return false;
  }
  Words command = tagChanges(existing->tags, tagsOf(volume));
  if (command.empty()) {
    return false;
  }
  command.insert(command.begin(), "lvchange");
  command.push_back(m_group + "/" + existing->name);
  m_command.run(taskOf("describe", volume), command);
  return true;
}

}  // namespace voltvk
