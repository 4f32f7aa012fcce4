// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_CHUNKALLOCATOR_H
#define VOLTVK_ENGINE_RULES_CHUNKALLOCATOR_H

#include "voltvk/engine/state/Records.h"

#include <cstdint>
#include <vector>

namespace voltvk {

/** The number of whole units that hold an amount, without overflow. */
constexpr std::uint64_t roundedUp(std::uint64_t amount, std::uint64_t unit) {
  return amount / unit + (amount % unit != 0 ? 1 : 0);
}

/** Finds free chunks in a pool. */
class ChunkAllocator {
public:
  /**
   * @param total chunks of the pool
   * @param used extents within the pool that do not overlap, in any order
   */
  ChunkAllocator(std::uint64_t total, std::vector<Extent> used);

  std::uint64_t freeChunks() const;

  /**
   * Allocates chunks from the first gap that is large enough, or else from the beginning on.
   * @return the extents in ascending order; empty if there are not enough free chunks
   */
  std::vector<Extent> allocate(std::uint64_t chunks);

private:
  void take(std::size_t gap, std::uint64_t chunks, std::vector<Extent>& out);

  std::vector<Extent> m_gaps;
};

/**
 * Distributes chunks over drives, as evenly as their sizes allow, so that every drive of a pool is used.
 * @param capacities chunks that each drive can hold; their sum is at least chunks
 * @return the share of each drive, in the same order
 */
std::vector<std::uint64_t> shareOut(std::uint64_t chunks, const std::vector<std::uint64_t>& capacities);

}  // namespace voltvk

#endif
