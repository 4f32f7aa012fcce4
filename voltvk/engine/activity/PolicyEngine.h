// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_ACTIVITY_POLICYENGINE_H
#define VOLTVK_ENGINE_ACTIVITY_POLICYENGINE_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <vector>

namespace voltvk {

class Connection;

/**
 * Brings what is used most to the SSDs. In a round every volume that has both kinds of pool gets its
 * hottest chunks moved, as many as its limits allow. A tiered volume exchanges them for colder ones, a
 * cached one puts copies into its cache and, when that is full, drops colder ones, written back first
 * if dirty. What lies on an SSD ages: its heat halves every round, so what is no longer used makes
 * room. Works within the caller's transaction. Throws DatabaseError.
 */
class PolicyEngine {
public:
  /** What one round has done for a volume. */
  struct Moved {
    std::uint32_t volume = 0;
    std::string name;
    std::uint64_t chunks = 0;
  };

  explicit PolicyEngine(Connection& connection) : m_connection(connection) {}

  bool isRunning();
  void setRunning(bool running);

  /** Runs one round. @return what was moved, for volumes with at least one; nothing while stopped. */
  std::vector<Moved> runRound();

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
