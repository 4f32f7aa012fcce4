// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/PoolRules.h"

#include "text/Quote.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/engine/rules/ChunkAllocator.h"
#include "voltvk/engine/rules/Limits.h"
#include "voltvk/engine/rules/TextRules.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Refusal.h"

#include <algorithm>
#include <set>

namespace voltvk {

namespace {

/** The only tier level that a drive fits. */
std::uint8_t tierLevelOf(const DriveRecord& drive) {
  return drive.type == TVK_DEVICE_SSD ? TVK_TIER_SSD : TVK_TIER_HDD;
}

bool isMember(const PoolRecord& pool, std::uint16_t drive) {
  return std::any_of(pool.members.begin(), pool.members.end(), [&](const PoolMemberRecord& member) {
    return member.drive == drive;
  });
}

void requireFittingTier(const DriveRecord& drive, std::uint32_t tierLevel) {
  require(tierLevelOf(drive) == tierLevel, TVK_INVALID_TIER_LEVEL, [&] {
    return nameOf(drive) + " is " + kindOf(drive) + ", which the tier level " + tierText(tierLevel) +
           " does not fit; use the tier level " + tierText(tierLevelOf(drive));
  });
}

}  // namespace

void PoolRules::checkNameUnused(const std::string& name) const {
  const auto holder =
      std::find_if(m_pools.begin(), m_pools.end(), [&](const PoolRecord& pool) { return pool.name == name; });
  require(holder == m_pools.end(), TVK_NAME_IN_USE, [&] {
    return "the name " + tvp::text::quoted(name) + " is used by pool " + std::to_string(holder->id) +
           (holder->internal ? ", which is internal" : "") + "; choose another";
  });
}

const PoolRecord& PoolRules::pool(std::uint32_t poolId) const {
  const PoolRecord* found = findById(m_pools, poolId);
  require(found != nullptr, TVK_NO_SUCH_POOL, [&] { return missing("pool", poolId); });
  return *found;
}

const PoolRecord& PoolRules::userPool(std::uint32_t poolId) const {
  const PoolRecord& found = pool(poolId);
  require(!found.internal, TVK_POOL_IS_INTERNAL, [&] {
    return nameOf(found) + " belongs to a cached volume and cannot be changed; change the volume";
  });
  return found;
}

const DriveRecord& PoolRules::drive(std::uint16_t number) const {
  const DriveRecord* found = driveNumbered(m_drives, number);
  require(found != nullptr, TVK_NO_SUCH_DEVICE, [&] {
    return "no drive has the number " + std::to_string(number) + "; see the list of drives";
  });
  return *found;
}

const DriveRecord& PoolRules::freeDrive(std::uint16_t number) const {
  const DriveRecord& found = drive(number);
  const auto owner = std::find_if(m_pools.begin(), m_pools.end(), [&](const PoolRecord& candidate) {
    return isMember(candidate, number);
  });
  const Obstacle obstacle =
      obstacleOf(found, owner == m_pools.end() ? nullptr : &*owner, m_limits.needsRealDrives);
  require(obstacle.status == TVK_OK, obstacle.status, [&] {
    return nameOf(found) + " " + obstacle.reason + "; " + obstacle.advice;
  });
  return found;
}

const DriveRecord& PoolRules::fittingDrive(std::uint16_t number, const PoolRecord& pool) const {
  const DriveRecord& found = freeDrive(number);
  require(tierLevelOf(found) == pool.tierLevel, TVK_DEVICE_KINDS_MIXED, [&] {
    return nameOf(found) + " is " + kindOf(found) + ", and " + nameOf(pool) + " has the tier level " +
           tierText(pool.tierLevel) + "; choose a drive of that kind";
  });
  return found;
}

std::vector<const DriveRecord*> PoolRules::drivesOf(const VirtualPoolSpec& spec) const {
  const std::uint32_t count = spec.numDeviceNumbers;
  require(count == spec.numLogicalDevices, TVK_DEVICE_COUNT_MISMATCH, [&] {
    return counted(spec.numLogicalDevices, "drive") + " announced, but " + counted(count, "drive") +
           " listed; make both numbers the same";
  });
  require(count > 0, TVK_DEVICE_COUNT_MISMATCH, "the request names no drive; a pool has at least 1");
  require(count <= MAX_POOL_DRIVES, TVK_TOO_MANY_DEVICES, [&] {
    return counted(count, "drive") + " listed; a pool has at most " + std::to_string(MAX_POOL_DRIVES);
  });
  std::set<std::uint8_t> numbers;
  for (std::uint32_t i = 0; i < count; ++i) {
    require(numbers.insert(spec.deviceNumbers[i]).second, TVK_DEVICE_DUPLICATE, [&] {
      return "drive " + std::to_string(spec.deviceNumbers[i]) + " is named twice; name each drive once";
    });
  }
  std::vector<const DriveRecord*> drives;
  for (std::uint32_t i = 0; i < count; ++i) {
    drives.push_back(&freeDrive(spec.deviceNumbers[i]));
    const DriveRecord& first = *drives.front();
    const DriveRecord& drive = *drives.back();
    require(drive.type == first.type, TVK_DEVICE_KINDS_MIXED, [&] {
      return "the drives are of different kinds: " + nameOf(first) + " is " + kindOf(first) + ", " +
             nameOf(drive) + " is " + kindOf(drive) + "; a pool has hard disks or SSDs only";
    });
  }
  return drives;
}

std::uint64_t PoolRules::chunksOn(const DriveRecord& drive, const PoolRecord& pool) const {
  return (drive.sectors - std::min(drive.sectors, m_limits.driveOverheadSectors)) / pool.chunkSectors;
}

void PoolRules::layOut(
    PoolRecord& pool, std::uint64_t sectors, const std::vector<const DriveRecord*>& drives) const {
  std::vector<std::uint64_t> capacities;
  std::uint64_t total = 0;
  for (const DriveRecord* drive : drives) {
    capacities.push_back(chunksOn(*drive, pool));
    total += capacities.back();
  }
  const std::uint64_t reserved = pool.internal ? 0 : m_limits.reservedChunks;
  const std::uint64_t usable = total - std::min(total, reserved);
  pool.chunks = roundedUp(sectors, pool.chunkSectors);
  if (m_limits.needsRealDrives && pool.internal && sectors <= drives.front()->sectors) {
    pool.chunks = std::min(pool.chunks, usable);  // what is cached is a whole drive, whatever fits on it
  }
  require(pool.chunks <= usable, TVK_NOT_ENOUGH_SPACE, [&] {
    const std::string who = drives.size() == 1 ? nameOf(*drives.front()) + " holds " : "the drives hold ";
    return who + sizeText(usable * pool.chunkSectors) + " in whole chunks of " + sizeText(pool.chunkSectors) +
           (reserved > 0 ? ", besides the " + sizeText(reserved * pool.chunkSectors) + " kept for moves"
                         : "") +
           ", less than the " + sizeText(sectors) + " asked for";
  });
  const std::vector<std::uint64_t> shares = shareOut(pool.chunks + reserved, capacities);
  for (std::size_t i = 0; i < drives.size(); ++i) {
    require(capacities[i] > 0, TVK_NOT_ENOUGH_SPACE, [&] {
      return nameOf(*drives[i]) + " has " + sizeText(drives[i]->sectors) + ", less than a chunk of " +
             sizeText(pool.chunkSectors) + "; leave it out, or use smaller chunks";
    });
    require(shares[i] > 0, TVK_INVALID_CAPACITY, [&] {
      return sizeText(sectors) + " asked for: " + nameOf(*drives[i]) + " would get no chunk of " +
             sizeText(pool.chunkSectors) + "; leave it out, ask for more, or use smaller chunks";
    });
    pool.members.push_back({drives[i]->number, shares[i]});
  }
}

PoolRecord PoolRules::creation(const VirtualPoolSpec& spec) const {
  PoolRecord pool;
  pool.name = requiredName(givenName(spec));
  pool.description = checkedDescription(givenDescription(spec));
  checkNameUnused(pool.name);
  require(m_pools.size() < MAX_POOLS, TVK_TOO_MANY_POOLS, [] {
    return "there are " + counted(MAX_POOLS, "pool") +
           " already, those of cached drives included, which is the limit; delete one first";
  });
  require(spec.poolFlag == TVK_POOL_USER || spec.poolFlag == TVK_POOL_INTERNAL, TVK_INVALID_ARGUMENT, [&] {
    return "the pool type " + std::to_string(spec.poolFlag) + " is unknown; use " +
           std::to_string(TVK_POOL_USER) + " or " + std::to_string(TVK_POOL_INTERNAL);
  });
  pool.internal = spec.poolFlag == TVK_POOL_INTERNAL;
  requireChunkSize(spec.chunkSizeInSectors, m_limits);
  pool.chunkSectors = spec.chunkSizeInSectors;
  const std::vector<const DriveRecord*> drives = drivesOf(spec);
  require(
      !pool.internal || spec.tierLevel != TVK_TIER_HDD || tierLevelOf(*drives.front()) == TVK_TIER_HDD,
      TVK_INVALID_TIER_LEVEL,
      [&] { return nameOf(*drives.front()) + " is an SSD; what is cached is a hard disk"; });
  requireFittingTier(*drives.front(), spec.tierLevel);
  pool.tierLevel = spec.tierLevel;
  require(spec.capacityInSectors >= MIN_POOL_SECTORS, TVK_INVALID_CAPACITY, [&] {
    return sizeText(spec.capacityInSectors) + " asked for; a pool has at least " + sizeText(MIN_POOL_SECTORS);
  });
  layOut(pool, spec.capacityInSectors, drives);
  return pool;
}

PoolChange PoolRules::modification(std::uint32_t poolId, const VirtualPoolSpec& spec) const {
  const PoolRecord& current = userPool(poolId);
  const std::string name = checkedName(givenName(spec));
  const std::string description = checkedDescription(givenDescription(spec));
  PoolChange change;
  if (!name.empty() && name != current.name) {
    checkNameUnused(name);
    change.name = name;
  }
  if (!description.empty() && description != current.description) {
    change.description = description;
  }
  if (spec.tierLevel != 0) {
    for (const PoolMemberRecord& member : current.members) {
      for (const DriveRecord& drive : m_drives) {
        if (drive.number == member.drive) {
          requireFittingTier(drive, spec.tierLevel);
        }
      }
    }
  }
  if (spec.tierLevel != 0 && spec.tierLevel != current.tierLevel) {
    // The volume's chunks are counted by the kind of pool that they are on.
    requireUnused(current, "before its tier level changes");
    change.tierLevel = spec.tierLevel;
  }
  return change;
}

PoolRecord PoolRules::extension(std::uint32_t poolId, std::uint16_t driveNumber) const {
  PoolRecord grown = userPool(poolId);
  require(grown.members.size() < MAX_POOL_DRIVES, TVK_TOO_MANY_DEVICES, [&] {
    return nameOf(grown) + " has " + counted(grown.members.size(), "drive") +
           " already, which is the limit; make another pool";
  });
  const DriveRecord& added = fittingDrive(driveNumber, grown);
  const std::uint64_t chunks = chunksOn(added, grown);
  require(chunks > 0, TVK_NOT_ENOUGH_SPACE, [&] {
    return nameOf(added) + " has " + sizeText(added.sectors) + ", too little for a chunk of " +
           sizeText(grown.chunkSectors) + "; choose a larger drive";
  });
  const std::string& trouble = Health(m_drives, m_pools, {}).ofPool(poolId);
  require(trouble.empty(), TVK_POOL_DEGRADED, [&] {
    return nameOf(grown) + " is degraded: " + trouble + "; mend that first";
  });
  grown.members.push_back({added.number, chunks});
  grown.chunks += chunks;
  return grown;
}

PoolRecord
PoolRules::replacement(std::uint32_t poolId, std::uint16_t from, std::uint16_t to, Contents contents) const {
  PoolRecord changed = userPool(poolId);
  const DriveRecord& replaced = drive(from);
  const auto member =
      std::find_if(changed.members.begin(), changed.members.end(), [&](const PoolMemberRecord& candidate) {
        return candidate.drive == from;
      });
  require(member != changed.members.end(), TVK_NO_SUCH_DEVICE, [&] {
    return nameOf(replaced) + " does not belong to " + nameOf(changed) + "; name one of its drives";
  });
  const DriveRecord& taken = fittingDrive(to, changed);
  const std::uint64_t room = chunksOn(taken, changed);
  require(room >= member->chunks, TVK_NOT_ENOUGH_SPACE, [&] {
    return nameOf(taken) + " has room for " + sizeText(room * changed.chunkSectors) + ", less than the " +
           sizeText(member->chunks * changed.chunkSectors) + " that " + nameOf(changed) + " keeps on " +
           nameOf(replaced) + "; choose a larger drive";
  });
  const bool isLost = m_limits.needsRealDrives && contents == Contents::ToBeMoved && !replaced.present;
  const std::vector<std::string> users = isLost ? usersOf(changed, from) : std::vector<std::string>();
  require(users.empty(), TVK_POOL_DEGRADED, [&] {
    return nameOf(replaced) + " is missing, so what " + enumerated(users) +
           " has on it cannot be moved; attach the drive, or delete what uses it first";
  });
  member->drive = to;
  return changed;
}

std::vector<std::string> PoolRules::usersOf(const PoolRecord& pool) const {
  return usersOf(pool, {0, UINT64_MAX});
}

std::vector<std::string> PoolRules::usersOf(const PoolRecord& pool, std::uint16_t drive) const {
  Extent chunks;
  for (const PoolMemberRecord& member : pool.members) {
    if (member.drive == drive) {
      chunks.chunks = member.chunks;
      break;
    }
    chunks.first += member.chunks;
  }
  return usersOf(pool, chunks);
}

std::vector<std::string> PoolRules::usersOf(const PoolRecord& pool, const Extent& chunks) const {
  std::vector<std::string> users;
  for (const VolumeRecord& volume : m_volumes) {
    if (std::any_of(volume.extents.begin(), volume.extents.end(), [&](const VolumeExtentRecord& part) {
          return part.pool == pool.id && part.extent.first < chunks.first + chunks.chunks &&
                 chunks.first < part.extent.first + part.extent.chunks;
        })) {
      users.push_back(nameOf(volume));
    }
  }
  return users;
}

void PoolRules::requireUnused(const PoolRecord& pool, const char* when) const {
  std::vector<std::string> users = usersOf(pool);
  require(users.empty(), TVK_POOL_IN_USE, [&] {
    constexpr std::size_t SHOWN = 4;
    if (users.size() > SHOWN) {
      users.resize(SHOWN, {});
      users.back() = "others";
    }
    return nameOf(pool) + " is used by " + enumerated(users) + "; delete what uses it " + when;
  });
}

const PoolRecord& PoolRules::deletion(std::uint32_t poolId) const {
  const PoolRecord& current = pool(poolId);
  const std::vector<std::string> users = usersOf(current);
  require(users.empty() || !current.internal, TVK_POOL_IS_INTERNAL, [&] {
    return nameOf(current) + " is the internal pool of " + users.front() + " and is deleted together with it";
  });
  requireUnused(current, "first");
  return current;
}

}  // namespace voltvk
