// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_VOLUMERULES_H
#define VOLTVK_ENGINE_RULES_VOLUMERULES_H

#include "voltvk/Specs.h"
#include "voltvk/engine/rules/ChunkAllocator.h"
#include "voltvk/engine/state/Health.h"
#include "voltvk/engine/state/Records.h"

#include <optional>
#include <string>
#include <vector>

namespace voltvk {

/** The effect of a change to a volume. A field without a value is unchanged. */
struct VolumeChange {
  std::optional<std::string> name;
  std::optional<std::string> description;
  std::optional<std::uint8_t> knob;
};

/** How a volume is to grow. */
struct VolumeGrowth {
  std::uint64_t sectors = 0;               ///< the size that it is to have; 0 if percent says it
  unsigned percent = 0;                    ///< of the room that its pool has: 1 to 100
  std::optional<std::uint32_t> pool = {};  ///< which of its pools; else that of hard disks, if it has one
};

/**
 * Decides whether a volume may be created or changed, given the existing pools and volumes. Changes nothing
 * itself. Functions throw Refusal with the status of the first rule that is broken.
 */
class VolumeRules {
public:
  VolumeRules(const std::vector<PoolRecord>& pools, const std::vector<VolumeRecord>& volumes)
      : m_pools(pools), m_volumes(volumes) {}

  /** @return the volume to create, with its extents, without an identifier. */
  VolumeRecord creation(const VirtualVolumeSpec& spec) const;

  /**
   * The cached volume on the internal pool with the given identifier, which is among the pools and which the
   * volume uses as a whole.
   */
  VolumeRecord
  cachedDrive(const VirtualVolumeSpec& spec, std::uint32_t internalPool, const VirtualPoolEntry& cache) const;

  /** Refuses a new volume that would take space from a degraded pool. */
  void checkHealth(const VolumeRecord& volume, const Health& health) const;

  /** @return what to change: only what differs from the current volume. */
  VolumeChange modification(std::uint32_t volumeId, const VirtualVolumeSpec& spec) const;

  /**
   * @return the volume as it is to be: larger at its end, where all addresses are new
   */
  VolumeRecord growth(std::uint32_t volumeId, const VolumeGrowth& wanted) const;

  const VolumeRecord& volume(std::uint32_t volumeId) const;

private:
  struct Part {
    const PoolRecord* pool;
    std::uint64_t sectors;
  };

  VolumeRecord heading(const VirtualVolumeSpec& spec) const;
  const PoolRecord& pool(std::uint32_t poolId) const;
  /** A pool that is not internal. */
  const PoolRecord& userPool(std::uint32_t poolId) const;
  static void checkPoolCount(const VolumeRecord& volume, const VirtualVolumeSpec& spec);
  static void requirePossibleSize(const VolumeRecord& volume, std::uint64_t chunks);
  void checkNameUnused(const std::string& name) const;
  static void checkTotal(const VolumeRecord& volume, std::uint64_t requested, const std::vector<Part>& parts);
  /** @param parts the part on hard disks first: the addresses of a tiered volume begin there. */
  void lay(VolumeRecord& volume, const std::vector<Part>& parts) const;
  void addExtents(VolumeRecord& volume, const Part& part, std::uint64_t chunks) const;
  /** Which pool a volume grows on. */
  const PoolRecord& poolOfGrowth(const VolumeRecord& volume, std::optional<std::uint32_t> wanted) const;
  /** The chunks that a pool has free. */
  ChunkAllocator freeChunksOf(const PoolRecord& pool) const;
  /** Those that volumes can have. */
  static std::uint64_t availableIn(const PoolRecord& pool, const ChunkAllocator& free);

  const std::vector<PoolRecord>& m_pools;
  const std::vector<VolumeRecord>& m_volumes;
};

}  // namespace voltvk

#endif
