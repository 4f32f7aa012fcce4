// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Health.h"

#include "voltvk/engine/state/Wording.h"

#include <set>

namespace voltvk {

namespace {

/** How something other than a pool uses the drive, or keeps pools from using it; empty if nothing does. */
std::string foreignUse(const DriveRecord& drive) {
  if (drive.bootable) {
    return "boots this machine";
  }
  if (drive.partitioned) {
    return "has partitions";
  }
  if (drive.mounted) {
    return drive.use.empty() ? "is mounted, used for swap or held by another block device" : drive.use;
  }
  return drive.readOnly ? "is read-only" : "";
}

/** What is wrong with a drive of a pool. @param sectors what the pool keeps on it */
std::string memberTrouble(const DriveRecord& drive, std::uint64_t sectors) {
  if (!drive.present) {
    return "is missing";
  }
  if (drive.sectors < sectors) {
    return "has shrunk to " + sizeText(drive.sectors) + ", less than the " + sizeText(sectors) +
           " that its pool keeps on it";
  }
  return foreignUse(drive);
}

void append(std::string& text, const std::string& sentence) {
  text += (text.empty() ? "" : "; ") + sentence;
}

}  // namespace

Obstacle ineligible(const std::string& reason, const char* advice) {
  return {TVK_DEVICE_NOT_ELIGIBLE, reason + " and cannot join a pool", advice};
}

Obstacle obstacleOf(const DriveRecord& drive, const PoolRecord* owner, bool realDrivesOnly) {
  if (owner != nullptr) {
    return {TVK_DEVICE_IN_USE, "belongs to " + nameOf(*owner), "choose a free drive"};
  }
  if (!drive.present) {
    return {TVK_NO_SUCH_DEVICE, "is unplugged", "plug it in, or choose another drive"};
  }
  if (drive.isVirtual && realDrivesOnly) {
    return ineligible("is a virtual drive, on which nothing real can be stored,", "choose another drive");
  }
  const std::string use = foreignUse(drive);
  return use.empty() ? obstacleOfContent(drive.content) : ineligible(use, "choose another drive");
}

bool isUnsuitable(const DriveRecord& drive, bool realDrivesOnly) {
  return !drive.content.empty() || (drive.isVirtual && realDrivesOnly);
}

Obstacle obstacleOfContent(const std::string& content) {
  if (content.empty()) {
    return {};
  }
  return ineligible(
      content, isUnreadable(content)
                   ? "check the drive, or choose another"
                   : "choose another drive, or erase it with wipefs if its data is not needed");
}

Health::Health(
    const std::vector<DriveRecord>& drives, const std::vector<PoolRecord>& pools,
    const std::vector<VolumeRecord>& volumes) {
  std::map<std::uint16_t, const DriveRecord*> driveOfNumber;
  for (const DriveRecord& drive : drives) {
    driveOfNumber[drive.number] = &drive;
  }
  std::map<std::uint32_t, std::string> nameOfPool;
  for (const PoolRecord& pool : pools) {
    nameOfPool[pool.id] = nameOf(pool);
    for (const PoolMemberRecord& member : pool.members) {
      const auto drive = driveOfNumber.find(member.drive);
      if (drive == driveOfNumber.end()) {
        append(m_pools[pool.id], "drive " + std::to_string(member.drive) + " is unknown");
        continue;
      }
      const std::string trouble = memberTrouble(*drive->second, member.chunks * pool.chunkSectors);
      if (!trouble.empty()) {
        m_drives[member.drive] = nameOf(*drive->second) + " " + trouble;
        append(m_pools[pool.id], m_drives[member.drive]);
      }
    }
  }
  for (const VolumeRecord& volume : volumes) {
    std::set<std::uint32_t> used;
    for (const VolumeExtentRecord& part : volume.extents) {
      const std::string& trouble = ofPool(part.pool);
      if (used.insert(part.pool).second && !trouble.empty()) {
        append(m_volumes[volume.id], nameOfPool[part.pool] + " is degraded: " + trouble);
      }
    }
  }
}

const std::string& Health::find(const Reasons& reasons, std::uint32_t key) {
  static const auto& good = *new std::string;  // threads of a host that exits may still look at it
  const auto reason = reasons.find(key);
  return reason == reasons.end() ? good : reason->second;
}

}  // namespace voltvk
