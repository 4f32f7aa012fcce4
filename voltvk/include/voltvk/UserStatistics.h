// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_INCLUDE_VOLTVK_USERSTATISTICS_H
#define VOLTVK_INCLUDE_VOLTVK_USERSTATISTICS_H

#include <cstdint>

/**
 * I/O and placement counters of one volume, in the driver's record layout. All are counts except chunkSize.
 */
struct d_ioctl_user_stat {
  std::uint64_t ssdTotalChunks;  ///< chunks of the volume on the SSD pool
  std::uint64_t ssdExtraChunks;  ///< SSD chunks that the volume may still take
  std::uint64_t hddTotalChunks;  ///< chunks of the volume on the hard-disk pool
  std::uint64_t readIoCount;
  std::uint64_t writeIoCount;
  std::uint64_t sequentialIoCount;
  std::uint64_t randomIoCount;
  std::uint64_t ssdReadIoCount;   ///< reads served from SSD chunks
  std::uint64_t ssdWriteIoCount;  ///< writes taken by SSD chunks
  std::uint64_t chunkSize;        ///< sectors of 512 bytes
  std::uint64_t totalChunks;
  std::uint32_t feature;  ///< a sum: 1 cache, 2 tier
};

#endif
