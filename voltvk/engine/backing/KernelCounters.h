// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_KERNELCOUNTERS_H
#define VOLTVK_ENGINE_BACKING_KERNELCOUNTERS_H

#include <cstdint>
#include <vector>

namespace voltvk {

/** Reads and writes of consecutive chunks of a volume, in the volume's chunks. */
struct AreaCounters {
  std::uint64_t firstChunk = 0;
  std::uint64_t chunks = 0;  ///< more than 1 if the kernel counts several together
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;
};

/**
 * The cache of a cached volume. The four counters have 32 bits and only grow, except that they continue from
 * earlier values after a power failure, and when the cache's policy has been changed.
 */
struct CacheCounters {
  std::uint64_t readHits = 0;
  std::uint64_t readMisses = 0;
  std::uint64_t writeHits = 0;
  std::uint64_t writeMisses = 0;
  std::uint64_t blockSectors = 0;
  std::uint64_t usedBlocks = 0;
  std::uint64_t totalBlocks = 0;
  std::uint64_t dirtyBlocks = 0;
};

/** What the kernel has counted for a volume. */
struct KernelCounters {
  std::vector<AreaCounters> areas;  ///< of a tiered volume; only areas with reads or writes
  CacheCounters cache;              ///< of a cached volume
};

}  // namespace voltvk

#endif
