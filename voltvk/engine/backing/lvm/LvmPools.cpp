// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmPools.h"

#include "text/Quote.h"
#include "voltvk/engine/drives/DriveClaim.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Wording.h"

#include <algorithm>
#include <map>
#include <random>

namespace voltvk {

namespace {

using Words = LvmCommand::Words;

/**
 * How the identifiers of our physical volumes begin. A claim that was cut off can leave a physical volume
 * that is in no group and has no tags: by its identifier it differs from other people's.
 */
constexpr std::string_view UUID_BEGINNING = "tvpPV0-";

/** An identifier as the volume manager makes them, groups of 6-4-4-4-4-4-6 characters, that begins as ours.
 */
std::string newUuid() {
  constexpr std::string_view CHARACTERS = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> choice(0, CHARACTERS.size() - 1);
  std::string uuid(UUID_BEGINNING);
  for (const char place : std::string_view("xxxx-xxxx-xxxx-xxxx-xxxx-xxxxxx")) {
    uuid += place == '-' ? '-' : CHARACTERS[choice(random)];
  }
  return uuid;
}

bool isOurs(const LvmDrive& drive) {
  return std::string_view(drive.uuid).substr(0, UUID_BEGINNING.size()) == UUID_BEGINNING;
}

bool isLoose(const LvmGroup& group, const std::string& node) {
  return std::any_of(group.loose.begin(), group.loose.end(), [&](const LvmDrive& drive) {
    return drive.node == node && isOurs(drive);
  });
}

/** Claimed for the pool, or by a claim that was cut off before the tags were written. */
bool belongsTo(const LvmDrive& drive, const PoolRecord& pool, const Configuration& configuration) {
  const std::uint32_t owner = poolIdIn(drive.tags);
  if (owner != 0) {
    return owner == pool.id;
  }
  return isOurs(drive) && std::any_of(pool.members.begin(), pool.members.end(), [&](const auto& member) {
           return driveOf(member, configuration).name == drive.node;
         });
}

std::string taskOf(const char* what, const PoolRecord& pool) {
  return std::string(what) + " pool " + std::to_string(pool.id) +
         (pool.name.empty() ? "" : " (" + pool.name + ")");
}

void add(Words& words, const std::vector<std::string>& more) {
  words.insert(words.end(), more.begin(), more.end());
}

/** Nothing of a pool that is removed holds data: its volumes were removed before. */
void requireUnused(const LvmGroup& group, const PoolRecord& pool, const Configuration& configuration) {
  for (const LvmVolume& volume : group.volumes) {
    for (const LvmPart& part : volume.parts) {
      const LvmDrive& drive = group.drives[part.drive];
      require(!belongsTo(drive, pool, configuration), TVK_BACKING_FAILED, [&] {
        return "could not " + taskOf("delete", pool) + ": the logical volume " + group.name + "/" +
               volume.name + " is on its drive " + drive.node + "; remove that volume first";
      });
    }
  }
}

}  // namespace

const DriveRecord& driveOf(std::uint16_t number, const Configuration& configuration) {
  const DriveRecord* found = driveNumbered(configuration.drives, number);
  require(found != nullptr, TVK_BACKING_FAILED, [&] {
    return "no drive has the number " + std::to_string(number) + "; see the list of drives";
  });
  return *found;
}

const DriveRecord& driveOf(const PoolMemberRecord& member, const Configuration& configuration) {
  return driveOf(member.drive, configuration);
}

void requireOurGroup(const LvmGroup& group) {
  require(!group.exists || group.isOurs(), TVK_BACKING_UNAVAILABLE, [&] {
    return "the volume group " + tvp::text::quoted(group.name) +
           " belongs to somebody else; choose another name with `voltvkctl backing lvm --group NAME`";
  });
}

void LvmPools::claim(const DriveRecord& drive) const {
  requireUntouched(drive);
  // Neither -f nor -y: if anything is there after all, the volume manager asks, gets no answer, and stops.
  m_command.run(
      "claim " + nameOf(drive), {"pvcreate", "--uuid", newUuid(), "--norestorefile", "--metadatasize", "16m",
                                 "--dataalignment", "1m", drive.name});
}

void LvmPools::mark(
    const LvmGroup& group, const PoolRecord& pool, std::size_t position, const DriveRecord& drive,
    const std::string& task) const {
  const LvmDrive* known = group.driveAt(drive.name);
  Words describe = tagChanges(known == nullptr ? LvmTags() : known->tags, tagsOf(pool, position));
  if (!describe.empty()) {
    describe.insert(describe.begin(), "pvchange");
    describe.push_back(drive.name);
    m_command.run(task, describe);
  }
}

void LvmPools::claimReplacement(const PoolRecord& pool, std::size_t position, const DriveRecord& drive) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  requireOurGroup(group);
  const LvmDrive* known = group.driveAt(drive.name);
  if (known == nullptr) {
    if (!isLoose(group, drive.name)) {
      claim(drive);
    }
    m_command.run("use " + nameOf(drive), {"vgextend", m_group, drive.name});
  }
  mark(group, pool, position, drive, "use " + nameOf(drive));
  const LvmGroup claimed = LvmGroup::read(m_command, m_group);
  known = claimed.driveAt(drive.name);
  const std::uint64_t needed = pool.members.at(position).chunks * pool.chunkSectors;
  require(known != nullptr && known->extents * EXTENT_SECTORS >= needed, TVK_NOT_ENOUGH_SPACE, [&] {
    return nameOf(drive) + " has no room for the " + sizeText(needed) + " that it is to have of " +
           nameOf(pool) + "; choose a larger drive";
  });
}

void LvmPools::release(const PoolRecord& pool, std::uint16_t number, const Configuration& configuration) {
  const DriveRecord& drive = driveOf(number, configuration);
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  const LvmDrive* known = group.isOurs() && drive.present ? group.driveAt(drive.name) : nullptr;
  // Nothing is taken out of a group that lacks a drive; and which one it lacks, the group does not say.
  const bool someAreMissing =
      group.isOurs() && !isLoose(group, drive.name) &&
      std::any_of(group.drives.begin(), group.drives.end(), [&](const LvmDrive& candidate) {
        const std::uint32_t owner = poolIdIn(candidate.tags);
        return candidate.isMissing && (owner == 0 || owner == pool.id);
      });
  if (someAreMissing) {
    dropGoneDrives(pool, configuration, "release " + nameOf(drive));
  }
  const bool isMember =
      known != nullptr && isOurs(*known) && (poolIdIn(known->tags) == 0 || poolIdIn(known->tags) == pool.id);
  if (isMember) {
    m_command.run("release " + nameOf(drive), {"vgreduce", m_group, drive.name});
  }
  if (isMember || isLoose(group, drive.name)) {
    m_command.run("release " + nameOf(drive), {"pvremove", drive.name});
  }
}

void LvmPools::make(const PoolRecord& pool, const Configuration& configuration, const char* verb) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  requireOurGroup(group);
  std::vector<const DriveRecord*> unclaimed;
  std::vector<std::string> outside;
  for (const PoolMemberRecord& member : pool.members) {
    const DriveRecord& drive = driveOf(member, configuration);
    const LvmDrive* known = group.driveAt(drive.name);
    if (known != nullptr && belongsTo(*known, pool, configuration)) {
      continue;
    }
    outside.push_back(drive.name);
    if (!isLoose(group, drive.name)) {
      unclaimed.push_back(&drive);
    }
  }
  // All drives are looked at before any is written to, and each of them once more right before that.
  for (const DriveRecord* drive : unclaimed) {
    requireUntouched(*drive);
  }
  for (const DriveRecord* drive : unclaimed) {
    claim(*drive);
  }
  if (!outside.empty()) {
    Words join = group.exists
                     ? Words{"vgextend", m_group}
                     : Words{"vgcreate", "--physicalextentsize", "1m", "--addtag", GROUP_TAG, m_group};
    add(join, outside);
    m_command.run(taskOf(verb, pool), join);
  }
  for (std::size_t position = 0; position < pool.members.size(); ++position) {
    mark(group, pool, position, driveOf(pool.members[position], configuration), taskOf(verb, pool));
  }
  const LvmGroup made = LvmGroup::read(m_command, m_group);
  for (std::size_t position = 0; position < pool.members.size(); ++position) {
    const PoolMemberRecord& member = pool.members[position];
    const LvmDrive* drive = made.member(pool.id, position);
    require(drive != nullptr, TVK_BACKING_FAILED, [&] {
      return nameOf(driveOf(member, configuration)) + " did not become a drive of " + nameOf(pool) +
             "; see its tags in `pvs -o +pv_tags`";
    });
    const std::uint64_t needed = member.chunks * pool.chunkSectors;
    require(drive->extents * EXTENT_SECTORS >= needed, TVK_NOT_ENOUGH_SPACE, [&] {
      return nameOf(driveOf(member, configuration)) + " has room for " +
             sizeText(drive->extents * EXTENT_SECTORS) + ", less than the " + sizeText(needed) +
             " that its pool needs of it; ask for less";
    });
  }
}

LvmPools::Claimed
LvmPools::claimed(const LvmGroup& group, const PoolRecord& pool, const Configuration& configuration) const {
  Claimed found;
  if (group.isOurs()) {
    for (const LvmDrive& drive : group.drives) {
      if (!belongsTo(drive, pool, configuration)) {
        continue;
      }
      if (drive.isMissing) {
        found.someAreGone = true;
      } else {
        found.members.push_back(drive.node);
      }
    }
    found.areAll = found.members.size() == group.drives.size() && group.volumes.empty();
  }
  for (const PoolMemberRecord& member : pool.members) {
    const std::string& node = driveOf(member, configuration).name;
    if (isLoose(group, node)) {
      found.loose.push_back(node);
    }
  }
  return found;
}

void LvmPools::restoreReturned(const LvmGroup& group) const {
  for (const LvmDrive& drive : group.drives) {
    if (drive.isMissing && !drive.node.empty()) {
      m_command.run(
          "use the drive " + drive.node + " again", {"vgextend", "--restoremissing", m_group, drive.node});
    }
  }
}

void LvmPools::dropGoneDrives(
    const PoolRecord& pool, const Configuration& configuration, const std::string& task) const {
  // This drops every missing drive that holds no part of a volume, also that of another pool: the volume
  // manager cannot drop a single one. It reports a failure if a volume of another pool needs a missing drive.
  const std::string message = m_command.attempt({"vgreduce", "--removemissing", m_group});
  const LvmGroup left = LvmGroup::read(m_command, m_group);
  require(!claimed(left, pool, configuration).someAreGone, TVK_BACKING_FAILED, [&] {
    return "could not " + task + ": a drive of " + nameOf(pool) +
           " that is missing cannot be dropped from the volume group " + m_group + ": " + message +
           "; attach it, or delete what is on it, and try again";
  });
}

void LvmPools::remove(const PoolRecord& pool, const Configuration& configuration) {
  LvmGroup group = LvmGroup::read(m_command, m_group);
  if (group.isOurs()) {
    restoreReturned(group);
    group = LvmGroup::read(m_command, m_group);
    requireUnused(group, pool, configuration);
  }
  Claimed mine = claimed(group, pool, configuration);
  // Without the second case, a cached drive could not be deleted after its SSD has died: the pool of the SSD
  // cannot go first, and the volume manager takes no drive out of a group that lacks one.
  const bool someOthersAreGone = std::any_of(
      group.drives.begin(), group.drives.end(), [](const LvmDrive& drive) { return drive.isMissing; });
  if (mine.someAreGone || (pool.internal && group.isOurs() && someOthersAreGone)) {
    dropGoneDrives(pool, configuration, taskOf("delete", pool));
    group = LvmGroup::read(m_command, m_group);
    mine = claimed(group, pool, configuration);
  }
  if (!mine.members.empty()) {
    Words leave = mine.areAll ? Words{"vgremove", m_group} : Words{"vgreduce", m_group};
    if (!mine.areAll) {
      add(leave, mine.members);
    }
    m_command.run(taskOf("delete", pool), leave);
  }
  add(mine.members, mine.loose);
  if (!mine.members.empty()) {
    Words release = {"pvremove"};
    add(release, mine.members);
    m_command.run(taskOf("delete", pool), release);
  }
}

bool LvmPools::describe(const PoolRecord& pool) {
  const LvmGroup group = LvmGroup::read(m_command, m_group);
  std::map<Words, std::vector<std::string>> nodesOfChange;
  for (std::size_t position = 0; position < pool.members.size(); ++position) {
    const LvmDrive* drive = group.member(pool.id, position);
    if (drive == nullptr) {
      continue;
    }
    const Words changes = tagChanges(drive->tags, tagsOf(pool, position));
    if (!changes.empty()) {
      require(!drive->isMissing, TVK_BACKING_FAILED, [&] {
        return "could not " + taskOf("describe", pool) +
               ": one of its drives is missing; attach it and try again";
      });
      nodesOfChange[changes].push_back(drive->node);
    }
  }
  for (const auto& [changes, nodes] : nodesOfChange) {
    Words command = {"pvchange"};
    add(command, changes);
    add(command, nodes);
    m_command.run(taskOf("describe", pool), command);
  }
  return !nodesOfChange.empty();
}

}  // namespace voltvk
