// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/PolicyEngine.h"

#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/FindById.h"
#include "voltvk/engine/state/LaidOnSsd.h"
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
  const VolumeRecord* volume = findById(volumes, volumeId);
  if (volume == nullptr) {
    return 0;
  }
  const PolicyChoice choice = choose(*volume);
  place(*volume, choice.demoted, false);
  place(*volume, choice.promoted, true);
  finishRound(*volume, choice.promoted.size());
  return choice.promoted.size();
}

PolicyChoice PolicyEngine::choose(const VolumeRecord& volume) {
  PolicyChoice choice;
  if (!isWorkingOn(volume)) {
    return choice;
  }
  const std::vector<Candidate> hot = hottest(volume);
  std::uint64_t room = freeSsdChunks(volume);
  const std::size_t needed = hot.size() - std::min<std::uint64_t>(room, hot.size());
  std::vector<Candidate> cold = unusedOnSsd(volume, needed);
  for (const Candidate& candidate : coldestOnSsd(volume, needed - cold.size())) {
    cold.push_back(candidate);
  }
  auto victim = cold.begin();
  for (const Candidate& candidate : hot) {
    if (room > 0) {
      --room;
    } else if (victim != cold.end() && victim->heat < candidate.heat) {
      choice.demoted.push_back(victim->number);
      ++victim;
    } else {
      break;  // all that follows is colder still, and all that could be replaced is hotter
    }
    choice.promoted.push_back(candidate.number);
  }
  return choice;
}

void PolicyEngine::finishRound(const VolumeRecord& volume, std::uint64_t moved) {
  if (!isWorkingOn(volume)) {
    return;
  }
  age(volume);
  if (moved > 0) {
    EventJournal(m_connection)
        .append(
            TVK_EVENT_VOLUME_CHUNKS_MOVED, TVK_EVENT_INFORMATION,
            "Volume {}: {} chunks moved to the SSD pool", {volume.name, std::to_string(moved)}, volume.id);
  }
}

bool PolicyEngine::isWorkingOn(const VolumeRecord& volume) {
  return volume.hddChunks > 0 && volume.ssdChunks > 0 && isRunning();
}

void PolicyEngine::age(const VolumeRecord& volume) {
  Statement(m_connection, "UPDATE chunk SET heat = heat / 2 WHERE volume = ? AND heat > 0", volume.id).run();
  // A cold chunk in its original place needs no row.
  Statement(
      m_connection, "DELETE FROM chunk WHERE volume = ? AND heat = 0 AND ssd = " + std::string(LAID_ON_SSD),
      volume.id)
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
  // The gaps between the rows: chunks that were originally placed on the SSD pool and never used.
  for (const Extent& laid : volume.laidOnSsd) {
    const std::uint64_t end = laid.first + laid.chunks;
    Statement rows(
        m_connection,
        "SELECT number FROM chunk WHERE volume = ? AND number >= ? AND number < ? ORDER BY number", volume.id,
        laid.first, end);
    for (std::uint64_t next = laid.first; chunks.size() < count && next < end; ++next) {
      const std::uint64_t used = rows.step() ? rows.unsignedInteger(0) : end;
      for (; next < used && chunks.size() < count; ++next) {
        chunks.push_back({next, 0});
      }
    }
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

std::uint64_t PolicyEngine::freeSsdChunks(const VolumeRecord& volume) {
  // A tiered volume has free ones only after moves that were cut off between demoting and promoting.
  Statement row(
      m_connection,
      "SELECT count(*) FILTER (WHERE ssd = 1 AND NOT laid), count(*) FILTER (WHERE ssd = 0 AND laid)"
      " FROM (SELECT ssd, " +
          std::string(LAID_ON_SSD) + " AS laid FROM chunk WHERE volume = ?1)",
      volume.id);
  row.step();
  const std::uint64_t left = row.unsignedInteger(1) + (volume.isCached() ? volume.ssdChunks : 0);
  return left - std::min(left, row.unsignedInteger(0));
}

void PolicyEngine::place(const VolumeRecord& volume, const std::vector<std::uint64_t>& numbers, bool onSsd) {
  Statement store(
      m_connection, "INSERT INTO chunk(volume, number, heat, ssd, dirty) VALUES(?1, ?2, 0, ?3, 0)"
                    " ON CONFLICT DO UPDATE SET ssd = ?3, dirty = 0");
  for (const std::uint64_t number : numbers) {
    store.runWith(volume.id, number, onSsd);
  }
}

}  // namespace voltvk
