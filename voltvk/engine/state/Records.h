// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_RECORDS_H
#define VOLTVK_ENGINE_STATE_RECORDS_H

#include <cstdint>
#include <string>
#include <vector>

namespace voltvk {

/** Sectors of the largest drive: 2^64 bytes. The sum over all drives fits 64 bits. */
constexpr std::uint64_t MAX_DRIVE_SECTORS = std::uint64_t{1} << 55U;

/** What is known of a drive. Texts are UTF-8 without control characters. */
struct DriveRecord {
  std::uint16_t number = 0;
  std::string identity;  ///< stays the same across reboots and renamed device nodes
  bool isVirtual = false;
  bool present = true;
  std::string name;  ///< device node
  std::string serial;
  std::string wwid;
  std::string vendor;
  std::string model;
  std::uint64_t sectors = 0;
  std::uint8_t type = 0;           ///< TvkDeviceType
  std::uint8_t interfaceType = 0;  ///< TvkInterfaceType
  bool removable = false;
  bool bootable = false;
  bool partitioned = false;
  bool mounted = false;  ///< mounted, used for swap, or held by another block device
  bool readOnly = false;
  std::string use;      ///< how it is mounted, held ...: "is mounted at /data"; may be unknown
  std::string content;  ///< what is stored on it: "holds swap space"; empty if nothing is, or nobody looked
  std::string place;    ///< where a scan found it; not recorded
};

/** A drive of a pool and how many of the pool's chunks are on it, from the first place for chunks on. */
struct PoolMemberRecord {
  std::uint16_t drive = 0;
  std::uint64_t chunks = 0;
};

/** A pool with its drives; sizes in sectors of 512 bytes and in chunks of chunkSectors. */
struct PoolRecord {
  std::uint32_t id = 0;
  std::string name;
  std::string description;
  std::uint8_t tierLevel = 0;  ///< TvkTierLevel
  std::uint64_t chunkSectors = 0;
  std::uint64_t chunks = 0;
  bool internal = false;
  std::vector<PoolMemberRecord> members;

  /** Chunks on its drives: the capacity, and what a real backing keeps free for moves. */
  std::uint64_t placedChunks() const;
};

/** Consecutive chunks of a pool. */
struct Extent {
  std::uint64_t first = 0;
  std::uint64_t chunks = 0;
};

/** An extent of a volume, in chunks of the pool. */
struct VolumeExtentRecord {
  std::uint32_t pool = 0;
  Extent extent;
};

/**
 * A volume with its extents. Its counts are in chunks of chunkSectors; extents count chunks of their pool.
 */
struct VolumeRecord {
  std::uint32_t id = 0;
  std::string name;
  std::string description;
  std::uint8_t type = 0;           ///< TvkVolumeType
  std::uint64_t chunkSectors = 0;  ///< the larger of its pools' chunk sizes
  std::uint64_t hddChunks = 0;
  std::uint64_t ssdChunks = 0;     ///< of a cached volume: the cache, which is not part of its capacity
  std::uint8_t knob = 0;           ///< TvkKnob
  std::uint16_t deviceNumber = 0;  ///< as a device of the system; unlike those of the other volumes
  std::vector<VolumeExtentRecord> extents;
  /**
   * The chunks of a tiered volume that are laid on SSDs, in ascending order: of a new one those behind the
   * chunks on hard disks, after which it may have grown on either.
   */
  std::vector<Extent> laidOnSsd;

  bool isCached() const;
  std::uint64_t capacityChunks() const { return isCached() ? hddChunks : hddChunks + ssdChunks; }
  /** Where a chunk is laid when the volume is made, and is as long as no row of the state says otherwise. */
  bool wasLaidOnSsd(std::uint64_t chunk) const;
  /** How a volume is laid that has not grown. */
  void layAsNew();
  std::uint64_t capacitySectors() const { return capacityChunks() * chunkSectors; }
  /** A sum: 1 cache, 2 tier. */
  std::uint32_t features() const { return isCached() ? 1 : 2; }
};

}  // namespace voltvk

#endif
