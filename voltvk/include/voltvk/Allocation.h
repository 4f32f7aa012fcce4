// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_ALLOCATION_H
#define VOLTVK_INCLUDE_VOLTVK_ALLOCATION_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

/**
 * The allocation convention of the provider and the storage library: the 8 bytes before every block hold the
 * address of the release function of the module that allocated it. Whoever deletes a block calls that
 * function, so memory always returns to its allocator, even across the two modules.
 *
 * Each module defines its global operator new and delete with these functions. The prefix is 16 bytes long,
 * the address in its last 8, so that blocks keep malloc's alignment, which compilers rely on.
 */
using VoltvkReleaseFunction = void (*)(void* field);

constexpr std::size_t VOLTVK_BLOCK_PREFIX = 16;
constexpr std::size_t VOLTVK_RELEASE_FIELD = sizeof(VoltvkReleaseFunction);

/** @return size bytes that release can free, or null on allocation failure (never throws). */
inline void* voltvkAllocate(std::size_t size, VoltvkReleaseFunction release) noexcept {
  if (size > SIZE_MAX - VOLTVK_BLOCK_PREFIX) {
    return nullptr;
  }
  auto* prefix = static_cast<char*>(std::malloc(size + VOLTVK_BLOCK_PREFIX));
  if (prefix == nullptr) {
    return nullptr;
  }
  char* block = prefix + VOLTVK_BLOCK_PREFIX;
  std::memcpy(block - VOLTVK_RELEASE_FIELD, &release, sizeof release);
  return block;
}

/** Returns the block to the module that allocated it. Null is allowed. */
inline void voltvkRelease(void* block) noexcept {
  if (block == nullptr) {
    return;
  }
  char* field = static_cast<char*>(block) - VOLTVK_RELEASE_FIELD;
  VoltvkReleaseFunction release = nullptr;
  std::memcpy(&release, field, sizeof release);
  release(field);
}

/** Frees the block whose release field is given; what every release function does. */
inline void voltvkFree(void* field) noexcept {
  std::free(static_cast<char*>(field) - (VOLTVK_BLOCK_PREFIX - VOLTVK_RELEASE_FIELD));
}

#endif
