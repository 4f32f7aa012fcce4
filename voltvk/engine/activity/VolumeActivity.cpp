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

/**
 * Leaves chunks out that would be dropped again at the end. They have no row, so they are where they were
 * laid.
 */
void leaveOutColdest(const VolumeRecord& volume, std::vector<ChunkTouches>& unknown, VolumeTouches& touches) {
  if (unknown.size() <= TouchRecorder::REMEMBERED_CHUNKS) {
    return;
  }
  const auto end = unknown.begin() + TouchRecorder::REMEMBERED_CHUNKS;
  std::nth_element(unknown.begin(), end, unknown.end(), [](const ChunkTouches& a, const ChunkTouches& b) {
    return a.second.sum() != b.second.sum() ? a.second.sum() > b.second.sum() : a.first < b.first;
  });
  for (auto chunk = end; chunk != unknown.end(); ++chunk) {
    touches.others += chunk->second;
    touches.othersOnSsd += volume.wasLaidOnSsd(chunk->first) ? chunk->second : Touches();
  }
  unknown.erase(end, unknown.end());
}

VolumeTouches replay(Connection& connection, const VolumeRecord& volume, const IoPattern& pattern) {
  std::map<std::uint64_t, Touches> touched;
  ChunkPicker picker(pattern, volume.capacityChunks());
  const std::uint64_t total = pattern.reads + pattern.writes;
  for (std::uint64_t operation = 0, read = 0; operation < total; ++operation) {
    // Reads are spread evenly among the writes.
    const bool isRead = (operation + 1) * pattern.reads / total > read;
    read += isRead ? 1 : 0;
    Touches& touches = touched[picker.next()];
    ++(isRead ? touches.reads : touches.writes);
  }
  VolumeTouches touches;
  Statement rows(connection, "SELECT number FROM chunk WHERE volume = ?", volume.id);
  while (rows.step()) {
    const auto known = touched.find(rows.unsignedInteger(0));
    if (known != touched.end()) {
      touches.chunks.push_back(*known);
      touched.erase(known);
    }
  }
  std::vector<ChunkTouches> unknown(touched.begin(), touched.end());
  leaveOutColdest(volume, unknown, touches);
  touches.chunks.insert(touches.chunks.end(), unknown.begin(), unknown.end());
  return touches;
}

}  // namespace

IoReplay::IoReplay(Connection& connection, const VolumeRecord& volume, const IoPattern& pattern)
    : m_recorder(volume, pattern.sequential, replay(connection, volume, pattern)) {}

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
