// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_POLICYENGINE_H
#define VOLTVK_ENGINE_ACTIVITY_POLICYENGINE_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <vector>

namespace voltvk {

class Connection;

/** The chunks of a volume that a round moves, by their numbers. */
struct PolicyChoice {
  std::vector<std::uint64_t> demoted;   ///< off the SSDs, to make room: the coldest first
  std::vector<std::uint64_t> promoted;  ///< to the SSDs: the hottest first
};

/**
 * Moves the most used chunks to the SSDs. Each round moves the hottest chunks of a volume that has both
 * kinds of pool, as many as its limits allow. A tiered volume exchanges them for colder ones; a cached one
 * copies them into its cache and, when that is full, drops colder ones, which are first written back if
 * dirty. All chunks age alike: at the end of a round their heat halves, so that chunks that are no longer
 * used make room, and nothing moves while nothing is used. Works within the caller's transaction. Throws
 * DatabaseError.
 *
 * Where chunks are is decided by the state: a chunk without a row is where it was laid. If moving chunks
 * takes more than a transaction, a round is choose, then the moves, then whatever records them, then
 * finishRound.
 */
class PolicyEngine {
public:
  explicit PolicyEngine(Connection& connection) : m_connection(connection) {}

  bool isRunning();
  void setRunning(bool running);

  /**
   * Runs one round for a volume. A round for many volumes is many transactions, so that others can use the
   * state in between.
   * @return how many chunks were moved to the SSDs; 0 while stopped, and for a volume that is gone or has
   * pools of one kind only
   */
  std::uint64_t runRound(std::uint32_t volumeId);

  /**
   * The chunks that a round would move now. Writes nothing. Empty while stopped, and for a volume that has
   * pools of one kind only.
   */
  PolicyChoice choose(const VolumeRecord& volume);

  /** Records that chunks are on SSDs, or that they are not (any more). */
  void place(const VolumeRecord& volume, const std::vector<std::uint64_t>& numbers, bool onSsd);

  /**
   * Ends a round: ages the heat of all chunks and reports the moves. Does nothing while stopped, and for a
   * volume that has pools of one kind only. @param moved number of chunks that were moved to the SSDs
   */
  void finishRound(const VolumeRecord& volume, std::uint64_t moved);

private:
  struct Candidate {
    std::uint64_t number = 0;
    std::int64_t heat = 0;
  };

  bool isWorkingOn(const VolumeRecord& volume);
  void age(const VolumeRecord& volume);
  std::vector<Candidate> hottest(const VolumeRecord& volume);
  std::vector<Candidate> unusedOnSsd(const VolumeRecord& volume, std::size_t count);
  std::vector<Candidate> coldestOnSsd(const VolumeRecord& volume, std::size_t count);
  std::uint64_t freeSsdChunks(const VolumeRecord& volume);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
