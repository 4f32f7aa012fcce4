// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_EXPLANATION_H
#define HOST_TVPCIM_STORAGE_EXPLANATION_H

#include "host/tvpcim/storage/Inventory.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** What was asked of a pool. Sizes in sectors; an empty text or a 0 was not asked for. */
struct PoolRequest {
  std::string name;
  std::string description;
  std::vector<std::uint32_t> drives;
  std::uint64_t size = 0;
  std::uint64_t chunk = 0;
  std::uint8_t tier = 0;
};

/** A pool and what a volume takes from it, in sectors. */
struct PoolShare {
  std::uint32_t pool = 0;
  std::uint64_t size = 0;
};

/** What was asked of a volume. */
struct VolumeRequest {
  std::string name;
  std::string description;
  std::vector<PoolShare> pools;
  std::uint8_t type = 0;
  std::uint32_t knob = 0;
};

/** What was asked of a volume on one drive with an SSD pool as its cache. */
struct CacheRequest {
  VolumeRequest volume;  ///< with the SSD pool as its only pool
  std::uint32_t drive = 0;
  std::uint64_t size = 0;
  std::uint64_t chunk = 0;
};

/**
 * Finds out from what the provider shows why it may have refused a change, since its answer says only that
 * it did. Every function gives one sentence without a stop; it is a reading of the present state, which
 * another process may have changed meanwhile.
 */
class Explanation {
public:
  explicit Explanation(Inventory& inventory) : m_inventory(inventory) {}

  std::string poolCreation(const PoolRequest& request);
  std::string poolModification(std::uint32_t pool, const PoolRequest& request);
  std::string poolDeletion(std::uint32_t pool);
  std::string volumeCreation(const VolumeRequest& request);
  std::string cacheCreation(const CacheRequest& request);
  std::string volumeModification(std::uint32_t volume, const VolumeRequest& request);
  std::string volumeDeletion(std::uint32_t volume);
  std::string volumeFlush(std::uint32_t volume);
  std::string volumeStatistics(std::uint32_t volume);

private:
  std::string texts(const std::string& name, const std::string& description);
  std::string nameInUse(const ObjectKind& kind, const std::string& name, std::uint64_t exceptNumber);
  std::string missing(const ObjectKind& kind, std::uint32_t number);
  std::string drives(const std::vector<std::uint32_t>& numbers);
  std::string driveNotFree(std::uint32_t number);
  std::string tierLevel(const std::vector<std::uint32_t>& numbers, std::uint8_t tier);
  std::string chunkSize(std::uint64_t chunk);
  std::string volumeSize(std::uint64_t chunk, std::uint64_t size);
  std::string space(const std::vector<std::uint32_t>& drives, std::uint64_t size);
  std::string limit(const ObjectKind& kind, const char* property);
  std::string share(const PoolShare& share);
  std::string shares(const VolumeRequest& request);

  Inventory& m_inventory;
};

}  // namespace tvp::host::tvpcim

#endif
