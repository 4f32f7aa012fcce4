// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_BACKINGS_H
#define VOLTVK_ENGINE_STATE_BACKINGS_H

#include <cstdint>
#include <string>

namespace voltvk {

/** Where the chunks of pools and volumes are. The numbers are stored in the state. */
enum class BackingKind : std::uint8_t {
  Books = 1,  ///< nowhere: pools and volumes are book-keeping
  Lvm = 2     ///< on the drives, through the Linux volume manager
};

/** The backing that an administrator has chosen. */
struct BackingChoice {
  BackingKind kind = BackingKind::Books;
  std::string group = "tvp";  ///< the volume group that holds all pools; without meaning for Books

  bool isReal() const { return kind != BackingKind::Books; }
};

/** What a backing can store, for the rules and for the identity of the product. */
struct BackingLimits {
  std::uint64_t smallestChunkSectors = 8;
  /** Sectors of a drive that its pool cannot use. */
  std::uint64_t driveOverheadSectors = 0;
  /** Chunks of each pool that are kept free for moves, unless the pool is internal. */
  std::uint64_t reservedChunks = 0;
  /** Nothing can be stored on virtual drives. */
  bool needsRealDrives = false;
};

/** The limits of a backing. */
BackingLimits limitsOf(const BackingChoice& choice);

/** "books" or "lvm". */
const char* nameOf(BackingKind kind);

}  // namespace voltvk

#endif
