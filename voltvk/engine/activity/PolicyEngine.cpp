// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/PolicyEngine.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/PolicyLimits.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>

namespace voltvk {

bool PolicyEngine::isRunning() {
  return m_connection.number("SELECT value FROM setting WHERE name = 'policy_running'") != 0;
}

void PolicyEngine::setRunning(bool running) {
  Statement(m_connection, "UPDATE setting SET value = ? WHERE name = 'policy_running'", running).run();
}

std::uint64_t PolicyEngine::runRound(std::uint32_t volumeId) {
  const std::vector<VolumeRecord> volumes = SnapshotReader(m_connection).volumes();
  const auto volume = std::find_if(volumes.begin(), volumes.end(), [&](const VolumeRecord& candidate) {
    return candidate.id == volumeId && candidate.hddChunks > 0 && candidate.ssdChunks > 0;
  });
  if (volume == volumes.end() || !isRunning()) {
    return 0;
  }
  const std::uint64_t chunks = moveChunks(*volume);
  age(*volume);
  if (chunks > 0) {
    EventJournal(m_connection)
        .append(
            TVK_EVENT_VOLUME_CHUNKS_MOVED, TVK_EVENT_INFORMATION,
            "Volume {}: {} chunks moved to the SSD pool", {volume->name, std::to_string(chunks)}, volume->id);
  }
  return chunks;
}

std::uint64_t PolicyEngine::moveChunks(const VolumeRecord& volume) {
  const std::vector<Candidate> hot = hottest(volume);
  std::uint64_t room = volume.isCached() ? freeCacheChunks(volume) : 0;
  const std::size_t needed = hot.size() - std::min<std::uint64_t>(room, hot.size());
  std::vector<Candidate> cold = unusedOnSsd(volume, needed);
  for (const Candidate& candidate : coldestOnSsd(volume, needed - cold.size())) {
    cold.push_back(candidate);
  }
  std::uint64_t moved = 0;
  auto victim = cold.begin();
  for (const Candidate& candidate : hot) {
    if (room > 0) {
      --room;
    } else if (victim != cold.end() && victim->heat < candidate.heat) {
      place(volume, victim->number, false);
      ++victim;
    } else {
      break;  // all that follows is colder still, and all that could be replaced is hotter
    }
    place(volume, candidate.number, true);
    ++moved;
  }
  return moved;
}

void PolicyEngine::age(const VolumeRecord& volume) {
  Statement(m_connection, "UPDATE chunk SET heat = heat / 2 WHERE volume = ? AND heat > 0", volume.id).run();
  // A cold chunk in its original place needs no row.
  Statement(
      m_connection, "DELETE FROM chunk WHERE volume = ? AND heat = 0 AND ssd = (? = 0 AND number >= ?)",
      volume.id, volume.isCached(), volume.hddChunks)
      .run();
}

std::vector<PolicyEngine::Candidate> PolicyEngine::hottest(const VolumeRecord& volume) {
  const PolicyLimits limits = policyLimits(volume.knob);
  std::vector<Candidate> chunks;
  Statement rows(
      m_connection,
      "SELECT number, heat FROM chunk WHERE volume = ? AND ssd = 0 AND heat >= ?"
      " ORDER BY heat DESC, number LIMIT ?",
      volume.id, limits.moveThreshold, limits.maxMoveChunks);
  while (rows.step()) {
    chunks.push_back({rows.unsignedInteger(0), rows.integer(1)});
  }
  return chunks;
}

std::vector<PolicyEngine::Candidate>
PolicyEngine::unusedOnSsd(const VolumeRecord& volume, std::size_t count) {
  std::vector<Candidate> chunks;
  if (volume.isCached()) {
    return chunks;
  }
  // The gaps between the rows: chunks that were originally placed on the SSD pool and never used.
  std::uint64_t next = volume.hddChunks;
  Statement rows(
      m_connection, "SELECT number FROM chunk WHERE volume = ? AND number >= ? ORDER BY number", volume.id,
      volume.hddChunks);
  while (chunks.size() < count && next < volume.capacityChunks()) {
    const std::uint64_t used = rows.step() ? rows.unsignedInteger(0) : volume.capacityChunks();
    for (; next < used && chunks.size() < count; ++next) {
      chunks.push_back({next, 0});
    }
    next = used + 1;
  }
  return chunks;
}

std::vector<PolicyEngine::Candidate>
PolicyEngine::coldestOnSsd(const VolumeRecord& volume, std::size_t count) {
  std::vector<Candidate> chunks;
  Statement rows(
      m_connection,
      "SELECT number, heat FROM chunk WHERE volume = ? AND ssd = 1 ORDER BY heat, number LIMIT ?", volume.id,
      count);
  while (rows.step()) {
    chunks.push_back({rows.unsignedInteger(0), rows.integer(1)});
  }
  return chunks;
}

std::uint64_t PolicyEngine::freeCacheChunks(const VolumeRecord& volume) {
  Statement row(m_connection, "SELECT count(*) FROM chunk WHERE volume = ? AND ssd = 1", volume.id);
  row.step();
  return volume.ssdChunks - row.unsignedInteger(0);
}

void PolicyEngine::place(const VolumeRecord& volume, std::uint64_t number, bool onSsd) {
  Statement(
      m_connection,
      "INSERT INTO chunk(volume, number, heat, ssd, dirty) VALUES(?1, ?2, 0, ?3, 0)"
      " ON CONFLICT DO UPDATE SET ssd = ?3, dirty = 0",
      volume.id, number, onSsd)
      .run();
}

}  // namespace voltvk
