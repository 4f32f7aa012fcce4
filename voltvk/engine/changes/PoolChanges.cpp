// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/changes/PoolChanges.h"

#include "voltvk/VirtualPool.h"
#include "voltvk/engine/changes/RecordWriter.h"
#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/rules/PoolRules.h"
#include "voltvk/engine/rules/TextRules.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/Statement.h"
#include "voltvk/engine/state/Wording.h"

#include <vector>

namespace voltvk {

namespace {

std::string typeArgument(bool internal) {
  return std::to_string(internal ? TVK_POOL_INTERNAL : TVK_POOL_USER);
}

std::string deviceOf(const Configuration& configuration, std::uint16_t number) {
  const DriveRecord* found = driveNumbered(configuration.drives, number);
  return found == nullptr ? std::to_string(number) : found->name;
}

}  // namespace

std::uint32_t PoolChanges::create(const VirtualPoolSpec& spec) {
  const Configuration current = SnapshotReader(m_connection).configuration();
  const PoolRecord pool =
      PoolRules(current.drives, current.pools, {}, limitsOf(current.backing)).creation(spec);
  const std::uint32_t id = RecordWriter(m_connection).insert(pool);
  const std::string tier = std::to_string(pool.tierLevel);
  const std::string sectors = std::to_string(pool.chunks * pool.chunkSectors);
  EventJournal journal(m_connection);
  if (pool.internal) {
    journal.append(
        TVK_EVENT_POOL_CREATED, TVK_EVENT_INFORMATION,
        "Pool {} was created: tier level {}, {} sectors, pool type {}",
        {pool.name, tier, sectors, typeArgument(true)}, id);
  } else {
    journal.append(
        TVK_EVENT_POOL_CREATED, TVK_EVENT_INFORMATION, "Pool {} was created: tier level {}, {} sectors",
        {pool.name, tier, sectors}, id);
  }
  return id;
}

void PoolChanges::modify(std::uint32_t poolId, const VirtualPoolSpec& spec) {
  SnapshotReader reader(m_connection);
  const std::vector<DriveRecord> drives = reader.drives();
  const std::vector<PoolRecord> pools = reader.pools();
  const std::vector<VolumeRecord> volumes = reader.volumes();
  const PoolChange change = PoolRules(drives, pools, volumes).modification(poolId, spec);
  Statement old(m_connection, "SELECT name FROM pool WHERE id = ?", poolId);
  old.step();
  std::string name = old.text(0);
  EventJournal journal(m_connection);
  if (change.name) {
    Statement(m_connection, "UPDATE pool SET name = ? WHERE id = ?", *change.name, poolId).run();
    journal.append(
        TVK_EVENT_POOL_RENAMED, TVK_EVENT_INFORMATION, "Pool {} was renamed to {}", {name, *change.name},
        poolId);
    name = *change.name;
  }
  if (change.description) {
    Statement(m_connection, "UPDATE pool SET description = ? WHERE id = ?", *change.description, poolId)
        .run();
    journal.append(
        TVK_EVENT_POOL_DESCRIBED, TVK_EVENT_INFORMATION, "Pool {} got a new description", {name}, poolId);
  }
  if (change.tierLevel) {
    Statement(m_connection, "UPDATE pool SET tier = ? WHERE id = ?", *change.tierLevel, poolId).run();
    journal.append(
        TVK_EVENT_POOL_LEVEL_CHANGED, TVK_EVENT_INFORMATION, "Pool {} has now the tier level {}",
        {name, std::to_string(*change.tierLevel)}, poolId);
  }
}

void PoolChanges::addDrive(std::uint32_t poolId, std::uint16_t drive) {
  const Configuration current = SnapshotReader(m_connection).configuration();
  const PoolRecord grown =
      PoolRules(current.drives, current.pools, current.volumes, limitsOf(current.backing))
          .extension(poolId, drive);
  RecordWriter(m_connection).resize(grown);
  EventJournal(m_connection)
      .append(
          TVK_EVENT_POOL_DRIVE_ADDED, TVK_EVENT_INFORMATION,
          "Drive {} was added to pool {}, which has now {}",
          {deviceOf(current, drive), grown.name, sizeText(grown.chunks * grown.chunkSectors)}, poolId);
}

void PoolChanges::replaceDrive(
    std::uint32_t poolId, std::uint16_t from, std::uint16_t to, Contents contents) {
  const Configuration current = SnapshotReader(m_connection).configuration();
  const PoolRecord changed =
      PoolRules(current.drives, current.pools, current.volumes, limitsOf(current.backing))
          .replacement(poolId, from, to, contents);
  RecordWriter(m_connection).resize(changed);
  EventJournal(m_connection)
      .append(
          TVK_EVENT_POOL_DRIVE_REPLACED, TVK_EVENT_INFORMATION, "Drive {} of pool {} was replaced by {}",
          {deviceOf(current, from), changed.name, deviceOf(current, to)}, poolId);
}

void PoolChanges::remove(std::uint32_t poolId) {
  SnapshotReader reader(m_connection);
  const std::vector<PoolRecord> pools = reader.pools();
  const std::vector<VolumeRecord> volumes = reader.volumes();
  deleteRows(PoolRules({}, pools, volumes).deletion(poolId));
}

void PoolChanges::removeInternal(const PoolRecord& pool) {
  deleteRows(pool);
}

void PoolChanges::deleteRows(const PoolRecord& pool) {
  std::vector<std::uint16_t> freed;
  for (const PoolMemberRecord& member : pool.members) {
    freed.push_back(member.drive);
  }
  // What the last scan has seen there was the pool's; until the next one it would keep others off the drives.
  DriveRegistry(m_connection).forgetContents(freed);
  Statement(m_connection, "DELETE FROM pool_member WHERE pool = ?", pool.id).run();
  Statement(m_connection, "DELETE FROM pool WHERE id = ?", pool.id).run();
  EventJournal(m_connection)
      .append(
          TVK_EVENT_POOL_DELETED, TVK_EVENT_INFORMATION, "Pool {} was deleted, pool type {}",
          {pool.name, typeArgument(pool.internal)}, pool.id);
}

void PoolChanges::reportCreationFailed(const VirtualPoolSpec& spec) {
  EventJournal(m_connection)
      .append(
          TVK_EVENT_POOL_CREATION_FAILED, TVK_EVENT_ERROR, "Pool {} could not be created, pool type {}",
          {shownName(spec.name), typeArgument(spec.poolFlag == TVK_POOL_INTERNAL)});
}

void PoolChanges::reportDeletionFailed(std::uint32_t poolId) {
  Statement pool(m_connection, "SELECT name FROM pool WHERE id = ?", poolId);
  const std::string shown = pool.step() ? pool.text(0) : std::to_string(poolId);
  EventJournal(m_connection)
      .append(
          TVK_EVENT_POOL_DELETION_FAILED, TVK_EVENT_ERROR, "Pool {} could not be deleted", {shown}, poolId);
}

}  // namespace voltvk
