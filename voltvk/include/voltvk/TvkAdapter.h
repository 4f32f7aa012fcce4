// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_TVKADAPTER_H
#define VOLTVK_INCLUDE_VOLTVK_TVKADAPTER_H

#include "voltvk/RaidObject.h"
#include "voltvk/Ret.h"
#include "voltvk/Specs.h"
#include "voltvk/UserStatistics.h"
#include "voltvk/VolEvent.h"

#include <cstdint>

/** The adapter's features and limits. Tables are indexed by the values of the enumerations. */
struct TvkAdapterIdentity {
  const char* name;  ///< never null, valid as long as the library is loaded
  std::uint16_t majorRevision;
  std::uint16_t minorRevision;
  std::uint16_t buildRevision;
  std::uint32_t featureSupport[8];           ///< index 1 to 7: 1 supported, 0 not
  std::uint32_t adjustmentSupport[9];        ///< index 1 to 8
  std::uint32_t chunkSizeSupport[11];        ///< index 1 to 10
  std::uint64_t maxVolumeSizeInSectors[10];  ///< index 1 to 9; element 0: the largest of all
  std::uint8_t maxTierLevels;                ///< number of tier levels
  std::uint8_t maxVolumes;
  std::uint8_t maxTiers;  ///< maximum number of pools: each is a tier
  std::uint8_t maxLogicalDevices;
  std::uint8_t maxLogicalDevicesPerPool;
  std::uint64_t minTotalPoolSizeInSectors;
  std::uint64_t minRequiredSizeFromPoolInSectors;
  std::uint8_t plusEnabled;
  std::uint8_t logicalDevicesCount;
  std::uint8_t virtualPoolCount;
  std::uint8_t virtualVolumeCount;
};

/**
 * The tiering adapter: changes of the configuration, statistics and events.
 *
 * Every operation may be called from any thread and from several processes on the same state. A change is
 * atomic. A refusal changes nothing and has its own TvkStatus; besides those named, every operation can
 * return TVK_NO_DRIVER, TVK_NO_ADAPTER, TVK_INTERNAL and TVK_BUSY. With an injected fault an operation may
 * throw std::runtime_error; on allocation failure every function of the library throws std::bad_alloc.
 *
 * An adapter constructed by a caller works on the same state as the library's own.
 */
class VOLTVK_EXPORT TvkAdapter : public RaidObject {
public:
  TvkAdapter();
  ~TvkAdapter() override;
  TvkAdapter(const TvkAdapter&) = delete;
  TvkAdapter& operator=(const TvkAdapter&) = delete;

  // The order of the virtual functions is part of the binary interface.

  /** Changes what the record says; its volumeId is ignored. */
  virtual Ret modifyVirtualVolume(std::uint32_t volumeId, VirtualVolumeSpec& spec);
  /** Writes back the dirty chunks of a cached volume; any other volume is refused with TVK_NOT_CACHED. */
  virtual Ret flushVirtualVolume(std::uint32_t volumeId);
  /**
   * Deletes a pool; a pool that is used by a volume is refused with TVK_POOL_IN_USE or TVK_POOL_IS_INTERNAL.
   */
  virtual Ret deleteVirtualPool(std::uint32_t poolId);
  /** Changes what the record says; its poolId is ignored. */
  virtual Ret modifyVirtualPool(std::uint32_t poolId, const VirtualPoolSpec& spec);
  /** Sets the I/O counters to 0; the placement of chunks does not change. */
  virtual Ret resetVirtualVolumeStats(std::uint32_t volumeId);
  /** Creates a volume on one or two pools. @param spec its volumeId is set on success */
  virtual Ret createVirtualVolume(VirtualVolumeSpec& spec);
  /** Deletes a volume, and with it the internal pool of a cached drive. */
  virtual Ret deleteVirtualVolume(std::uint32_t volumeId);
  /** @param stats filled on success; null is refused with TVK_INVALID_ARGUMENT */
  virtual Ret getVirtualVolumeStats(d_ioctl_user_stat* stats, std::uint32_t volumeId);
  /** Creates a pool from free drives of one kind. @param spec its poolId is set on success */
  virtual Ret createVirtualPool(VirtualPoolSpec& spec);

  /**
   * Appends the events since the last fetch of this process, oldest first. Success with a detail means that
   * some were lost; the detail says how many.
   */
  virtual Ret getEvents(VolEventCollection& events);

  /** Fills the identity, limits and counts; the counts are those of the current state. */
  virtual Ret getIdentity(TvkAdapterIdentity& identity);

  /**
   * Creates a cached volume on one hard disk: the internal pool on that drive and the volume, either both or
   * neither. The order of the arguments decides which side is which. If the internal pool's name is in use,
   * it gets the next free one: callers make the name up, and another request may have made up the same. Sets
   * hddPool.poolId and volume.volumeId.
   * @param ssdPool the number of an existing SSD pool and how much of it becomes the cache
   * @param hddPool the pool to create, on one hard disk
   */
  Ret createCachedLD(VirtualPoolSpec& ssdPool, VirtualPoolSpec& hddPool, VirtualVolumeSpec& volume);

  const char* getTypeName() const override;
};

/** The adapter under the name that the product uses. */
using Adapter = TvkAdapter;

#endif
