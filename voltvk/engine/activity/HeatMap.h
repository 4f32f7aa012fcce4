// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_HEATMAP_H
#define VOLTVK_ENGINE_ACTIVITY_HEATMAP_H

#include "voltvk/engine/state/Records.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace voltvk {

class Connection;

/** A chunk that has been used or is not in its original place. All others are cold and where they were laid.
 */
struct RememberedChunk {
  std::uint64_t number = 0;  ///< counted from the beginning of the volume
  std::uint64_t heat = 0;    ///< accesses, halved in each policy round
  bool ssd = false;          ///< on the SSD pool; of a cached volume: in the cache
  bool dirty = false;        ///< in the cache, and not yet written back
};

/** What is remembered of a volume, in ascending order of numbers. Throws DatabaseError. */
std::vector<RememberedChunk> rememberedChunks(Connection& connection, const VolumeRecord& volume);

/** Consecutive chunks of a volume, summed up. */
struct HeatCell {
  /** Where the chunks are: of a cached volume, Ssd means cached, and Dirty that a part has to be written
   * back. */
  enum class Place { Disk, Both, Ssd, Dirty };

  std::uint64_t first = 0;  ///< number of the first chunk
  std::uint64_t chunks = 0;
  std::uint64_t onSsd = 0;  ///< chunks on the SSD pool or in the cache
  std::uint64_t hot = 0;    ///< chunks that are hot enough to be moved
  std::uint64_t hotOnSsd = 0;
  std::uint64_t dirty = 0;
  std::uint64_t heat = 0;  ///< sum, as is heatOnSsd; the largest number when it does not fit
  std::uint64_t heatOnSsd = 0;
  std::uint64_t hottest = 0;  ///< heat of the hottest chunk

  Place place() const;
  HeatCell& operator+=(const HeatCell& next);
};

/**
 * Where the chunks of a volume lie and how hot they are, in a limited number of cells: its size depends
 * neither on the capacity of the volume nor on what is remembered. A plain value.
 */
class HeatMap {
public:
  /** Levels of heat: none, too little to be moved, hot, and among the hottest. */
  static constexpr unsigned LEVELS = 4;

  /**
   * @param chunks what is remembered of the volume, with numbers below its capacity in chunks
   * @param maxCells at least 1; the chunks of a cell are a power of 2, the same for each but the last one
   */
  HeatMap(VolumeRecord volume, const std::vector<RememberedChunk>& chunks, std::size_t maxCells);

  const VolumeRecord& volume() const { return m_volume; }
  const std::vector<HeatCell>& cells() const { return m_cells; }
  std::uint64_t chunksPerCell() const { return m_chunksPerCell; }
  const HeatCell& total() const { return m_total; }

  /** The heat from which on a chunk is hot: the policy engine would move it. */
  std::uint64_t threshold() const { return lowestOf(2); }
  /** The level of a heat, below LEVELS. Levels are steps of the same factor, up to the hottest chunk. */
  unsigned levelOf(std::uint64_t heat) const;
  /** The lowest heat of a level. */
  std::uint64_t lowestOf(unsigned level) const;

private:
  void layOut();
  void add(const RememberedChunk& chunk);

  VolumeRecord m_volume;
  std::uint64_t m_chunksPerCell = 1;
  std::vector<HeatCell> m_cells;
  HeatCell m_total;
};

}  // namespace voltvk

#endif
