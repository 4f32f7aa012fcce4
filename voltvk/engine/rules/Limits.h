// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_LIMITS_H
#define VOLTVK_ENGINE_RULES_LIMITS_H

#include "voltvk/TvkAdapter.h"
#include "voltvk/engine/state/Backings.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace voltvk {

/** Supported chunk sizes in sectors; the index is that of the identity's tables, 0 is unused. */
constexpr std::array<std::uint64_t, 10> CHUNK_SECTORS = {0, 8, 128, 256, 512, 1024, 2048, 8192, 32768, 65536};

/** Number of chunks of the largest volume. */
constexpr std::uint64_t MAX_VOLUME_CHUNKS = std::uint64_t{1} << 32U;

/** Maximum numbers, including internal pools. */
constexpr std::size_t MAX_POOLS = 128;
constexpr std::size_t MAX_VOLUMES = 128;
/** Maximum number of drives in a pool. */
constexpr std::size_t MAX_POOL_DRIVES = 64;
/** The smallest pool, and the least that a volume takes from a pool: 1 MiB. */
constexpr std::uint64_t MIN_POOL_SECTORS = 2048;
constexpr std::uint64_t MIN_SECTORS_FROM_POOL = 2048;

/** @throws Refusal TVK_INVALID_CHUNK_SIZE for a chunk size that pools of a backing cannot have */
void requireChunkSize(std::uint64_t sectors, const BackingLimits& limits);

/** The adapter's features and limits with a backing, without the counts of the current state. */
TvkAdapterIdentity identityOfProduct(const BackingLimits& limits);

}  // namespace voltvk

#endif
