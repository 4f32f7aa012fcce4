// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/changes/RecordWriter.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/Statement.h"

#include <set>

namespace voltvk {

// An identifier of 0 becomes null, in whose place the database puts the next one.

std::uint32_t RecordWriter::insert(const PoolRecord& pool) {
  Statement(
      m_connection,
      "INSERT INTO pool(id, name, description, tier, chunk_sectors, chunks, internal)"
      " VALUES(nullif(?, 0), ?, ?, ?, ?, ?, ?)",
      pool.id, pool.name, pool.description, pool.tierLevel, pool.chunkSectors, pool.chunks, pool.internal)
      .run();
  PoolRecord made = pool;
  made.id = static_cast<std::uint32_t>(m_connection.lastInsertedId());
  writeMembers(made);
  return made.id;
}

void RecordWriter::writeMembers(const PoolRecord& pool) {
  Statement(m_connection, "DELETE FROM pool_member WHERE pool = ?", pool.id).run();
  Statement member(m_connection, "INSERT INTO pool_member(pool, position, drive, chunks) VALUES(?, ?, ?, ?)");
  for (std::size_t position = 0; position < pool.members.size(); ++position) {
    member.runWith(pool.id, position, pool.members[position].drive, pool.members[position].chunks);
  }
}

void RecordWriter::resize(const PoolRecord& pool) {
  Statement(m_connection, "UPDATE pool SET chunks = ? WHERE id = ?", pool.chunks, pool.id).run();
  writeMembers(pool);
}

std::uint16_t RecordWriter::freeDeviceNumber(std::uint32_t volumeId) {
  // The identifier, as long as it fits: clients see both.
  constexpr std::uint32_t LARGEST = 0xFFFF;
  std::set<std::uint32_t> taken;
  Statement rows(m_connection, "SELECT device FROM volume WHERE id <> ?", volumeId);
  while (rows.step()) {
    taken.insert(rows.as<std::uint32_t>(0));
  }
  std::uint32_t number = (volumeId - 1) % LARGEST + 1;
  while (taken.count(number) != 0) {
    number = number % LARGEST + 1;
  }
  return static_cast<std::uint16_t>(number);
}

std::uint32_t RecordWriter::insert(const VolumeRecord& volume) {
  Statement(
      m_connection,
      "INSERT INTO volume(id, name, description, type, chunk_sectors, hdd_chunks, ssd_chunks, knob)"
      " VALUES(nullif(?, 0), ?, ?, ?, ?, ?, ?, ?)",
      volume.id, volume.name, volume.description, volume.type, volume.chunkSectors, volume.hddChunks,
      volume.ssdChunks, volume.knob)
      .run();
  VolumeRecord made = volume;
  made.id = static_cast<std::uint32_t>(m_connection.lastInsertedId());
  const std::uint16_t device = made.deviceNumber != 0 ? made.deviceNumber : freeDeviceNumber(made.id);
  Statement(m_connection, "UPDATE volume SET device = ? WHERE id = ?", device, made.id).run();
  writeExtents(made);
  writeLaid(made);
  return made.id;
}

void RecordWriter::writeExtents(const VolumeRecord& volume) {
  Statement(m_connection, "DELETE FROM volume_extent WHERE volume = ?", volume.id).run();
  Statement extent(
      m_connection, "INSERT INTO volume_extent(volume, position, pool, first, chunks) VALUES(?, ?, ?, ?, ?)");
  for (std::size_t position = 0; position < volume.extents.size(); ++position) {
    const VolumeExtentRecord& part = volume.extents[position];
    extent.runWith(volume.id, position, part.pool, part.extent.first, part.extent.chunks);
  }
}

void RecordWriter::writeLaid(const VolumeRecord& volume) {
  Statement(m_connection, "DELETE FROM laid_on_ssd WHERE volume = ?", volume.id).run();
  Statement laid(m_connection, "INSERT INTO laid_on_ssd(volume, first, chunks) VALUES(?, ?, ?)");
  for (const Extent& part : volume.laidOnSsd) {
    laid.runWith(volume.id, part.first, part.chunks);
  }
}

void RecordWriter::resize(const VolumeRecord& volume) {
  Statement(
      m_connection, "UPDATE volume SET hdd_chunks = ?, ssd_chunks = ? WHERE id = ?", volume.hddChunks,
      volume.ssdChunks, volume.id)
      .run();
  writeExtents(volume);
  writeLaid(volume);
}

}  // namespace voltvk
