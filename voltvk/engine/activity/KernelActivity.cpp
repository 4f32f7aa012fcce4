// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/KernelActivity.h"

#include "voltvk/engine/activity/AreaSpread.h"
#include "voltvk/engine/activity/VolumeActivity.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>

namespace voltvk {

namespace {

/**
 * How much a counter of a cache has grown. It has 32 bits, so it starts over from 0. When the volume becomes
 * available again after the machine went down, or when the cache's policy changes, it continues from an
 * earlier value, which the cache has stored beside its data: what was counted since then is known already,
 * for the most part, and what is not is lost.
 */
std::uint64_t growth(std::uint64_t last, std::uint64_t now) {
  constexpr std::uint32_t HALF = std::uint32_t{1} << 31U;
  const auto difference = static_cast<std::uint32_t>(now - last);
  return difference < HALF ? difference : 0;
}

}  // namespace

KernelActivity::KernelActivity(
    Connection& connection, const VolumeRecord& volume, const KernelCounters& counters)
    : m_volume(volume), m_counters(counters) {
  if (!m_counters.areas.empty()) {
    spread(connection);
  } else if (m_counters.cache.totalBlocks > 0) {
    compareCounters(connection);
  }
}

void KernelActivity::spread(Connection& connection) {
  KnownChunks known;
  Statement rows(connection, "SELECT number, ssd FROM chunk WHERE volume = ? ORDER BY number", m_volume.id);
  while (rows.step()) {
    known.emplace_hint(known.end(), rows.unsignedInteger(0), rows.integer(1) != 0);
  }
  SpreadTouches spread = spreadOverChunks(m_volume, m_counters.areas, known);
  m_touches = std::move(spread.touches);
  m_onSsd = spread.onSsd;
  m_total = m_touches.others;
  for (const auto& [number, touches] : m_touches.chunks) {
    m_total += touches;
  }
}

void KernelActivity::compareCounters(Connection& connection) {
  const CacheCounters& now = m_counters.cache;
  Statement last(
      connection,
      "SELECT read_hits, read_misses, write_hits, write_misses FROM kernel_counter WHERE volume = ?",
      m_volume.id);
  const bool isKnown = last.step();
  const auto grown = [&](int column, std::uint64_t counter) {
    return isKnown ? growth(last.unsignedInteger(column), counter) : counter;
  };
  m_onSsd = {grown(0, now.readHits), grown(2, now.writeHits)};
  m_total = {grown(1, now.readMisses), grown(3, now.writeMisses)};
  m_total += m_onSsd;
  m_touches = {{}, m_total, m_onSsd};
}

void KernelActivity::collect(Connection& connection) const {
  TouchRecorder recorder(m_volume, false, m_touches);
  while (recorder.recordNext(connection)) {
  }
  const CacheCounters& cache = m_counters.cache;
  if (cache.totalBlocks > 0) {
    Statement(
        connection, "INSERT OR REPLACE INTO kernel_counter VALUES(?, ?, ?, ?, ?)", m_volume.id,
        cache.readHits, cache.readMisses, cache.writeHits, cache.writeMisses)
        .run();
  }
}

void KernelActivity::addTo(d_ioctl_user_stat& statistics) const {
  statistics.readIoCount += m_total.reads;
  statistics.writeIoCount += m_total.writes;
  statistics.randomIoCount += m_total.sum();
  statistics.ssdReadIoCount += m_onSsd.reads;
  statistics.ssdWriteIoCount += m_onSsd.writes;
  const CacheCounters& cache = m_counters.cache;
  if (cache.totalBlocks > 0) {
    const std::uint64_t used =
        (cache.usedBlocks * cache.blockSectors + m_volume.chunkSectors - 1) / m_volume.chunkSectors;
    statistics.ssdTotalChunks = std::min(used, m_volume.ssdChunks);
    statistics.ssdExtraChunks = m_volume.ssdChunks - statistics.ssdTotalChunks;
  }
}

void readStatistics(
    Connection& connection, const VolumeRecord& volume, const KernelCounters& counters,
    d_ioctl_user_stat& out) {
  readStatistics(connection, volume, out);
  KernelActivity(connection, volume, counters).addTo(out);
}

}  // namespace voltvk
