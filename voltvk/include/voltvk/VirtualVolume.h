// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_VIRTUALVOLUME_H
#define VOLTVK_INCLUDE_VOLTVK_VIRTUALVOLUME_H

#include "voltvk/RaidObject.h"

#include <cstdint>

/**
 * Kind of a volume: a tiered volume spans its pools, a cached one uses the SSD pool as a cache for the other.
 */
enum TvkVolumeType : std::uint8_t { TVK_VOLUME_TIERED = 1, TVK_VOLUME_CACHED = 2 };

/** How a cached volume writes. */
enum TvkCacheMode : std::uint8_t {
  TVK_CACHE_NONE = 0,
  TVK_CACHE_WRITE_THROUGH = 1,
  TVK_CACHE_WRITE_BACK = 2
};

/** How eagerly chunks are fetched and flushed. */
enum TvkKnob : std::uint8_t { TVK_KNOB_AGGRESSIVE = 1, TVK_KNOB_NORMAL = 2, TVK_KNOB_PASSIVE = 3 };

/**
 * A volume built from pools. Its children of type "Chunk" are its extents on the pools. Texts are never null
 * and are valid as long as the object exists.
 */
class VOLTVK_EXPORT VirtualVolume : public RaidObject {
public:
  ~VirtualVolume() override;

  virtual const char* getName() const = 0;                ///< 1 to TVK_LONGEST_NAME bytes of UTF-8
  virtual const char* getDescription() const = 0;         ///< at most TVK_LONGEST_DESCRIPTION bytes of UTF-8
  virtual std::uint32_t getVolumeId() const = 0;          ///< never reused, never TVK_NO_ID
  virtual std::uint8_t getVirtualPoolsCount() const = 0;  ///< number of pools that it uses
  virtual std::uint32_t getFeatures() const = 0;          ///< a sum: 1 cache, 2 tier
  virtual std::uint8_t getVolumeType() const = 0;         ///< TvkVolumeType
  virtual std::uint8_t getCacheMode() const = 0;          ///< TvkCacheMode
  virtual std::uint32_t getMaxMoveChunks() const = 0;     ///< chunks moved per policy round
  virtual std::uint32_t getMoveThreshold() const = 0;     ///< accesses after which a chunk is hot
  virtual std::uint32_t getStatsSetting() const = 0;      ///< 1: statistics are kept
  virtual std::uint32_t getNumberOfVirtualPoolsSupported() const = 0;  ///< number of pools that it can use
  virtual std::uint16_t getDeviceNumber() const = 0;       ///< of the volume as a device of the system
  virtual std::uint8_t getState() const = 0;               ///< TvkHealth
  virtual std::uint8_t getKnobSetting() const = 0;         ///< TvkKnob
  virtual std::uint64_t getCapacityInSectors() const = 0;  ///< sectors of 512 bytes
  virtual const char* getTrouble() const = 0;              ///< why it is degraded, a sentence; else empty
};

/** The tiering product's own name for its volumes. */
using TvkVirtualVolume = VirtualVolume;

#endif
