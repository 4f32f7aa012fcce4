// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_TOUCHRECORDER_H
#define VOLTVK_ENGINE_ACTIVITY_TOUCHRECORDER_H

#include "voltvk/engine/state/Records.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace voltvk {

class Connection;

/** Reads and writes. */
struct Touches {
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;

  std::uint64_t sum() const { return reads + writes; }
  Touches& operator+=(const Touches& other);
  Touches& operator-=(const Touches& other);
};

/** The touches of a chunk, by its number. */
using ChunkTouches = std::pair<std::uint64_t, Touches>;

/** The reads and writes of a volume that are to be recorded. */
struct VolumeTouches {
  std::vector<ChunkTouches> chunks;  ///< each chunk once
  Touches others;                    ///< of chunks that need not be remembered, and get no row
  Touches othersOnSsd;               ///< how many of them went to SSDs
};

/**
 * Records reads and writes: as the heat of chunks and in the counters of their volume. Each chunk counts
 * where it is at that moment.
 */
class TouchRecorder {
public:
  /** Number of chunks per volume whose heat is recorded; the coldest beyond that are dropped. */
  static constexpr std::size_t REMEMBERED_CHUNKS = 65536;
  /** Maximum number of chunks that are recorded or dropped in one step. */
  static constexpr std::size_t CHUNKS_PER_STEP = 4096;

  /** @param sequential whether all of it was */
  TouchRecorder(const VolumeRecord& volume, bool sequential, VolumeTouches touches)
      : m_volume(volume), m_sequential(sequential), m_touches(std::move(touches)) {}

  /**
   * Records and counts the next part within the caller's transaction. @return whether there is more
   * @throws Refusal if the volume is gone; DatabaseError
   */
  bool recordNext(Connection& connection);

private:
  void count(Connection& connection);
  bool forgetColdest(Connection& connection) const;

  const VolumeRecord m_volume;
  const bool m_sequential;
  VolumeTouches m_touches;
  std::size_t m_next = 0;
};

}  // namespace voltvk

#endif
