// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/AreaSpread.h"

#include <algorithm>

namespace voltvk {

namespace {

/** The part of a number that the first ones of some equal shares get. @param first at most shares */
std::uint64_t partOf(std::uint64_t number, std::uint64_t first, std::uint64_t shares) {
  return first * (number / shares) + first * (number % shares) / shares;
}

/** Touches of the chunks of an area that lie before another one. */
Touches before(const AreaCounters& area, std::uint64_t chunk) {
  const std::uint64_t first =
      std::clamp(chunk, area.firstChunk, area.firstChunk + area.chunks) - area.firstChunk;
  return {partOf(area.reads, first, area.chunks), partOf(area.writes, first, area.chunks)};
}

Touches ofChunk(const AreaCounters& area, std::uint64_t chunk) {
  Touches touches = before(area, chunk + 1);
  touches -= before(area, chunk);
  return touches;
}

double heatPerChunk(const AreaCounters& area) {
  return static_cast<double>(area.reads + area.writes) / static_cast<double>(area.chunks);
}

/** Spreads one area after the other. */
class Spreader {
public:
  Spreader(const VolumeRecord& volume, const KnownChunks& known) : m_volume(volume), m_known(known) {}

  void add(const AreaCounters& area) {
    const std::uint64_t end = area.firstChunk + area.chunks;
    Touches others = before(area, end);
    Touches othersOnSsd;
    for (const Extent& laid : m_volume.laidOnSsd) {
      othersOnSsd += before(area, laid.first + laid.chunks);
      othersOnSsd -= before(area, laid.first);
    }
    m_result.onSsd += othersOnSsd;
    auto known = m_known.lower_bound(area.firstChunk);
    for (std::uint64_t chunk = area.firstChunk; chunk < end; ++chunk) {
      const bool isKnown = known != m_known.end() && known->first == chunk;
      if (!isKnown && m_room == 0) {
        // All chunks up to the next known one stay together.
        chunk = std::min(known == m_known.end() ? end : known->first, end) - 1;
        continue;
      }
      const Touches touches = ofChunk(area, chunk);
      const Touches laidOnSsd = m_volume.wasLaidOnSsd(chunk) ? touches : Touches();
      if (isKnown) {
        m_result.onSsd += known->second ? touches : Touches();
        m_result.onSsd -= laidOnSsd;
        ++known;
      }
      if (touches.sum() > 0) {
        m_room -= isKnown ? 0 : 1;
        m_result.touches.chunks.emplace_back(chunk, touches);
        others -= touches;
        othersOnSsd -= laidOnSsd;
      }
    }
    m_result.touches.others += others;
    m_result.touches.othersOnSsd += othersOnSsd;
  }

  SpreadTouches result() { return std::move(m_result); }

private:
  const VolumeRecord& m_volume;
  const KnownChunks& m_known;
  std::size_t m_room = TouchRecorder::REMEMBERED_CHUNKS;
  SpreadTouches m_result;
};

}  // namespace

SpreadTouches spreadOverChunks(
    const VolumeRecord& volume, const std::vector<AreaCounters>& areas, const KnownChunks& known) {
  std::vector<AreaCounters> hottest = areas;
  std::stable_sort(hottest.begin(), hottest.end(), [](const AreaCounters& a, const AreaCounters& b) {
    return heatPerChunk(a) > heatPerChunk(b);
  });
  Spreader spreader(volume, known);
  for (const AreaCounters& area : hottest) {
    spreader.add(area);
  }
  return spreader.result();
}

}  // namespace voltvk
