// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H
#define VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H

#include "voltvk/UserStatistics.h"
#include "voltvk/engine/state/Records.h"

#include <cstdint>

namespace voltvk {

class Connection;

/** Reads and writes to play against a volume; each touches one chunk. */
struct IoPattern {
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;
  bool sequential = false;       ///< from the first chunk on, round and round; else random
  std::uint32_t hotPercent = 0;  ///< share that goes to the hot area, the volume's first chunks
  std::uint64_t seed = 1;        ///< the same seed touches the same chunks
};

/**
 * What happens on volumes: I/O, the counters that record it, and where chunks lie. The chunks of a
 * tiered volume lie on the hard-disk pool first and go on on the SSD pool, until the policy engine
 * exchanges them. Works within the caller's transaction. Throws DatabaseError.
 */
class VolumeActivity {
public:
  /** Reads or writes in one pattern at most. */
  static constexpr std::uint64_t MAX_OPERATIONS = 1000000;
  /** Chunks of the hot area at most: as many as one policy round moves for a volume with the normal knob. */
  static constexpr std::uint64_t HOT_CHUNKS = 16;
  /** Chunks of a volume whose heat is remembered; the coldest beyond that are forgotten. */
  static constexpr std::int64_t REMEMBERED_CHUNKS = 65536;

  VolumeActivity(Connection& connection, const VolumeRecord& volume)
      : m_connection(connection), m_volume(volume) {}

  /** Plays reads and writes, evenly mixed, and counts them. */
  void play(const IoPattern& pattern);

  /** Fills the record of the volume. */
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
