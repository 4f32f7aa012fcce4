// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/Limits.h"

#include "voltvk/engine/drives/DriveRegistry.h"
#include "voltvk/engine/state/Refusal.h"

#include <algorithm>
#include <iterator>

namespace voltvk {

void requireChunkSize(std::uint64_t sectors, const BackingLimits& limits) {
  const auto* first =
      std::lower_bound(CHUNK_SECTORS.begin() + 1, CHUNK_SECTORS.end(), limits.smallestChunkSectors);
  require(std::find(first, CHUNK_SECTORS.end(), sectors) != CHUNK_SECTORS.end(), TVK_INVALID_CHUNK_SIZE, [&] {
    std::vector<std::string> supported;
    std::transform(first, CHUNK_SECTORS.end(), std::back_inserter(supported), sizeText);
    return "chunks of " + sizeText(sectors) + " are not supported; supported are " + enumerated(supported);
  });
}

TvkAdapterIdentity identityOfProduct(const BackingLimits& limits) {
  TvkAdapterIdentity identity{};
  identity.name = "tarvex Plus";
  identity.majorRevision = 1;
  identity.minorRevision = 0;
  identity.buildRevision = 0;
  // Cache, tier and write-back cache; the last element of every table is its end mark.
  for (std::size_t feature : {1U, 2U, 6U}) {
    identity.featureSupport[feature] = 1;
  }
  // Knob, statistics, names and tier level. The number of chunks moved per round follows from the knob.
  for (std::size_t adjustment : {1U, 4U, 5U, 6U, 7U}) {
    identity.adjustmentSupport[adjustment] = 1;
  }
  for (std::size_t index = 1; index < CHUNK_SECTORS.size(); ++index) {
    if (CHUNK_SECTORS[index] >= limits.smallestChunkSectors) {
      identity.chunkSizeSupport[index] = 1;
      identity.maxVolumeSizeInSectors[index] = CHUNK_SECTORS[index] * MAX_VOLUME_CHUNKS;
    }
  }
  identity.maxVolumeSizeInSectors[0] = CHUNK_SECTORS.back() * MAX_VOLUME_CHUNKS;
  identity.maxTierLevels = 2;
  identity.maxVolumes = MAX_VOLUMES;
  identity.maxTiers = MAX_POOLS;
  identity.maxLogicalDevices = DriveRegistry::CAPACITY;
  identity.maxLogicalDevicesPerPool = MAX_POOL_DRIVES;
  identity.minTotalPoolSizeInSectors = MIN_POOL_SECTORS;
  identity.minRequiredSizeFromPoolInSectors = MIN_SECTORS_FROM_POOL;
  identity.plusEnabled = 1;
  return identity;
}

}  // namespace voltvk
