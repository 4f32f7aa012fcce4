// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Backings.h"

namespace voltvk {

BackingLimits limitsOf(const BackingChoice& choice) {
  if (!choice.isReal()) {
    return {};
  }
  // The volume manager allocates extents of 1 MiB. In front of the first one there are 16 MiB for its
  // metadata and 1 MiB for the label; what is left behind the last whole extent is less than one.
  constexpr std::uint64_t MIB = 2048;
  constexpr std::uint64_t LABEL_AND_METADATA = 17 * MIB;
  constexpr std::uint64_t CHUNKS_OF_A_ROUND = 32;  // of a volume with the aggressive knob
  return {MIB, LABEL_AND_METADATA, CHUNKS_OF_A_ROUND, true};
}

const char* nameOf(BackingKind kind) {
  return kind == BackingKind::Lvm ? "lvm" : "books";
}

}  // namespace voltvk
