// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H
#define VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H

#include "voltvk/UserStatistics.h"
#include "voltvk/engine/state/Records.h"

#include <cstdint>

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
 * The activity of volumes: I/O, the counters that record it, and the placement of chunks. The chunks of a
 * tiered volume are initially placed on the hard-disk pool first, then on the SSD pool, until the policy
 * engine exchanges them. Works within the caller's transaction. Throws DatabaseError.
 */
class VolumeActivity {
public:
  /** Maximum number of reads or writes in one pattern. */
  static constexpr std::uint64_t MAX_OPERATIONS = 1000000;
  /**
   * Maximum size of the hot area in chunks: as many as one policy round moves for a volume with the normal
   * knob.
   */
  static constexpr std::uint64_t HOT_CHUNKS = 16;
  /** Number of chunks per volume whose heat is recorded; the coldest beyond that are dropped. */
  static constexpr std::int64_t REMEMBERED_CHUNKS = 65536;

  VolumeActivity(Connection& connection, const VolumeRecord& volume)
      : m_connection(connection), m_volume(volume) {}

  /** Replays reads and writes, evenly mixed, and counts them. */
  void play(const IoPattern& pattern);

  /** Fills in the statistics of the volume. */
  void statistics(d_ioctl_user_stat& out);

private:
  struct Touches {
    std::uint64_t reads = 0;
    std::uint64_t writes = 0;
  };
  struct SsdCounts {
    std::uint64_t reads = 0;
    std::uint64_t writes = 0;
  };

  void forgetColdest();

  Connection& m_connection;
  const VolumeRecord& m_volume;
};

}  // namespace voltvk

#endif
