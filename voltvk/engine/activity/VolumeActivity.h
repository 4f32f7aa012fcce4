// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H
#define VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H

#include "voltvk/UserStatistics.h"
#include "voltvk/engine/state/Records.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace voltvk {

class Connection;

/** Reads and writes to replay on a volume; each touches one chunk. */
struct IoPattern {
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;
  bool sequential = false;       ///< from the first chunk on, wrapping around; else random
  std::uint32_t hotPercent = 0;  ///< share that hits the hot area, the volume's first chunks
  std::uint64_t seed = 1;        ///< the same seed touches the same chunks
};

/**
 * The I/O of a pattern on a volume: replayed in memory, then recorded in short steps, so that other changes
 * need not wait for it. The chunks of a tiered volume are initially placed on the hard-disk pool first, then
 * on the SSD pool, until the policy engine exchanges them. Throws DatabaseError, and Refusal if the volume is
 * gone.
 */
class IoReplay {
public:
  /** Maximum number of reads or writes in one pattern. */
  static constexpr std::uint64_t MAX_OPERATIONS = 1000000;
  /**
   * Maximum size of the hot area in chunks: as many as one policy round moves for a volume with the normal
   * knob.
   */
  static constexpr std::uint64_t HOT_CHUNKS = 16;
  /** Number of chunks per volume whose heat is recorded; the coldest beyond that are dropped. */
  static constexpr std::size_t REMEMBERED_CHUNKS = 65536;
  /** Maximum number of chunks that are recorded or dropped in one step. */
  static constexpr std::size_t CHUNKS_PER_STEP = 4096;

  /**
   * Replays reads and writes, evenly mixed, in memory.
   * @param connection for a read transaction of the caller, to find out which chunks are remembered
   */
  IoReplay(Connection& connection, const VolumeRecord& volume, const IoPattern& pattern);

  /** Records and counts the next part within the caller's transaction. @return whether there is more */
  bool recordNext(Connection& connection);

private:
  struct Touches {
    std::uint64_t reads = 0;
    std::uint64_t writes = 0;

    std::uint64_t sum() const { return reads + writes; }
    Touches& operator+=(const Touches& other);
  };
  using ChunkTouches = std::pair<std::uint64_t, Touches>;  // by the number of the chunk

  bool wasLaidOnSsd(std::uint64_t number) const;
  void leaveOut(std::vector<ChunkTouches>& unknown);
  void count(Connection& connection);
  bool forgetColdest(Connection& connection) const;

  const VolumeRecord m_volume;
  const bool m_sequential;
  std::vector<ChunkTouches> m_touched;  ///< those that get a row, or have one
  std::size_t m_next = 0;
  Touches m_uncounted;
  Touches m_uncountedOnSsd;
};

/** Fills in the statistics of a volume. Throws DatabaseError. */
void readStatistics(Connection& connection, const VolumeRecord& volume, d_ioctl_user_stat& out);

}  // namespace voltvk

#endif
