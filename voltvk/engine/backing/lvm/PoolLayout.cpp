// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/PoolLayout.h"

#include "voltvk/engine/backing/lvm/LvmGroup.h"

#include <algorithm>

namespace voltvk {

PoolLayout::PoolLayout(const PoolRecord& pool)
    : m_extentsPerChunk(pool.chunkSectors / EXTENT_SECTORS), m_firstChunks{0} {
  for (const PoolMemberRecord& member : pool.members) {
    m_firstChunks.push_back(m_firstChunks.back() + member.chunks);
  }
}

std::vector<DrivePart> PoolLayout::placesOf(const Extent& chunks) const {
  std::vector<DrivePart> places;
  const std::uint64_t end = chunks.first + chunks.chunks;
  for (std::size_t member = 0; member + 1 < m_firstChunks.size(); ++member) {
    const std::uint64_t from = std::max(chunks.first, m_firstChunks[member]);
    const std::uint64_t to = std::min(end, m_firstChunks[member + 1]);
    if (from < to) {
      places.push_back(
          {member, (from - m_firstChunks[member]) * m_extentsPerChunk, (to - from) * m_extentsPerChunk});
    }
  }
  return places;
}

std::optional<Extent> PoolLayout::chunksAt(const DrivePart& place) const {
  if (place.member + 1 >= m_firstChunks.size() || place.first % m_extentsPerChunk != 0 ||
      place.extents % m_extentsPerChunk != 0) {
    return std::nullopt;
  }
  const Extent chunks{
      m_firstChunks[place.member] + place.first / m_extentsPerChunk, place.extents / m_extentsPerChunk};
  return chunks.first + chunks.chunks <= m_firstChunks[place.member + 1] ? std::optional(chunks)
                                                                         : std::nullopt;
}

std::vector<Extent> PoolLayout::freeChunks(const std::vector<DrivePart>& used) const {
  std::vector<Extent> taken;
  for (const DrivePart& place : used) {
    if (place.member + 1 < m_firstChunks.size()) {
      const std::uint64_t base = m_firstChunks[place.member];
      const std::uint64_t end = place.first + place.extents;
      taken.push_back({base + place.first / m_extentsPerChunk, 0});
      taken.back().chunks = base + (end + m_extentsPerChunk - 1) / m_extentsPerChunk - taken.back().first;
    }
  }
  std::sort(taken.begin(), taken.end(), [](const Extent& a, const Extent& b) { return a.first < b.first; });
  std::vector<Extent> free;
  std::uint64_t next = 0;
  taken.push_back({m_firstChunks.back(), 0});
  for (const Extent& extent : taken) {
    if (extent.first > next) {
      free.push_back({next, std::min(extent.first, m_firstChunks.back()) - next});
    }
    next = std::max(next, extent.first + extent.chunks);
  }
  return free;
}

}  // namespace voltvk
