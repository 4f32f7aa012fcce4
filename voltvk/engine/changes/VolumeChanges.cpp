// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/changes/VolumeChanges.h"

#include "text/Utf8.h"
#include "voltvk/Limits.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/engine/changes/PoolChanges.h"
#include "voltvk/engine/changes/RecordWriter.h"
#include "voltvk/engine/rules/TextRules.h"
#include "voltvk/engine/rules/VolumeRules.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string_view>

namespace voltvk {

namespace {

/** The name, or if a pool has it, the first with a larger number at its end that no pool has. */
std::string freeName(const std::vector<PoolRecord>& pools, const std::string& wanted) {
  constexpr std::size_t DIGITS = 9;
  std::set<std::string> taken;
  for (const PoolRecord& pool : pools) {
    taken.insert(pool.name);
  }
  std::size_t end = wanted.size();
  while (end > 0 && wanted.size() - end < DIGITS && wanted[end - 1] >= '0' && wanted[end - 1] <= '9') {
    --end;
  }
  const std::string_view prefix = std::string_view(wanted).substr(0, end);
  unsigned long number = end < wanted.size() ? std::stoul(wanted.substr(end)) : 0;
  std::string name = wanted;
  while (taken.count(name) > 0) {
    const std::string digits = std::to_string(++number);
    name = tvp::text::cutToSize(prefix, TVK_LONGEST_NAME - digits.size());
    name += digits;
  }
  return name;
}

}  // namespace

VolumeRecord VolumeChanges::find(std::uint32_t volumeId) {
  const std::vector<VolumeRecord> volumes = SnapshotReader(m_connection).volumes();
  return VolumeRules({}, volumes).volume(volumeId);
}

std::uint32_t VolumeChanges::insert(const VolumeRecord& volume) {
  const std::uint32_t id = RecordWriter(m_connection).insert(volume);
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_CREATED, TVK_EVENT_INFORMATION,
          "Volume {} was created: volume type {}, {} sectors",
          {volume.name, std::to_string(volume.type), std::to_string(volume.capacitySectors())}, id);
  return id;
}

std::uint32_t VolumeChanges::create(const VirtualVolumeSpec& spec) {
  const Configuration current = SnapshotReader(m_connection).configuration();
  const VolumeRules rules(current.pools, current.volumes);
  const VolumeRecord volume = rules.creation(spec);
  rules.checkHealth(volume, Health(current.drives, current.pools, current.volumes));
  return insert(volume);
}

std::uint32_t VolumeChanges::createCachedDrive(
    const VirtualPoolSpec& ssdPool, VirtualPoolSpec& hddPool, const VirtualVolumeSpec& volume) {
  SnapshotReader reader(m_connection);
  hddPool.poolFlag = TVK_POOL_INTERNAL;
  if (!hddPool.nameTooLong && std::memchr(hddPool.name, '\0', sizeof hddPool.name) != nullptr) {
    const std::string name = freeName(reader.pools(), hddPool.name);
    hddPool.nameBytes = static_cast<std::uint32_t>(name.size());
    tvkSetText(hddPool.name, sizeof hddPool.name, name.c_str());
  }
  hddPool.poolId = PoolChanges(m_connection).create(hddPool);
  const Configuration current = reader.configuration();
  const VirtualPoolEntry cache{ssdPool.poolId, ssdPool.capacityInSectors};
  const VolumeRules rules(current.pools, current.volumes);
  const VolumeRecord made = rules.cachedDrive(volume, hddPool.poolId, cache);
  rules.checkHealth(made, Health(current.drives, current.pools, current.volumes));
  return insert(made);
}

void VolumeChanges::modify(std::uint32_t volumeId, const VirtualVolumeSpec& spec) {
  SnapshotReader reader(m_connection);
  const std::vector<PoolRecord> pools = reader.pools();
  const std::vector<VolumeRecord> volumes = reader.volumes();
  const VolumeRules rules(pools, volumes);
  const VolumeChange change = rules.modification(volumeId, spec);
  const VolumeRecord& current = rules.volume(volumeId);
  std::string name = current.name;
  EventJournal journal(m_connection);
  if (change.name) {
    Statement(m_connection, "UPDATE volume SET name = ? WHERE id = ?", *change.name, volumeId).run();
    journal.append(
        TVK_EVENT_VOLUME_RENAMED, TVK_EVENT_INFORMATION, "Volume {} was renamed to {}", {name, *change.name},
        volumeId);
    name = *change.name;
  }
  if (change.description) {
    Statement(m_connection, "UPDATE volume SET description = ? WHERE id = ?", *change.description, volumeId)
        .run();
    journal.append(
        TVK_EVENT_VOLUME_DESCRIBED, TVK_EVENT_INFORMATION, "Volume {} got a new description", {name},
        volumeId);
  }
  if (change.knob) {
    Statement(m_connection, "UPDATE volume SET knob = ? WHERE id = ?", *change.knob, volumeId).run();
    journal.append(
        TVK_EVENT_VOLUME_KNOB_CHANGED, TVK_EVENT_INFORMATION,
        "Volume {} changed its fetch and flush mode from {} to {}",
        {name, std::to_string(current.knob), std::to_string(*change.knob)}, volumeId);
  }
}

void VolumeChanges::grow(std::uint32_t volumeId, const VolumeGrowth& wanted) {
  const Configuration current = SnapshotReader(m_connection).configuration();
  const VolumeRules rules(current.pools, current.volumes);
  const VolumeRecord grown = rules.growth(volumeId, wanted);
  rules.checkHealth(grown, Health(current.drives, current.pools, current.volumes));
  RecordWriter(m_connection).resize(grown);
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_GROWN, TVK_EVENT_INFORMATION, "Volume {} has grown from {} to {}",
          {grown.name, sizeText(rules.volume(volumeId).capacitySectors()), sizeText(grown.capacitySectors())},
          volumeId);
}

void VolumeChanges::remove(std::uint32_t volumeId) {
  const VolumeRecord volume = find(volumeId);
  Statement(m_connection, "DELETE FROM chunk WHERE volume = ?", volumeId).run();
  Statement(m_connection, "DELETE FROM kernel_counter WHERE volume = ?", volumeId).run();
  Statement(m_connection, "DELETE FROM volume_extent WHERE volume = ?", volumeId).run();
  Statement(m_connection, "DELETE FROM laid_on_ssd WHERE volume = ?", volumeId).run();
  Statement(m_connection, "DELETE FROM volume WHERE id = ?", volumeId).run();
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_DELETED, TVK_EVENT_INFORMATION, "Volume {} was deleted", {volume.name}, volumeId);
  for (const PoolRecord& pool : SnapshotReader(m_connection).pools()) {
    const bool own =
        std::any_of(volume.extents.begin(), volume.extents.end(), [&](const VolumeExtentRecord& part) {
          return part.pool == pool.id;
        });
    if (own && pool.internal) {
      PoolChanges(m_connection).removeInternal(pool);
    }
  }
}

VolumeRecord VolumeChanges::flushable(std::uint32_t volumeId) {
  VolumeRecord volume = find(volumeId);
  require(volume.isCached(), TVK_NOT_CACHED, [&] {
    return nameOf(volume) + " is tiered: it has no cache that could be flushed";
  });
  return volume;
}

void VolumeChanges::flush(std::uint32_t volumeId) {
  flushable(volumeId);
  Statement(m_connection, "UPDATE chunk SET dirty = 0 WHERE volume = ? AND dirty = 1", volumeId).run();
  reportFlushed(volumeId, static_cast<std::uint64_t>(m_connection.changes()));
}

void VolumeChanges::reportFlushed(std::uint32_t volumeId, std::uint64_t chunks) {
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_FLUSHED, TVK_EVENT_INFORMATION, "Volume {} was flushed: {} chunks written back",
          {find(volumeId).name, std::to_string(chunks)}, volumeId);
}

void VolumeChanges::resetStatistics(std::uint32_t volumeId) {
  const VolumeRecord volume = find(volumeId);
  Statement(
      m_connection,
      "UPDATE volume SET reads = 0, writes = 0, sequential = 0, random = 0, ssd_reads = 0, ssd_writes = 0"
      " WHERE id = ?",
      volumeId)
      .run();
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_STATS_RESET, TVK_EVENT_INFORMATION, "The statistics of volume {} were reset",
          {volume.name}, volumeId);
}

void VolumeChanges::reportCreationFailed(const VirtualVolumeSpec& spec) {
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_CREATION_FAILED, TVK_EVENT_ERROR, "Volume {} could not be created",
          {shownName(spec.name)});
}

void VolumeChanges::reportDeletionFailed(std::uint32_t volumeId) {
  Statement volume(m_connection, "SELECT name FROM volume WHERE id = ?", volumeId);
  const std::string shown = volume.step() ? volume.text(0) : std::to_string(volumeId);
  EventJournal(m_connection)
      .append(
          TVK_EVENT_VOLUME_DELETION_FAILED, TVK_EVENT_ERROR, "Volume {} could not be deleted", {shown},
          volumeId);
}

}  // namespace voltvk
