// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_CHUNK_H
#define VOLTVK_INCLUDE_VOLTVK_CHUNK_H

#include "voltvk/RaidObject.h"

#include <cstdint>

class LogicalDevice;
class VirtualPool;

/** An extent: of a pool on one of its drives, or of a volume on one of its pools. */
class VOLTVK_EXPORT Chunk : public RaidObject {
public:
  ~Chunk() override;

  virtual std::uint64_t getStartRange() const = 0;  ///< first sector on the provider
  virtual std::uint64_t getEndRange() const = 0;    ///< last sector on the provider
  /** The drive of a pool's extent; null for a volume's. */
  virtual LogicalDevice* getProviderLogical() const = 0;
  /** The pool of a volume's extent; null for a pool's. */
  virtual VirtualPool* getProviderVirtualPool() const = 0;
  /** Maximum number of chunks the volume may have on this pool; 0 for a pool's extent. */
  virtual std::uint64_t getMaxAllowedChunks() const = 0;
};

#endif
