// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_POLICYENGINE_H
#define VOLTVK_ENGINE_ACTIVITY_POLICYENGINE_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <vector>

namespace voltvk {

class Connection;

/**
 * Moves the most used chunks to the SSDs. Each round moves the hottest chunks of a volume that has both
 * kinds of pool, as many as its limits allow. A tiered volume exchanges them for colder ones; a cached one
 * copies them into its cache and, when that is full, drops colder ones, which are first written back if
 * dirty. All chunks age alike: at the end of a round their heat halves, so that chunks that are no longer
 * used make room, and nothing moves while nothing is used. Works within the caller's transaction. Throws
 * DatabaseError.
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

private:
  struct Candidate {
    std::uint64_t number = 0;
    std::int64_t heat = 0;
  };

  std::uint64_t moveChunks(const VolumeRecord& volume);
  void age(const VolumeRecord& volume);
  std::vector<Candidate> hottest(const VolumeRecord& volume);
  std::vector<Candidate> unusedOnSsd(const VolumeRecord& volume, std::size_t count);
  std::vector<Candidate> coldestOnSsd(const VolumeRecord& volume, std::size_t count);
  std::uint64_t freeCacheChunks(const VolumeRecord& volume);
  void place(const VolumeRecord& volume, std::uint64_t number, bool onSsd);

  Connection& m_connection;
};

}  // namespace voltvk

#endif
