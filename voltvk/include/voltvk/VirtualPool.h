// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_VIRTUALPOOL_H
#define VOLTVK_INCLUDE_VOLTVK_VIRTUALPOOL_H

#include "voltvk/RaidObject.h"

#include <cstdint>

/** Tier level of a pool, and therefore the kind of its drives. */
enum TvkTierLevel : std::uint8_t { TVK_TIER_HDD = 1, TVK_TIER_SSD = 3 };

/** Pool types; the pool flag of an internal pool is one of these numbers. */
enum TvkPoolType : std::uint32_t { TVK_POOL_USER = 0, TVK_POOL_INTERNAL = 16 };

/** State of a pool or a volume: 1 good, 2 degraded (a drive is missing, too small, or used otherwise). */
enum TvkHealth : std::uint8_t { TVK_HEALTH_GOOD = 1, TVK_HEALTH_DEGRADED = 2 };

/**
 * A pool of drives of one kind. Its children of type "Chunk" are its extents on the drives. Texts are never
 * null and are valid as long as the object exists.
 */
class VOLTVK_EXPORT VirtualPool : public RaidObject {
public:
  ~VirtualPool() override;

  virtual const char* getName() const = 0;          ///< 1 to TVK_LONGEST_NAME bytes of UTF-8
  virtual const char* getDescription() const = 0;   ///< at most TVK_LONGEST_DESCRIPTION bytes of UTF-8
  virtual std::uint32_t getPoolId() const = 0;      ///< never reused, never TVK_NO_ID
  virtual std::uint32_t getPoolStatus() const = 0;  ///< TvkHealth
  virtual std::uint8_t getNumberOfLogicalDevices() const = 0;
  virtual std::uint8_t getNumberOfVirtualVolumes() const = 0;  ///< number of volumes that use it
  virtual std::uint64_t getChunkSize() const = 0;              ///< sectors of 512 bytes
  virtual std::uint8_t getTierLevel() const = 0;               ///< TvkTierLevel
  virtual std::uint64_t getCapacityInSectors() const = 0;      ///< sectors of 512 bytes
  virtual std::uint64_t getUsedCapacityInSectors() const = 0;  ///< what volumes have allocated from it
  virtual std::uint8_t getHardDiskFlag() const = 0;            ///< 0 for a pool of SSDs, 1 for hard disks
  virtual bool isInternal() const = 0;                         ///< created for a cached drive
  virtual const char* getTrouble() const = 0;                  ///< why it is degraded, a sentence; else empty
};

#endif
