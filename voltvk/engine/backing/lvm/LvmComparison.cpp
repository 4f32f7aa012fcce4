// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmComparison.h"

#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/backing/lvm/LvmPools.h"
#include "voltvk/engine/backing/lvm/LvmVolumes.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Wording.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace voltvk {

namespace {

using Sentences = std::vector<std::string>;

/** A difference between a configuration and a volume group. */
struct Difference {
  std::string sentence;
  /** They are not of the same time or of the same machine. Else something is broken, or moved by a round. */
  bool isContradiction = false;
};
using Differences = std::vector<Difference>;

std::string nodeOf(const LvmDrive& drive) {
  return drive.node.empty() ? "a drive that is missing" : drive.node;
}

/** Differences of pools and drives. */
class DriveComparison {
public:
  DriveComparison(const Configuration& configuration, const LvmGroup& group)
      : m_configuration(configuration), m_group(group) {}

  Differences differences() {
    for (const PoolRecord& pool : m_configuration.pools) {
      for (std::size_t position = 0; position < pool.members.size(); ++position) {
        compare(pool, position);
      }
    }
    for (const LvmDrive& drive : m_group.drives) {
      const std::uint32_t owner = poolIdIn(drive.tags);
      const PoolRecord* pool = findById(m_configuration.pools, owner);
      if (owner == 0) {
        note(
            nodeOf(drive) + " is in the volume group " + m_group.name + " without belonging to a pool",
            false);
      } else if (pool == nullptr) {
        note(
            nodeOf(drive) + " has the marks of pool " + std::to_string(owner) +
            ", which the state does not have");
      } else if (!isMember(drive, *pool)) {
        note(nodeOf(drive) + " has the marks of " + nameOf(*pool) + ", which does not have it");
      }
    }
    return std::move(m_differences);
  }

private:
  void compare(const PoolRecord& pool, std::size_t position) {
    const DriveRecord& drive = driveOf(pool.members[position], m_configuration);
    const std::string who = nameOf(drive) + " of " + nameOf(pool);
    const LvmDrive* found = m_group.member(pool.id, position);
    if (found == nullptr) {
      note(who + " is not in the volume group " + m_group.name);
    } else if (found->isMissing) {
      note(
          who + (found->node.empty() ? " is missing" : " was missing for a time and is not used yet"), false);
    } else if (drive.present && drive.name != found->node) {
      note(who + " is " + found->node + " in the volume group " + m_group.name);
    } else if (!tagChanges(found->tags, tagsOf(pool, position)).empty()) {
      note(who + " " + OTHER_MARKS + "the name, the description or the size of the pool");
    }
  }

  /** Whether the state knows a drive as one of the pool that it has the marks of. */
  bool isMember(const LvmDrive& drive, const PoolRecord& pool) const {
    const std::optional<PoolTag> tag = poolTagIn(drive.tags);
    return (tag && tag->position < pool.members.size() && m_group.member(pool.id, tag->position) == &drive) ||
           std::any_of(pool.members.begin(), pool.members.end(), [&](const PoolMemberRecord& member) {
             return driveOf(member, m_configuration).name == drive.node;
           });
  }

  void note(const std::string& sentence, bool isContradiction = true) {
    m_differences.push_back({sentence, isContradiction});
  }

  const Configuration& m_configuration;
  const LvmGroup& m_group;
  Differences m_differences;
};

bool isSame(const std::vector<VolumeExtentRecord>& one, const std::vector<VolumeExtentRecord>& other) {
  return std::equal(
      one.begin(), one.end(), other.begin(), other.end(),
      [](const VolumeExtentRecord& a, const VolumeExtentRecord& b) {
        return a.pool == b.pool && a.extent.first == b.extent.first && a.extent.chunks == b.extent.chunks;
      });
}

/** Extents in which adjacent ones are in one, as far as they are on one drive. */
std::vector<VolumeExtentRecord> normalized(const std::vector<VolumeExtentRecord>& extents) {
  std::vector<VolumeExtentRecord> result;
  for (const VolumeExtentRecord& part : extents) {
    if (!result.empty() && result.back().pool == part.pool &&
        result.back().extent.first + result.back().extent.chunks == part.extent.first) {
      result.back().extent.chunks += part.extent.chunks;
    } else {
      result.push_back(part);
    }
  }
  return result;
}

/** What is wrong with a volume; without a sentence if nothing is. */
Difference troubleOf(const VolumeRecord& volume, const Configuration& configuration, const LvmGroup& group) {
  const LvmVolume* found = group.volume(lvmNameOf(volume.id));
  if (found == nullptr || volumeIdIn(found->tags) != volume.id) {
    return {"has no logical volume " + group.name + "/" + lvmNameOf(volume.id), true};
  }
  if (!tagChanges(found->tags, tagsOf(volume)).empty()) {
    return {OTHER_MARKS + std::string("its name, description, size or knob"), true};
  }
  if (found->isPartial) {
    return {"lacks a drive that is missing"};
  }
  if (volume.isCached() && found->type != "cache") {
    return {"has no cache"};
  }
  if (found->cachePolicy == "cleaner") {
    return {"has a cache that only writes back"};
  }
  if (!found->isActive) {
    return {"is not active"};
  }
  try {
    const auto layout = layoutOf(group, volume, configuration.pools);
    const bool isAlike = isSame(normalized(layout), normalized(volume.extents));
    return {isAlike ? "" : "has chunks elsewhere than the state says"};
  } catch (const Refusal& refusal) {
    return {std::string("cannot be compared: ") + refusal.what(), true};
  }
}

Differences volumeDifferences(const Configuration& configuration, const LvmGroup& group) {
  Differences differences;
  for (const VolumeRecord& volume : configuration.volumes) {
    const Difference trouble = troubleOf(volume, configuration, group);
    if (!trouble.sentence.empty()) {
      differences.push_back({nameOf(volume) + " " + trouble.sentence, trouble.isContradiction});
    }
  }
  for (const LvmVolume& volume : group.volumes) {
    const std::string who = "the logical volume " + group.name + "/" + volume.name;
    const std::uint32_t id = volumeIdIn(volume.tags);
    if (!volume.movedFrom.empty()) {
      differences.push_back({"a move of chunks away from " + volume.movedFrom + " is not completed"});
    } else if (id == 0 && !volume.isHidden) {
      differences.push_back({who + " belongs to somebody else and is left alone"});
    } else if (id != 0 && findById(configuration.volumes, id) == nullptr) {
      differences.push_back(
          {who + " has the marks of volume " + std::to_string(id) + ", which the state does not have", true});
    }
  }
  return differences;
}

Differences compare(const Configuration& configuration, const LvmGroup& group) {
  if (group.exists && !group.isOurs()) {
    return {{"the volume group " + group.name + " belongs to somebody else", true}};
  }
  Differences differences = DriveComparison(configuration, group).differences();
  const Differences ofVolumes = volumeDifferences(configuration, group);
  differences.insert(differences.end(), ofVolumes.begin(), ofVolumes.end());
  return differences;
}

/** Rebuilds pools and volumes. */
class Recovery {
public:
  Recovery(const LvmGroup& group, const std::vector<DriveRecord>& drives)
      : m_group(group), m_drives(drives) {}

  Configuration configuration() {
    for (const LvmDrive& drive : m_group.drives) {
      if (poolIdIn(drive.tags) != 0) {
        addDrive(drive);
      }
    }
    Configuration found;
    found.drives = m_drives;
    for (auto& [id, pool] : m_pools) {
      require(m_left[id] == 0, TVK_BACKING_FAILED, [&pool = pool] {
        return "a drive of " + nameOf(pool) + " is not in the volume group; attach it and try again";
      });
      found.pools.push_back(pool);
    }
    for (const LvmVolume& volume : m_group.volumes) {
      if (volumeIdIn(volume.tags) != 0 && volume.name == lvmNameOf(volumeIdIn(volume.tags))) {
        found.volumes.push_back(recovered(volume, found.pools));
      }
    }
    std::sort(found.volumes.begin(), found.volumes.end(), [](const VolumeRecord& a, const VolumeRecord& b) {
      return a.id < b.id;
    });
    return found;
  }

private:
  void addDrive(const LvmDrive& drive) {
    const std::optional<PoolTag> tag = poolTagIn(drive.tags);
    require(tag.has_value(), TVK_BACKING_FAILED, [&] {
      return "the marks of pool " + std::to_string(poolIdIn(drive.tags)) + " on " + nodeOf(drive) +
             " cannot be read; see the tags in `pvs -o +pv_tags`";
    });
    const auto record = std::find_if(m_drives.begin(), m_drives.end(), [&](const DriveRecord& candidate) {
      return candidate.present && candidate.name == drive.node;
    });
    require(!drive.isMissing && record != m_drives.end(), TVK_BACKING_FAILED, [&] {
      return "a drive of " + nameOf(tag->pool) + " is missing; attach it and try again";
    });
    const auto [pool, isNew] = m_pools.emplace(tag->pool.id, tag->pool);
    if (isNew) {
      pool->second.members.resize(tag->members);
      m_left[tag->pool.id] = tag->members;
    }
    require(
        tag->position < pool->second.members.size() &&
            m_positions.emplace(tag->pool.id, tag->position).second,
        TVK_BACKING_FAILED, [&] {
          return "the marks of " + nameOf(tag->pool) + " on " + nodeOf(drive) +
                 " contradict those on its other drives; see the tags in `pvs -o +pv_tags`";
        });
    pool->second.members[tag->position] = {record->number, tag->chunks};
    --m_left[tag->pool.id];
  }

  VolumeRecord recovered(const LvmVolume& found, const std::vector<PoolRecord>& pools) const {
    std::optional<VolumeRecord> volume = volumeIn(found.tags);
    require(volume.has_value(), TVK_BACKING_FAILED, [&] {
      return "the marks of the logical volume " + m_group.name + "/" + found.name +
             " cannot be read; see the tags in `lvs -o +lv_tags`";
    });
    volume->extents = normalized(layoutOf(m_group, *volume, pools));
    return *volume;
  }

  const LvmGroup& m_group;
  const std::vector<DriveRecord>& m_drives;
  std::map<std::uint32_t, PoolRecord> m_pools;
  std::map<std::uint32_t, std::size_t> m_left;  ///< members that have not been seen yet
  std::set<std::pair<std::uint32_t, std::size_t>> m_positions;
};

}  // namespace

Sentences differencesBetween(const Configuration& configuration, const LvmGroup& group) {
  Sentences sentences;
  for (const Difference& difference : compare(configuration, group)) {
    sentences.push_back(difference.sentence);
  }
  return sentences;
}

Sentences contradictionsBetween(const Configuration& configuration, const LvmGroup& group) {
  Sentences sentences;
  for (const Difference& difference : compare(configuration, group)) {
    if (difference.isContradiction) {
      sentences.push_back(difference.sentence);
    }
  }
  return sentences;
}

Configuration configurationIn(const LvmGroup& group, const std::vector<DriveRecord>& drives) {
  requireOurGroup(group);
  return Recovery(group, drives).configuration();
}

}  // namespace voltvk
