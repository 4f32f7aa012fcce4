// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/ConfigurationCheck.h"

#include "text/Utf8.h"
#include "voltvk/Limits.h"
#include "voltvk/engine/state/DatabaseError.h"
#include "voltvk/engine/state/PlainText.h"
#include "voltvk/engine/state/Snapshot.h"
#include "voltvk/engine/state/Wording.h"

#include <algorithm>
#include <map>
#include <set>

namespace voltvk {

namespace {

constexpr std::uint64_t MIN_CHUNK_SECTORS = 8;
constexpr std::uint64_t MAX_CHUNK_SECTORS = 65536;
constexpr std::uint64_t MAX_CHUNKS_OF_VOLUME = std::uint64_t{1} << 32U;
constexpr std::uint64_t MAX_POOL_SECTORS = MAX_DRIVE_SECTORS * 64;
constexpr std::uint32_t MAX_DELAY_MILLISECONDS = 600000;
constexpr std::size_t LONGEST_DRIVE_TEXT = 4096;

using ExtentsOfPools = std::map<std::uint32_t, std::vector<Extent>>;

/** @param owner the row that is wrong unless the rule holds; @param fault how */
template <typename Record>
void require(bool holds, const Record& owner, const std::string& fault) {
  if (!holds) {
    throw DatabaseError::ofDamage(tvp::text::printable(nameOf(owner) + " " + fault));
  }
}

template <typename Record>
void checkHeading(const Record& record) {
  require(
      record.id > 0 && !record.name.empty() && isPlainText(record.name, TVK_LONGEST_NAME), record,
      "has no valid name");
  require(
      record.description.size() <= TVK_LONGEST_DESCRIPTION && tvp::text::isUtf8(record.description), record,
      "has no valid description");
  const std::uint64_t chunk = record.chunkSectors;
  require(
      chunk >= MIN_CHUNK_SECTORS && chunk <= MAX_CHUNK_SECTORS && (chunk & (chunk - 1)) == 0, record,
      "has chunks of " + counted(chunk, "sector"));
}

void check(const DriveRecord& drive) {
  require(
      drive.sectors > 0 && drive.sectors <= MAX_DRIVE_SECTORS, drive,
      "has " + counted(drive.sectors, "sector"));
  require(drive.type == 1 || drive.type == 2, drive, "is of the unknown type " + std::to_string(drive.type));
  for (const std::string* text :
       {&drive.name, &drive.serial, &drive.wwid, &drive.vendor, &drive.model, &drive.use, &drive.content}) {
    require(isPlainText(*text, LONGEST_DRIVE_TEXT), drive, "has a text that is not valid");
  }
}

/** @param isReal the pool keeps some of its chunks free, so that its volumes' chunks can be moved */
void check(const PoolRecord& pool, const std::set<std::uint16_t>& drives, bool isReal) {
  checkHeading(pool);
  require(
      pool.tierLevel == 1 || pool.tierLevel == 3, pool,
      "has the tier level " + std::to_string(pool.tierLevel));
  require(
      pool.chunks > 0 && pool.chunks <= MAX_POOL_SECTORS / pool.chunkSectors, pool,
      "has " + counted(pool.chunks, "chunk"));
  std::uint64_t sum = 0;
  for (const PoolMemberRecord& member : pool.members) {
    require(
        drives.count(member.drive) > 0, pool,
        "has drive " + std::to_string(member.drive) + ", which does not exist");
    require(
        member.chunks <= MAX_DRIVE_SECTORS / pool.chunkSectors, pool,
        "has " + counted(member.chunks, "chunk") + " on drive " + std::to_string(member.drive));
    sum += member.chunks;
  }
  require(
      isReal ? sum >= pool.chunks : sum == pool.chunks, pool,
      "has " + counted(pool.chunks, "chunk") + ", but " + std::to_string(sum) + " on its drives");
}

void check(
    const VolumeRecord& volume, const std::map<std::uint32_t, const PoolRecord*>& pools,
    ExtentsOfPools& extents) {
  checkHeading(volume);
  require(
      volume.type == 1 || volume.type == 2, volume, "is of the unknown type " + std::to_string(volume.type));
  require(
      volume.knob >= 1 && volume.knob <= 3, volume, "has the knob setting " + std::to_string(volume.knob));
  const auto [fewer, more] = std::minmax(volume.hddChunks, volume.ssdChunks);
  require(
      more > 0 && more <= MAX_CHUNKS_OF_VOLUME && (fewer > 0 || !volume.isCached()), volume,
      "has " + counted(volume.hddChunks, "chunk") + " on hard disks and " + std::to_string(volume.ssdChunks) +
          " on SSDs");
  std::uint64_t sectors = 0;
  for (const auto& [id, extent] : volume.extents) {
    const auto pool = pools.find(id);
    require(pool != pools.end(), volume, "uses pool " + std::to_string(id) + ", which does not exist");
    const PoolRecord& from = *pool->second;
    const std::uint64_t last = from.placedChunks();
    require(
        extent.chunks > 0 && extent.chunks <= last && extent.first <= last - extent.chunks, volume,
        "uses chunks that " + nameOf(from) + " does not have");
    extents[id].push_back(extent);
    sectors += extent.chunks * from.chunkSectors;  // at most MAX_POOL_SECTORS, so this cannot overflow
    require(sectors <= 2 * MAX_POOL_SECTORS, volume, "uses more chunks than there are");
  }
  require(
      sectors == (volume.hddChunks + volume.ssdChunks) * volume.chunkSectors, volume,
      "has not as many sectors as it uses of its pools");
}

/** Where a volume's chunks are laid. */
void checkLaid(const VolumeRecord& volume) {
  std::uint64_t end = 0;
  std::uint64_t chunks = 0;
  for (const Extent& laid : volume.laidOnSsd) {
    require(
        laid.chunks > 0 && laid.chunks <= volume.ssdChunks && laid.first >= end &&
            laid.first <= volume.capacityChunks() - laid.chunks,
        volume, "is laid on SSDs where it has no chunks");
    end = laid.first + laid.chunks;
    chunks += laid.chunks;
  }
  require(
      chunks == (volume.isCached() ? 0 : volume.ssdChunks), volume,
      "is laid on SSDs with " + counted(chunks, "chunk"));
}

void checkOverlaps(const std::map<std::uint32_t, const PoolRecord*>& pools, ExtentsOfPools& extents) {
  for (auto& [id, used] : extents) {
    std::sort(used.begin(), used.end(), [](const Extent& a, const Extent& b) { return a.first < b.first; });
    const auto twice = std::adjacent_find(used.begin(), used.end(), [](const Extent& a, const Extent& b) {
      return a.first + a.chunks > b.first;
    });
    require(twice == used.end(), *pools.at(id), "has chunks that are used twice");
  }
}

}  // namespace

void checkConfiguration(const Configuration& configuration) {
  std::set<std::uint16_t> drives;
  for (const DriveRecord& drive : configuration.drives) {
    check(drive);
    drives.insert(drive.number);
  }
  std::map<std::uint32_t, const PoolRecord*> pools;
  for (const PoolRecord& pool : configuration.pools) {
    check(pool, drives, configuration.backing.isReal());
    pools[pool.id] = &pool;
  }
  ExtentsOfPools extents;
  for (const VolumeRecord& volume : configuration.volumes) {
    check(volume, pools, extents);
    checkLaid(volume);
  }
  checkOverlaps(pools, extents);
  for (const Fault& fault : configuration.faults) {
    if (fault.milliseconds > MAX_DELAY_MILLISECONDS) {
      throw DatabaseError::ofDamage(
          "an injected fault delays calls by " + std::to_string(fault.milliseconds) + " ms");
    }
  }
}

}  // namespace voltvk
