// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/PoolRules.h"

#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/engine/rules/ChunkAllocator.h"
#include "voltvk/engine/rules/Limits.h"
#include "voltvk/engine/rules/Refusal.h"
#include "voltvk/engine/rules/TextRules.h"

#include <algorithm>
#include <set>

namespace voltvk {

namespace {

/** The only tier level that a drive fits. */
std::uint8_t tierLevelOf(const DriveRecord& drive) {
  return drive.type == TVK_DEVICE_SSD ? TVK_TIER_SSD : TVK_TIER_HDD;
}

}  // namespace

void PoolRules::checkNameUnused(const std::string& name) const {
  require(
      std::none_of(m_pools.begin(), m_pools.end(), [&](const PoolRecord& pool) { return pool.name == name; }),
      TVK_NAME_IN_USE);
}

const PoolRecord& PoolRules::pool(std::uint32_t poolId) const {
  const auto found = std::find_if(
      m_pools.begin(), m_pools.end(), [&](const PoolRecord& candidate) { return candidate.id == poolId; });
  require(found != m_pools.end(), TVK_NO_SUCH_POOL);
  return *found;
}

const DriveRecord& PoolRules::freeDrive(std::uint8_t number) const {
  const auto drive = std::find_if(m_drives.begin(), m_drives.end(), [&](const DriveRecord& candidate) {
    return candidate.number == number;
  });
  const bool used = std::any_of(m_pools.begin(), m_pools.end(), [&](const PoolRecord& candidate) {
    return std::any_of(
        candidate.members.begin(), candidate.members.end(),
        [&](const PoolMemberRecord& member) { return member.drive == number; });
  });
  require(!used, TVK_DEVICE_IN_USE);
  require(drive != m_drives.end() && drive->present, TVK_NO_SUCH_DEVICE);
  require(!drive->partitioned && !drive->mounted && !drive->bootable, TVK_DEVICE_NOT_ELIGIBLE);
  return *drive;
}

std::vector<const DriveRecord*> PoolRules::drivesOf(const VirtualPoolSpec& spec) const {
  require(
      spec.numDeviceNumbers == spec.numLogicalDevices && spec.numDeviceNumbers > 0,
      TVK_DEVICE_COUNT_MISMATCH);
  require(spec.numDeviceNumbers <= MAX_POOL_DRIVES, TVK_TOO_MANY_DEVICES);
  std::set<std::uint8_t> numbers(spec.deviceNumbers, spec.deviceNumbers + spec.numDeviceNumbers);
  require(numbers.size() == spec.numDeviceNumbers, TVK_DEVICE_DUPLICATE);
  std::vector<const DriveRecord*> drives;
  for (std::uint32_t i = 0; i < spec.numDeviceNumbers; ++i) {
    drives.push_back(&freeDrive(spec.deviceNumbers[i]));
    require(drives.back()->type == drives.front()->type, TVK_DEVICE_KINDS_MIXED);
  }
  return drives;
}

std::vector<PoolMemberRecord>
PoolRules::members(const PoolRecord& pool, const std::vector<const DriveRecord*>& drives) const {
  std::vector<std::uint64_t> capacities;
  std::uint64_t total = 0;
  for (const DriveRecord* drive : drives) {
    capacities.push_back(drive->sectors / pool.chunkSectors);
    total += capacities.back();
  }
  require(pool.chunks <= total, TVK_NOT_ENOUGH_SPACE);
  const std::vector<std::uint64_t> shares = shareOut(pool.chunks, capacities);
  std::vector<PoolMemberRecord> members;
  for (std::size_t i = 0; i < drives.size(); ++i) {
    members.push_back({drives[i]->number, shares[i]});
  }
  return members;
}

PoolRecord PoolRules::creation(const VirtualPoolSpec& spec) const {
  PoolRecord pool;
  pool.name = checkedName(spec.name, spec.nameTooLong);
  require(!pool.name.empty(), TVK_INVALID_NAME);
  pool.description = checkedDescription(spec.description, spec.descriptionTooLong);
  checkNameUnused(pool.name);
  require(m_pools.size() < MAX_POOLS, TVK_TOO_MANY_POOLS);
  require(spec.poolFlag == TVK_POOL_USER || spec.poolFlag == TVK_POOL_INTERNAL, TVK_INVALID_ARGUMENT);
  pool.internal = spec.poolFlag == TVK_POOL_INTERNAL;
  require(isChunkSize(spec.chunkSizeInSectors), TVK_INVALID_CHUNK_SIZE);
  pool.chunkSectors = spec.chunkSizeInSectors;
  const std::vector<const DriveRecord*> drives = drivesOf(spec);
  require(spec.tierLevel == tierLevelOf(*drives.front()), TVK_INVALID_TIER_LEVEL);
  pool.tierLevel = spec.tierLevel;
  require(spec.capacityInSectors >= MIN_POOL_SECTORS, TVK_INVALID_CAPACITY);
  pool.chunks = roundedUp(spec.capacityInSectors, pool.chunkSectors);
  pool.members = members(pool, drives);
  return pool;
}

PoolChange PoolRules::modification(std::uint32_t poolId, const VirtualPoolSpec& spec) const {
  const PoolRecord& current = pool(poolId);
  require(!current.internal, TVK_POOL_IS_INTERNAL);
  const std::string name = checkedName(spec.name, spec.nameTooLong);
  const std::string description = checkedDescription(spec.description, spec.descriptionTooLong);
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
        require(drive.number != member.drive || tierLevelOf(drive) == spec.tierLevel, TVK_INVALID_TIER_LEVEL);
      }
    }
    if (spec.tierLevel != current.tierLevel) {
      change.tierLevel = spec.tierLevel;
    }
  }
  return change;
}

const PoolRecord& PoolRules::deletion(std::uint32_t poolId) const {
  const PoolRecord& current = pool(poolId);
  const bool used = std::any_of(m_volumes.begin(), m_volumes.end(), [&](const VolumeRecord& volume) {
    return std::any_of(volume.extents.begin(), volume.extents.end(), [&](const VolumeExtentRecord& part) {
      return part.pool == poolId;
    });
  });
  require(!used, current.internal ? TVK_POOL_IS_INTERNAL : TVK_POOL_IN_USE);
  return current;
}

}  // namespace voltvk
