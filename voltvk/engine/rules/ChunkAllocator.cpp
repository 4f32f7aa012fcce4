// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/ChunkAllocator.h"

#include <algorithm>
#include <numeric>

namespace voltvk {

ChunkAllocator::ChunkAllocator(std::uint64_t total, std::vector<Extent> used) {
  std::sort(used.begin(), used.end(), [](const Extent& a, const Extent& b) { return a.first < b.first; });
  std::uint64_t position = 0;
  for (const Extent& extent : used) {
    if (extent.first > position) {
      m_gaps.push_back({position, extent.first - position});
    }
    position = extent.first + extent.chunks;
  }
  if (total > position) {
    m_gaps.push_back({position, total - position});
  }
}

std::uint64_t ChunkAllocator::freeChunks() const {
  return std::accumulate(
      m_gaps.begin(), m_gaps.end(), std::uint64_t{0},
      [](std::uint64_t sum, const Extent& gap) { return sum + gap.chunks; });
}

void ChunkAllocator::take(std::size_t gap, std::uint64_t chunks, std::vector<Extent>& out) {
  out.push_back({m_gaps[gap].first, chunks});
  m_gaps[gap].first += chunks;
  m_gaps[gap].chunks -= chunks;
}

std::vector<Extent> ChunkAllocator::allocate(std::uint64_t chunks) {
  std::vector<Extent> taken;
  if (chunks == 0 || chunks > freeChunks()) {
    return taken;
  }
  const auto whole =
      std::find_if(m_gaps.begin(), m_gaps.end(), [&](const Extent& gap) { return gap.chunks >= chunks; });
  if (whole != m_gaps.end()) {
    take(static_cast<std::size_t>(whole - m_gaps.begin()), chunks, taken);
  } else {
    for (std::size_t gap = 0; chunks > 0; ++gap) {
      const std::uint64_t part = std::min(chunks, m_gaps[gap].chunks);
      take(gap, part, taken);
      chunks -= part;
    }
  }
  m_gaps.erase(
      std::remove_if(m_gaps.begin(), m_gaps.end(), [](const Extent& gap) { return gap.chunks == 0; }),
      m_gaps.end());
  return taken;
}

std::vector<std::uint64_t> shareOut(std::uint64_t chunks, const std::vector<std::uint64_t>& capacities) {
  std::vector<std::size_t> order(capacities.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  // Small drives first: what they cannot hold is shared among the larger ones. Among equals the later drives
  // come first, so that the remainder of an uneven division falls to the first ones.
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return capacities[a] != capacities[b] ? capacities[a] < capacities[b] : a > b;
  });
  std::vector<std::uint64_t> shares(capacities.size());
  std::size_t left = capacities.size();
  for (std::size_t drive : order) {
    shares[drive] = std::min(capacities[drive], chunks / left);
    chunks -= shares[drive];
    --left;
  }
  return shares;
}

}  // namespace voltvk
