// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/changes/LayoutAdoption.h"

#include "voltvk/VirtualPool.h"
#include "voltvk/engine/activity/PolicyEngine.h"
#include "voltvk/engine/changes/RecordWriter.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/LaidOnSsd.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace voltvk {

namespace {

using PoolsById = std::map<std::uint32_t, PoolRecord>;

PoolsById readPools(Connection& connection) {
  PoolsById pools;
  for (PoolRecord& pool : SnapshotReader(connection).pools()) {
    pools.emplace(pool.id, std::move(pool));
  }
  return pools;
}

std::uint64_t sectorsOf(const VolumeExtentRecord& part, const PoolsById& pools) {
  return part.extent.chunks * pools.at(part.pool).chunkSectors;
}

void checkSize(
    const VolumeRecord& volume, const std::vector<VolumeExtentRecord>& layout, const PoolsById& pools) {
  std::uint64_t sectors = 0;
  for (const VolumeExtentRecord& part : layout) {
    require(pools.count(part.pool) > 0, TVK_BACKING_FAILED, [&] {
      return nameOf(volume) + " is reported to use pool " + std::to_string(part.pool) +
             ", which does not exist; compare both with `voltvkctl check`";
    });
    sectors += sectorsOf(part, pools);
  }
  const std::uint64_t expected = (volume.hddChunks + volume.ssdChunks) * volume.chunkSectors;
  require(sectors == expected, TVK_BACKING_FAILED, [&] {
    return nameOf(volume) + " is reported to use " + std::to_string(sectors) + " sectors instead of " +
           std::to_string(expected) + "; compare both with `voltvkctl check`";
  });
}

std::vector<VolumeExtentRecord> merged(const std::vector<VolumeExtentRecord>& layout) {
  std::vector<VolumeExtentRecord> parts;
  for (const VolumeExtentRecord& part : layout) {
    const bool continues = !parts.empty() && parts.back().pool == part.pool &&
                           parts.back().extent.first + parts.back().extent.chunks == part.extent.first;
    if (continues) {
      parts.back().extent.chunks += part.extent.chunks;
    } else if (part.extent.chunks > 0) {
      parts.push_back(part);
    }
  }
  return parts;
}

bool isSame(const VolumeExtentRecord& a, const VolumeExtentRecord& b) {
  return a.pool == b.pool && a.extent.first == b.extent.first && a.extent.chunks == b.extent.chunks;
}

/** Chunks of a tiered volume that are not where they were laid, in ascending order. */
std::vector<std::uint64_t> displacedChunks(
    const VolumeRecord& volume, const std::vector<VolumeExtentRecord>& layout, const PoolsById& pools) {
  std::vector<std::uint64_t> displaced;
  const auto addAll = [&](std::uint64_t first, std::uint64_t end) {
    for (; first < end; ++first) {
      displaced.push_back(first);
    }
  };
  const auto add = [&](std::uint64_t first, std::uint64_t end, bool onSsd) {
    for (const Extent& laid : volume.laidOnSsd) {
      if (onSsd) {
        addAll(first, std::min(end, laid.first));
        first = std::max(first, laid.first + laid.chunks);
      } else {
        addAll(std::max(first, laid.first), std::min(end, laid.first + laid.chunks));
      }
    }
    if (onSsd) {
      addAll(first, end);
    }
  };
  std::uint64_t next = 0;     // the first chunk that has not been looked at
  std::uint64_t sector = 0;   // where the extent begins
  std::uint64_t ssdFrom = 0;  // where the extents on SSDs before it begin
  for (const VolumeExtentRecord& part : layout) {
    const std::uint64_t end = sector + sectorsOf(part, pools);
    if (pools.at(part.pool).tierLevel == TVK_TIER_SSD) {
      const std::uint64_t from = (ssdFrom + volume.chunkSectors - 1) / volume.chunkSectors;
      add(next, from, false);
      next = std::max(next, from);
      add(next, end / volume.chunkSectors, true);
      next = std::max(next, end / volume.chunkSectors);
    } else {
      ssdFrom = end;
    }
    sector = end;
  }
  add(next, volume.capacityChunks(), false);
  return displaced;
}

std::vector<std::uint64_t> recordedAsDisplaced(Connection& connection, const VolumeRecord& volume) {
  std::vector<std::uint64_t> displaced;
  Statement rows(
      connection,
      "SELECT number FROM chunk WHERE volume = ? AND ssd <> " + std::string(LAID_ON_SSD) + " ORDER BY number",
      volume.id);
  while (rows.step()) {
    displaced.push_back(rows.unsignedInteger(0));
  }
  return displaced;
}

/** @return whether any chunk was recorded where it is not */
bool placeChunks(
    Connection& connection, const VolumeRecord& volume, const std::vector<VolumeExtentRecord>& layout,
    const PoolsById& pools) {
  const std::vector<std::uint64_t> displaced = displacedChunks(volume, layout, pools);
  const std::vector<std::uint64_t> recorded = recordedAsDisplaced(connection, volume);
  std::vector<std::uint64_t> moved;
  std::set_symmetric_difference(
      displaced.begin(), displaced.end(), recorded.begin(), recorded.end(), std::back_inserter(moved));
  const auto isOnSsd = [&](std::uint64_t chunk) {
    return volume.wasLaidOnSsd(chunk) != std::binary_search(displaced.begin(), displaced.end(), chunk);
  };
  const auto onSsd = std::stable_partition(moved.begin(), moved.end(), isOnSsd);
  PolicyEngine engine(connection);
  engine.place(volume, {moved.begin(), onSsd}, true);
  engine.place(volume, {onSsd, moved.end()}, false);
  return !moved.empty();
}

}  // namespace

bool adoptLayout(
    Connection& connection, const VolumeRecord& volume, const std::vector<VolumeExtentRecord>& layout) {
  const PoolsById pools = readPools(connection);
  checkSize(volume, layout, pools);
  const std::vector<VolumeExtentRecord> parts = merged(layout);
  const bool isMoved =
      !std::equal(parts.begin(), parts.end(), volume.extents.begin(), volume.extents.end(), isSame);
  if (isMoved) {
    VolumeRecord moved = volume;
    moved.extents = parts;
    RecordWriter(connection).writeExtents(moved);
  }
  const bool isReplaced = !volume.isCached() && placeChunks(connection, volume, parts, pools);
  return isMoved || isReplaced;
}

}  // namespace voltvk
