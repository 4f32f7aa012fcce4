// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H
#define VOLTVK_ENGINE_ACTIVITY_VOLUMEACTIVITY_H

#include "voltvk/UserStatistics.h"
#include "voltvk/engine/activity/TouchRecorder.h"
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

  /**
   * Replays reads and writes, evenly mixed, in memory.
   * @param connection for a read transaction of the caller, to find out which chunks are remembered
   */
  IoReplay(Connection& connection, const VolumeRecord& volume, const IoPattern& pattern);

  /** Records and counts the next part within the caller's transaction. @return whether there is more */
  bool recordNext(Connection& connection) { return m_recorder.recordNext(connection); }

private:
  TouchRecorder m_recorder;
};

/** Fills in the statistics of a volume. Throws DatabaseError. */
void readStatistics(Connection& connection, const VolumeRecord& volume, d_ioctl_user_stat& out);

}  // namespace voltvk

#endif
