// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/TouchRecorder.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/LaidOnSsd.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>

namespace voltvk {

Touches& Touches::operator+=(const Touches& other) {
  reads += other.reads;
  writes += other.writes;
  return *this;
}

Touches& Touches::operator-=(const Touches& other) {
  reads -= other.reads;
  writes -= other.writes;
  return *this;
}

bool TouchRecorder::recordNext(Connection& connection) {
  Statement volume(connection, "SELECT 1 FROM volume WHERE id = ?", m_volume.id);
  require(
      volume.step(), TVK_NO_SUCH_VOLUME, [&] { return nameOf(m_volume) + " has been deleted meanwhile"; });
  const std::vector<ChunkTouches>& chunks = m_touches.chunks;
  if (m_next == chunks.size() && m_touches.others.sum() == 0) {
    return forgetColdest(connection);
  }
  Statement store(
      connection, "INSERT INTO chunk(volume, number, heat, ssd, dirty) VALUES(?1, ?2, ?3, ?4, 0)"
                  " ON CONFLICT DO UPDATE SET heat = heat + ?3, dirty = max(dirty, ssd AND ?5)"
                  " RETURNING ssd");
  const std::size_t end = std::min(m_next + CHUNKS_PER_STEP, chunks.size());
  for (; m_next < end; ++m_next) {
    const auto& [number, touches] = chunks[m_next];
    store.rebind(
        m_volume.id, number, touches.sum(), m_volume.wasLaidOnSsd(number),
        m_volume.isCached() && touches.writes > 0);
    while (store.step()) {
      m_touches.othersOnSsd += store.integer(0) != 0 ? touches : Touches();
    }
    m_touches.others += touches;
  }
  count(connection);
  return true;
}

void TouchRecorder::count(Connection& connection) {
  const std::uint64_t total = m_touches.others.sum();
  Statement(
      connection,
      "UPDATE volume SET reads = reads + ?, writes = writes + ?, sequential = sequential + ?,"
      " random = random + ?, ssd_reads = ssd_reads + ?, ssd_writes = ssd_writes + ? WHERE id = ?",
      m_touches.others.reads, m_touches.others.writes, m_sequential ? total : 0, m_sequential ? 0 : total,
      m_touches.othersOnSsd.reads, m_touches.othersOnSsd.writes, m_volume.id)
      .run();
  m_touches.others = {};
  m_touches.othersOnSsd = {};
}

bool TouchRecorder::forgetColdest(Connection& connection) const {
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
      " AND ssd = " +
          std::string(LAID_ON_SSD) + " ORDER BY heat, number DESC LIMIT ?2)",
      m_volume.id, std::min<std::uint64_t>(rows - REMEMBERED_CHUNKS, CHUNKS_PER_STEP))
      .run();
  return connection.changes() > 0;
}

}  // namespace voltvk
