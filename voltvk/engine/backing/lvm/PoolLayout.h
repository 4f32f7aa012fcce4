// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_POOLLAYOUT_H
#define VOLTVK_ENGINE_BACKING_LVM_POOLLAYOUT_H

#include "voltvk/engine/state/Records.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace voltvk {

/** Consecutive extents of a drive of a pool. */
struct DrivePart {
  std::size_t member = 0;  ///< position of the drive in the pool
  std::uint64_t first = 0;
  std::uint64_t extents = 0;
};

/**
 * Where the chunks of a pool are. They are numbered through its drives in their order; a drive's first chunk
 * begins at the drive's first extent.
 */
class PoolLayout {
public:
  /** @param pool its chunks are whole extents */
  explicit PoolLayout(const PoolRecord& pool);

  std::uint64_t extentsPerChunk() const { return m_extentsPerChunk; }

  /** The places of consecutive chunks, in their order: one for each drive that they are on. */
  std::vector<DrivePart> placesOf(const Extent& chunks) const;

  /** @return nothing unless these are whole chunks of the pool */
  std::optional<Extent> chunksAt(const DrivePart& place) const;

  /** The chunks that no place touches, in ascending order. @param used places in any order */
  std::vector<Extent> freeChunks(const std::vector<DrivePart>& used) const;

private:
  std::uint64_t m_extentsPerChunk;
  std::vector<std::uint64_t> m_firstChunks;  ///< of each member, and behind the last one
};

}  // namespace voltvk

#endif
