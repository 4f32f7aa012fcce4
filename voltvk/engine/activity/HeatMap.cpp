// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/activity/HeatMap.h"

#include "voltvk/engine/state/PolicyLimits.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace voltvk {

namespace {

std::uint64_t sumOf(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  return a > most - b ? most : a + b;
}

/** How many of some consecutive chunks of a volume are laid on the SSD pool; those of a cache are copies. */
std::uint64_t laidOnSsd(const VolumeRecord& volume, std::uint64_t first, std::uint64_t chunks) {
  std::uint64_t sum = 0;
  for (const Extent& laid : volume.laidOnSsd) {
    sum += std::clamp(laid.first + laid.chunks, first, first + chunks) -
           std::clamp(laid.first, first, first + chunks);
  }
  return sum;
}

}  // namespace

std::vector<RememberedChunk> rememberedChunks(Connection& connection, const VolumeRecord& volume) {
  std::vector<RememberedChunk> chunks;
  Statement rows(
      connection,
      "SELECT number, heat, ssd, dirty FROM chunk WHERE volume = ? AND number < ? ORDER BY number", volume.id,
      volume.capacityChunks());
  while (rows.step()) {
    chunks.push_back(
        {rows.unsignedInteger(0), rows.unsignedInteger(1), rows.integer(2) != 0, rows.integer(3) != 0});
  }
  return chunks;
}

HeatCell::Place HeatCell::place() const {
  return dirty > 0 ? Place::Dirty : onSsd == 0 ? Place::Disk : onSsd < chunks ? Place::Both : Place::Ssd;
}

HeatCell& HeatCell::operator+=(const HeatCell& next) {
  chunks += next.chunks;
  onSsd += next.onSsd;
  hot += next.hot;
  hotOnSsd += next.hotOnSsd;
  dirty += next.dirty;
  heat = sumOf(heat, next.heat);
  heatOnSsd = sumOf(heatOnSsd, next.heatOnSsd);
  hottest = std::max(hottest, next.hottest);
  return *this;
}

HeatMap::HeatMap(VolumeRecord volume, const std::vector<RememberedChunk>& chunks, std::size_t maxCells)
    : m_volume(std::move(volume)) {
  while ((m_volume.capacityChunks() - 1) / m_chunksPerCell >= maxCells) {
    m_chunksPerCell *= 2;
  }
  layOut();
  for (const RememberedChunk& chunk : chunks) {
    add(chunk);
  }
  for (const HeatCell& cell : m_cells) {
    m_total += cell;
  }
}

void HeatMap::layOut() {
  const std::uint64_t capacity = m_volume.capacityChunks();
  for (std::uint64_t first = 0; first < capacity; first += m_chunksPerCell) {
    HeatCell cell;
    cell.first = first;
    cell.chunks = std::min(m_chunksPerCell, capacity - first);
    cell.onSsd = laidOnSsd(m_volume, first, cell.chunks);
    m_cells.push_back(cell);
  }
}

void HeatMap::add(const RememberedChunk& chunk) {
  HeatCell& cell = m_cells.at(chunk.number / m_chunksPerCell);
  cell.onSsd = cell.onSsd - (m_volume.wasLaidOnSsd(chunk.number) ? 1 : 0) + (chunk.ssd ? 1 : 0);
  const bool hot = chunk.heat >= threshold();
  HeatCell added;
  added.hot = hot ? 1 : 0;
  added.hotOnSsd = hot && chunk.ssd ? 1 : 0;
  added.dirty = chunk.dirty ? 1 : 0;
  added.heat = chunk.heat;
  added.heatOnSsd = chunk.ssd ? chunk.heat : 0;
  added.hottest = chunk.heat;
  cell += added;
}

unsigned HeatMap::levelOf(std::uint64_t heat) const {
  unsigned level = LEVELS - 1;
  while (heat < lowestOf(level)) {
    --level;
  }
  return level;
}

std::uint64_t HeatMap::lowestOf(unsigned level) const {
  const std::uint64_t threshold = policyLimits(m_volume.knob).moveThreshold;
  if (level <= 2) {
    return level == 2 ? threshold : level;
  }
  const double middle = std::sqrt(static_cast<double>(threshold) * static_cast<double>(m_total.hottest));
  return std::max(threshold + 1, static_cast<std::uint64_t>(std::ceil(middle)));
}

}  // namespace voltvk
