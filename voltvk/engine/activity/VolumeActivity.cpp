// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/VolumeActivity.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <map>
#include <random>

namespace voltvk {

namespace {

/** Picks the chunks that a pattern touches, one by one. */
class ChunkPicker {
public:
  ChunkPicker(const IoPattern& pattern, std::uint64_t chunks)
      : m_pattern(pattern), m_chunks(chunks), m_random(pattern.seed) {}

  std::uint64_t next() {
    if (m_pattern.hotPercent > 0 && m_random() % 100 < m_pattern.hotPercent) {
      return m_random() % std::min(m_chunks, IoReplay::HOT_CHUNKS);
    }
    return (m_pattern.sequential ? m_position++ : m_random()) % m_chunks;
  }

private:
  const IoPattern& m_pattern;
  std::uint64_t m_chunks;
  std::uint64_t m_position = 0;
  std::mt19937_64 m_random;
};

}  // namespace

IoReplay::Touches& IoReplay::Touches::operator+=(const Touches& other) {
  reads += other.reads;
  writes += other.writes;
  return *this;
}

IoReplay::IoReplay(Connection& connection, const VolumeRecord& volume, const IoPattern& pattern)
    : m_volume(volume), m_sequential(pattern.sequential) {
  std::map<std::uint64_t, Touches> touched;
  ChunkPicker picker(pattern, m_volume.capacityChunks());
  const std::uint64_t total = pattern.reads + pattern.writes;
  for (std::uint64_t operation = 0, read = 0; operation < total; ++operation) {
    // Reads are spread evenly among the writes.
    const bool isRead = (operation + 1) * pattern.reads / total > read;
    read += isRead ? 1 : 0;
    Touches& touches = touched[picker.next()];
    ++(isRead ? touches.reads : touches.writes);
  }
  Statement rows(connection, "SELECT number FROM chunk WHERE volume = ?", m_volume.id);
  while (rows.step()) {
    const auto known = touched.find(rows.unsignedInteger(0));
    if (known != touched.end()) {
      m_touched.push_back(*known);
      touched.erase(known);
    }
  }
  std::vector<ChunkTouches> unknown(touched.begin(), touched.end());
  leaveOut(unknown);
  m_touched.insert(m_touched.end(), unknown.begin(), unknown.end());
}

void IoReplay::leaveOut(std::vector<ChunkTouches>& unknown) {
  if (unknown.size() <= REMEMBERED_CHUNKS) {
    return;
  }
  // Those that would be dropped again at the end. They have no row, so they are where they were laid.
  const auto end = unknown.begin() + REMEMBERED_CHUNKS;
  std::nth_element(unknown.begin(), end, unknown.end(), [](const ChunkTouches& a, const ChunkTouches& b) {
    return a.second.sum() != b.second.sum() ? a.second.sum() > b.second.sum() : a.first < b.first;
  });
  for (auto chunk = end; chunk != unknown.end(); ++chunk) {
    m_uncounted += chunk->second;
    m_uncountedOnSsd += wasLaidOnSsd(chunk->first) ? chunk->second : Touches();
  }
  unknown.erase(end, unknown.end());
}

bool IoReplay::wasLaidOnSsd(std::uint64_t number) const {
  return !m_volume.isCached() && number >= m_volume.hddChunks;
}

bool IoReplay::recordNext(Connection& connection) {
  Statement volume(connection, "SELECT 1 FROM volume WHERE id = ?", m_volume.id);
  require(
      volume.step(), TVK_NO_SUCH_VOLUME, [&] { return nameOf(m_volume) + " has been deleted meanwhile"; });
  if (m_next == m_touched.size()) {
    return forgetColdest(connection);
  }
  Statement store(
      connection, "INSERT INTO chunk(volume, number, heat, ssd, dirty) VALUES(?1, ?2, ?3, ?4, 0)"
                  " ON CONFLICT DO UPDATE SET heat = heat + ?3, dirty = max(dirty, ssd AND ?5)"
                  " RETURNING ssd");
  const std::size_t end = std::min(m_next + CHUNKS_PER_STEP, m_touched.size());
  for (; m_next < end; ++m_next) {
    const auto& [number, touches] = m_touched[m_next];
    store.rebind(
        m_volume.id, number, touches.sum(), wasLaidOnSsd(number), m_volume.isCached() && touches.writes > 0);
    while (store.step()) {
      m_uncountedOnSsd += store.integer(0) != 0 ? touches : Touches();
    }
    m_uncounted += touches;
  }
  count(connection);
  return true;
}

void IoReplay::count(Connection& connection) {
  const std::uint64_t total = m_uncounted.sum();
  Statement(
      connection,
      "UPDATE volume SET reads = reads + ?, writes = writes + ?, sequential = sequential + ?,"
      " random = random + ?, ssd_reads = ssd_reads + ?, ssd_writes = ssd_writes + ? WHERE id = ?",
      m_uncounted.reads, m_uncounted.writes, m_sequential ? total : 0, m_sequential ? 0 : total,
      m_uncountedOnSsd.reads, m_uncountedOnSsd.writes, m_volume.id)
      .run();
  m_uncounted = {};
  m_uncountedOnSsd = {};
}

bool IoReplay::forgetColdest(Connection& connection) const {
  Statement count(connection, "SELECT count(*) FROM chunk WHERE volume = ?", m_volume.id);
  count.step();
  const std::uint64_t rows = count.unsignedInteger(0);
  if (rows <= REMEMBERED_CHUNKS) {
    return false;
  }
  // Only for chunks in their original place: the location of the others must not be lost.
  Statement(
      connection,
      "DELETE FROM chunk WHERE volume = ?1 AND number IN (SELECT number FROM chunk WHERE volume = ?1"
      " AND ssd = (?2 = 0 AND number >= ?3) ORDER BY heat, number DESC LIMIT ?4)",
      m_volume.id, m_volume.isCached(), m_volume.hddChunks,
      std::min<std::uint64_t>(rows - REMEMBERED_CHUNKS, CHUNKS_PER_STEP))
      .run();
  return connection.changes() > 0;
}

void readStatistics(Connection& connection, const VolumeRecord& volume, d_ioctl_user_stat& out) {
  Statement row(
      connection,
      "SELECT reads, writes, sequential, random, ssd_reads, ssd_writes,"
      " (SELECT count(*) FROM chunk WHERE volume = id AND ssd = 1) FROM volume WHERE id = ?",
      volume.id);
  row.step();
  out = {};
  out.readIoCount = row.unsignedInteger(0);
  out.writeIoCount = row.unsignedInteger(1);
  out.sequentialIoCount = row.unsignedInteger(2);
  out.randomIoCount = row.unsignedInteger(3);
  out.ssdReadIoCount = row.unsignedInteger(4);
  out.ssdWriteIoCount = row.unsignedInteger(5);
  // All SSD chunks of a tiered volume are in use from the beginning; a cache fills up over time.
  const std::uint64_t cached = std::min(row.unsignedInteger(6), volume.ssdChunks);
  out.ssdTotalChunks = volume.isCached() ? cached : volume.ssdChunks;
  out.ssdExtraChunks = volume.ssdChunks - out.ssdTotalChunks;
  out.hddTotalChunks = volume.hddChunks;
  out.chunkSize = volume.chunkSectors;
  out.totalChunks = volume.capacityChunks();
  out.feature = volume.features();
}

}  // namespace voltvk
