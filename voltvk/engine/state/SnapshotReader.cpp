// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/SnapshotReader.h"

#include "voltvk/engine/state/ConfigurationCheck.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>

namespace voltvk {

namespace {

/**
 * Whether the current one of some rows belongs to the object with an identifier. Both are read in ascending
 * order of the identifiers, so a row that belongs to an earlier object belongs to none.
 * @param noun what the objects are @param more whether there is a current row
 */
bool isPartOf(const char* noun, std::int64_t id, const Statement& row, bool more) {
  if (more && row.integer(0) < id) {
    throw DatabaseError::ofDamage(
        std::string(noun) + " " + row.text(0) + " does not exist, but parts of it do");
  }
  return more && row.integer(0) == id;
}

}  // namespace

Configuration SnapshotReader::configuration() {
  Configuration configuration;
  configuration.drives = drives();
  configuration.pools = pools();
  configuration.volumes = volumes();
  configuration.faults = faults();
  configuration.policyRunning = setting("policy_running") != 0;
  configuration.backing = backing();
  setting("last_drive_number");
  setting("last_virtual_drive");
  configuration.drivesLeftOut =
      static_cast<std::size_t>(std::max<std::int64_t>(setting("drives_left_out"), 0));
  checkConfiguration(configuration);
  return configuration;
}

std::int64_t SnapshotReader::generation() {
  return setting("generation");
}

std::int64_t SnapshotReader::setting(const char* name) {
  constexpr std::int64_t LARGEST = INT64_MAX / 2;
  Statement row(m_connection, "SELECT value FROM setting WHERE name = ?", std::string_view(name));
  if (!row.step()) {
    throw DatabaseError::ofDamage("the setting " + std::string(name) + " is missing");
  }
  if (row.integer(0) < -1 || row.integer(0) > LARGEST) {
    throw DatabaseError::ofDamage("the setting " + std::string(name) + " is " + row.text(0));
  }
  return row.integer(0);
}

std::vector<DriveRecord> SnapshotReader::drives() {
  std::vector<DriveRecord> drives;
  Statement rows(
      m_connection, "SELECT number, identity, virtual, present, name, serial, wwid, vendor, model,"
                    " sectors, type, interface, removable, bootable, partitioned, mounted, read_only, use,"
                    " content FROM drive ORDER BY number");
  while (rows.step()) {
    DriveRecord drive;
    drive.number = rows.as<std::uint16_t>(0);
    drive.identity = rows.text(1);
    drive.isVirtual = rows.integer(2) != 0;
    drive.present = rows.integer(3) != 0;
    drive.name = rows.text(4);
    drive.serial = rows.text(5);
    drive.wwid = rows.text(6);
    drive.vendor = rows.text(7);
    drive.model = rows.text(8);
    drive.sectors = rows.unsignedInteger(9);
    drive.type = rows.as<std::uint8_t>(10);
    drive.interfaceType = rows.as<std::uint8_t>(11);
    drive.removable = rows.integer(12) != 0;
    drive.bootable = rows.integer(13) != 0;
    drive.partitioned = rows.integer(14) != 0;
    drive.mounted = rows.integer(15) != 0;
    drive.readOnly = rows.integer(16) != 0;
    drive.use = rows.text(17);
    drive.content = rows.text(18);
    drives.push_back(std::move(drive));
  }
  return drives;
}

std::vector<PoolRecord> SnapshotReader::pools() {
  std::vector<PoolRecord> pools;
  Statement rows(
      m_connection, "SELECT id, name, description, tier, chunk_sectors, chunks, internal"
                    " FROM pool ORDER BY id");
  Statement members(m_connection, "SELECT pool, drive, chunks FROM pool_member ORDER BY pool, position");
  bool more = members.step();
  while (rows.step()) {
    PoolRecord pool;
    pool.id = rows.as<std::uint32_t>(0);
    pool.name = rows.text(1);
    pool.description = rows.text(2);
    pool.tierLevel = rows.as<std::uint8_t>(3);
    pool.chunkSectors = rows.unsignedInteger(4);
    pool.chunks = rows.unsignedInteger(5);
    pool.internal = rows.integer(6) != 0;
    for (; isPartOf("pool", pool.id, members, more); more = members.step()) {
      pool.members.push_back({members.as<std::uint16_t>(1), members.unsignedInteger(2)});
    }
    pools.push_back(std::move(pool));
  }
  isPartOf("pool", INT64_MAX, members, more);
  return pools;
}

std::vector<VolumeRecord> SnapshotReader::volumes() {
  std::vector<VolumeRecord> volumes;
  Statement rows(
      m_connection, "SELECT id, name, description, type, chunk_sectors, hdd_chunks, ssd_chunks, knob, device"
                    " FROM volume ORDER BY id");
  Statement extents(
      m_connection, "SELECT volume, pool, first, chunks FROM volume_extent"
                    " ORDER BY volume, position");
  Statement laid(m_connection, "SELECT volume, first, chunks FROM laid_on_ssd ORDER BY volume, first");
  bool more = extents.step();
  bool moreLaid = laid.step();
  while (rows.step()) {
    VolumeRecord volume;
    volume.id = rows.as<std::uint32_t>(0);
    volume.name = rows.text(1);
    volume.description = rows.text(2);
    volume.type = rows.as<std::uint8_t>(3);
    volume.chunkSectors = rows.unsignedInteger(4);
    volume.hddChunks = rows.unsignedInteger(5);
    volume.ssdChunks = rows.unsignedInteger(6);
    volume.knob = rows.as<std::uint8_t>(7);
    volume.deviceNumber = rows.as<std::uint16_t>(8);
    for (; isPartOf("volume", volume.id, extents, more); more = extents.step()) {
      volume.extents.push_back(
          {extents.as<std::uint32_t>(1), {extents.unsignedInteger(2), extents.unsignedInteger(3)}});
    }
    for (; isPartOf("volume", volume.id, laid, moreLaid); moreLaid = laid.step()) {
      volume.laidOnSsd.push_back({laid.unsignedInteger(1), laid.unsignedInteger(2)});
    }
    volumes.push_back(std::move(volume));
  }
  isPartOf("volume", INT64_MAX, extents, more);
  isPartOf("volume", INT64_MAX, laid, moreLaid);
  return volumes;
}

std::vector<Fault> SnapshotReader::faults() {
  std::vector<Fault> faults;
  Statement rows(m_connection, "SELECT kind, operation, status, milliseconds FROM fault ORDER BY id");
  while (rows.step()) {
    faults.push_back(
        {rows.as<FaultKind>(0), rows.text(1), rows.as<std::uint32_t>(2), rows.as<std::uint32_t>(3)});
  }
  return faults;
}

BackingChoice SnapshotReader::backing() {
  Statement row(m_connection, "SELECT kind, volume_group FROM backing");
  if (!row.step()) {
    throw DatabaseError::ofDamage("the choice of the backing is missing");
  }
  return {row.as<BackingKind>(0), row.text(1)};
}

}  // namespace voltvk
