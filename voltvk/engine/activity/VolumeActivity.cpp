// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/VolumeActivity.h"

#include "voltvk/engine/state/Connection.h"
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
      return m_random() % std::min(m_chunks, VolumeActivity::HOT_CHUNKS);
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

void VolumeActivity::play(const IoPattern& pattern) {
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

  SsdCounts onSsd;
  const bool cached = m_volume.isCached();
  Statement store(
      m_connection, "INSERT INTO chunk(volume, number, heat, ssd, dirty) VALUES(?1, ?2, ?3, ?4, 0)"
                    " ON CONFLICT DO UPDATE SET heat = heat + ?3, dirty = max(dirty, ssd AND ?5)"
                    " RETURNING ssd");
  for (const auto& [number, touches] : touched) {
    const bool laidOnSsd = !cached && number >= m_volume.hddChunks;
    store.rebind(
        m_volume.id, number, touches.reads + touches.writes, laidOnSsd, cached && touches.writes > 0);
    while (store.step()) {
      const bool isOnSsd = store.integer(0) != 0;
      onSsd.reads += isOnSsd ? touches.reads : 0;
      onSsd.writes += isOnSsd ? touches.writes : 0;
    }
  }
  Statement(
      m_connection,
      "UPDATE volume SET reads = reads + ?, writes = writes + ?, sequential = sequential + ?,"
      " random = random + ?, ssd_reads = ssd_reads + ?, ssd_writes = ssd_writes + ? WHERE id = ?",
      pattern.reads, pattern.writes, pattern.sequential ? total : 0, pattern.sequential ? 0 : total,
      onSsd.reads, onSsd.writes, m_volume.id)
      .run();
  forgetColdest();
}

void VolumeActivity::forgetColdest() {
  Statement count(m_connection, "SELECT count(*) FROM chunk WHERE volume = ?", m_volume.id);
  count.step();
  const std::int64_t excess = count.integer(0) - REMEMBERED_CHUNKS;
  if (excess > 0) {
    // Only for chunks in their original place: the location of the others must not be lost.
    Statement(
        m_connection,
        "DELETE FROM chunk WHERE volume = ?1 AND number IN (SELECT number FROM chunk WHERE volume = ?1"
        " AND ssd = (?2 = 0 AND number >= ?3) ORDER BY heat, number DESC LIMIT ?4)",
        m_volume.id, m_volume.isCached(), m_volume.hddChunks, excess)
        .run();
  }
}

void VolumeActivity::statistics(d_ioctl_user_stat& out) {
  Statement row(
      m_connection,
      "SELECT reads, writes, sequential, random, ssd_reads, ssd_writes,"
      " (SELECT count(*) FROM chunk WHERE volume = id AND ssd = 1) FROM volume WHERE id = ?",
      m_volume.id);
  row.step();
  out = {};
  out.readIoCount = row.unsignedInteger(0);
  out.writeIoCount = row.unsignedInteger(1);
  out.sequentialIoCount = row.unsignedInteger(2);
  out.randomIoCount = row.unsignedInteger(3);
  out.ssdReadIoCount = row.unsignedInteger(4);
  out.ssdWriteIoCount = row.unsignedInteger(5);
  // All SSD chunks of a tiered volume are in use from the beginning; a cache fills up over time.
  out.ssdTotalChunks = m_volume.isCached() ? row.unsignedInteger(6) : m_volume.ssdChunks;
  out.ssdExtraChunks = m_volume.ssdChunks - out.ssdTotalChunks;
  out.hddTotalChunks = m_volume.hddChunks;
  out.chunkSize = m_volume.chunkSectors;
  out.totalChunks = m_volume.capacityChunks();
  out.feature = m_volume.features();
}

}  // namespace voltvk
