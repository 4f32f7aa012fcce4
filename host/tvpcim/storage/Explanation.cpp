// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/Explanation.h"

#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/storage/Listing.h"
#include "host/tvpcim/storage/Size.h"
#include "text/Quote.h"

#include <algorithm>
#include <functional>

namespace tvp::host::tvpcim {
namespace {

constexpr std::size_t LONGEST_DESCRIPTION = 63;
constexpr std::uint64_t NO_NUMBER = ~std::uint64_t{0};

using Checks = std::vector<std::function<std::string()>>;

/** The first thing that a check finds, else that nothing was found. */
std::string first(const Checks& checks) {
  for (const auto& check : checks) {
    std::string found = check();
    if (!found.empty()) {
      return found;
    }
  }
  return "nothing that the provider shows explains it; 'voltvkctl status' may tell more";
}

std::string withoutName(const std::string& name) {
  return name.empty() ? "the name is empty" : "";
}

/** The sectors in the name of a chunk size: 64 KiB for "TVP_CHUNKSZ_64KB"; 0 for an end mark. */
std::uint64_t sectorsOfChunkName(const std::string& name) {
  const std::size_t number = name.find_last_of('_') + 1;
  const std::size_t unit = name.find_first_not_of("0123456789", number);
  if (number == 0 || unit == number || unit == std::string::npos) {
    return 0;
  }
  return parseSectors(name.substr(number, unit + 1 - number));
}

}  // namespace

std::string Explanation::texts(const std::string& name, const std::string& description) {
  if (name.size() > LONGEST_NAME) {
    return "the name has " + std::to_string(name.size()) + " bytes; a name has 1 to 31";
  }
  if (description.size() > LONGEST_DESCRIPTION) {
    return "the description has " + std::to_string(description.size()) + " bytes; it may have 63";
  }
  if (toUtf8(name) != name || toUtf8(description) != description) {
    return "names and descriptions are UTF-8, and this one is not";
  }
  return printable(name) == name ? "" : "the name " + text::quoted(name) + " has control characters in it";
}

std::string
Explanation::nameInUse(const ObjectKind& kind, const std::string& name, std::uint64_t exceptNumber) {
  const Instance* holder = name.empty() ? nullptr : m_inventory.byName(kind, name);
  if (holder == nullptr || numberOf(*holder, kind.number) == exceptNumber) {
    return "";
  }
  return std::string(kind.noun) + " " + cellText(*holder->property(kind.number)) + " has the name " +
         text::quoted(name) + " already; choose another";
}

std::string Explanation::missing(const ObjectKind& kind, std::uint32_t number) {
  if (m_inventory.byNumber(kind, number) != nullptr) {
    return "";
  }
  return std::string(kind.noun) + " " + std::to_string(number) + " does not exist; see tvpcim " + kind.nouns;
}

std::string Explanation::driveNotFree(std::uint32_t number) {
  const Instance* drive = m_inventory.byNumber(DRIVE, number);
  if (drive == nullptr) {
    return missing(DRIVE, number);
  }
  const std::string who =
      "drive " + std::to_string(number) + " (" + printable(textOf(*drive, DRIVE.name)) + ")";
  if (flagOf(*drive, "isUsedByTarvexPro")) {
    return who + " belongs to another pool; see tvpcim tree";
  }
  if (flagOf(*drive, "IsBootable")) {
    return who + " boots this machine and cannot join a pool";
  }
  return flagOf(*drive, "HasPartition") ? who + " has partitions and cannot join a pool" : "";
}

std::string Explanation::drives(const std::vector<std::uint32_t>& numbers) {
  std::vector<std::uint32_t> seen;
  std::uint64_t kind = 0;
  for (const std::uint32_t number : numbers) {
    if (std::find(seen.begin(), seen.end(), number) != seen.end()) {
      return "drive " + std::to_string(number) + " is named twice";
    }
    seen.push_back(number);
    std::string reason = driveNotFree(number);
    if (!reason.empty()) {
      return reason;
    }
    const std::uint64_t own = numberOf(*m_inventory.byNumber(DRIVE, number), "DeviceType");
    if (kind != 0 && own != kind) {
      return "the drives are of different kinds; a pool has hard disks or SSDs only";
    }
    kind = own;
  }
  const std::uint64_t most = numberOf(*m_inventory.identity(), "MaxLogicalDevicesPerPoolSupported");
  return most != 0 && numbers.size() > most ? "a pool has at most " + std::to_string(most) + " drives" : "";
}

std::string Explanation::tierLevel(const std::vector<std::uint32_t>& numbers, std::uint8_t tier) {
  for (const std::uint32_t number : numbers) {
    const Instance* drive = m_inventory.byNumber(DRIVE, number);
    const bool ssd = drive != nullptr && numberOf(*drive, "DeviceType") == DEVICE_SSD;
    if (drive != nullptr && tier != (ssd ? TIER_SSD : TIER_HDD)) {
      return "drive " + std::to_string(number) + " is " + (ssd ? "an SSD" : "a hard disk") +
             ", which the tier does not fit; use --tier " + (ssd ? "ssd" : "hdd");
    }
  }
  return "";
}

std::string Explanation::chunkSize(std::uint64_t chunk) {
  const Value* names = m_inventory.identity()->property("SupportedChunkSizeNames");
  const Value* supported = m_inventory.identity()->property("SupportedChunkSizeValues");
  if (names == nullptr || supported == nullptr || names->isNull() || supported->isNull()) {
    return "";
  }
  std::vector<std::string> sizes;
  for (std::size_t index = 0; index < std::min(names->asArray().size(), supported->asArray().size());
       ++index) {
    const std::uint64_t sectors = sectorsOfChunkName(names->asArray()[index].asString());
    if (sectors == 0 || supported->asArray()[index].asUnsigned() == 0) {
      continue;
    }
    if (sectors == chunk) {
      return "";
    }
    sizes.push_back(formatSectors(sectors));
  }
  return "chunks of " + formatSectors(chunk) + " are not supported; there are " + join(sizes, ", ");
}

std::string Explanation::volumeSize(std::uint64_t chunk, std::uint64_t size) {
  const Value* names = m_inventory.identity()->property("SupportedChunkSizeNames");
  const Value* largest = m_inventory.identity()->property("SupportedMaxVolumeSizeInSectors");
  if (names == nullptr || largest == nullptr || names->isNull() || largest->isNull()) {
    return "";
  }
  for (std::size_t index = 0; index < std::min(names->asArray().size(), largest->asArray().size()); ++index) {
    const std::uint64_t most = largest->asArray()[index].asUnsigned();
    if (sectorsOfChunkName(names->asArray()[index].asString()) == chunk && size > most) {
      return "a volume with chunks of " + formatSectors(chunk) + " has at most " + formatSectors(most) +
             "; larger ones need larger chunks";
    }
  }
  return "";
}

std::string Explanation::space(const std::vector<std::uint32_t>& drives, std::uint64_t size) {
  std::uint64_t there = 0;
  for (const std::uint32_t number : drives) {
    const Instance* drive = m_inventory.byNumber(DRIVE, number);
    there += drive == nullptr ? 0 : numberOf(*drive, "CapacityInSectors");
  }
  const std::uint64_t least = numberOf(*m_inventory.identity(), "MinTotalPoolSizeInSectors");
  if (size < least) {
    return "a pool has at least " + formatSectors(least);
  }
  // The library rounds to whole chunks on each drive, so less than the sum may be had.
  return size > there ? "the drives hold " + formatSectors(there) + ", less than " + formatSectors(size) : "";
}

std::string Explanation::limit(const ObjectKind& kind, const char* property) {
  const std::uint64_t most = numberOf(*m_inventory.identity(), property);
  return most != 0 && m_inventory.all(kind).size() >= most
             ? "there are " + std::to_string(most) + " " + kind.nouns + " already, which is the limit"
             : "";
}

std::string Explanation::share(const PoolShare& share) {
  const Instance* pool = m_inventory.byNumber(POOL, share.pool);
  if (pool == nullptr) {
    return missing(POOL, share.pool);
  }
  const std::string name =
      "pool " + std::to_string(share.pool) + " (" + printable(textOf(*pool, POOL.name)) + ")";
  const std::uint64_t least = numberOf(*m_inventory.identity(), "MinRequiredSizeFromPoolInSectors");
  if (share.size < least || share.size == 0) {
    return "a volume takes at least " + formatSectors(std::max<std::uint64_t>(least, 1)) + " from a pool";
  }
  const std::uint64_t capacity = numberOf(*pool, "CapacityInSectors");
  const std::uint64_t used = std::min(capacity, numberOf(*pool, "UsedCapacityInSectors"));
  return share.size > capacity - used ? name + " has " + formatSectors(capacity - used) +
                                            " free, less than " + formatSectors(share.size)
                                      : "";
}

std::string Explanation::shares(const VolumeRequest& request) {
  if (request.pools.empty() || request.pools.size() > 2) {
    return "a volume stands on one or two pools";
  }
  const bool cached = request.type == VOLUME_CACHED;
  std::vector<std::uint64_t> tiers;
  std::uint64_t chunk = 0;
  std::uint64_t size = 0;
  for (const PoolShare& wanted : request.pools) {
    std::string reason = share(wanted);
    if (!reason.empty()) {
      return reason;
    }
    const Instance& pool = *m_inventory.byNumber(POOL, wanted.pool);
    tiers.push_back(numberOf(pool, "TierLevel"));
    // Pools have been found large enough, so the sizes can be added.
    size = cached ? std::max(size, wanted.size) : size + wanted.size;
    if (!cached || tiers.back() != TIER_SSD) {
      chunk = std::max(chunk, numberOf(pool, "ChunkSize"));
    }
  }
  if (tiers.size() == 2 && request.pools[0].pool == request.pools[1].pool) {
    return "pool " + std::to_string(request.pools[0].pool) + " is named twice";
  }
  if (tiers.size() == 2 && tiers[0] == tiers[1]) {
    return "both pools are of one kind; a volume takes one of hard disks and one of SSDs";
  }
  return cached && tiers.size() == 1 ? "a cached volume needs a pool of hard disks and one of SSDs"
                                     : volumeSize(chunk, size);
}

std::string Explanation::poolCreation(const PoolRequest& request) {
  return first(
      {[&] { return withoutName(request.name); }, [&] { return texts(request.name, request.description); },
       [&] { return nameInUse(POOL, request.name, NO_NUMBER); }, [&] { return drives(request.drives); },
       [&] { return tierLevel(request.drives, request.tier); }, [&] { return chunkSize(request.chunk); },
       [&] { return space(request.drives, request.size); },
       [&] { return limit(POOL, "MaxTiersSupported"); }});
}

std::string Explanation::poolModification(std::uint32_t pool, const PoolRequest& request) {
  return first(
      {[&] { return missing(POOL, pool); }, [&] { return texts(request.name, request.description); },
       [&] { return nameInUse(POOL, request.name, pool); },
       [&]() -> std::string {
         const std::uint64_t tier = numberOf(*m_inventory.byNumber(POOL, pool), "TierLevel");
         return request.tier != 0 && request.tier != tier ? "the tier does not fit the pool's drives" : "";
       }});
}

std::string Explanation::poolDeletion(std::uint32_t pool) {
  return first(
      {[&] { return missing(POOL, pool); },
       [&]() -> std::string {
         const std::uint64_t users = numberOf(*m_inventory.byNumber(POOL, pool), "NumberOfVirtualVolume");
         return users == 0 ? ""
                           : std::to_string(users) + (users == 1 ? " volume stands" : " volumes stand") +
                                 " on it; delete what tvpcim tree shows above it first";
       }});
}

std::string Explanation::volumeCreation(const VolumeRequest& request) {
  return first(
      {[&] { return withoutName(request.name); }, [&] { return texts(request.name, request.description); },
       [&] { return nameInUse(VOLUME, request.name, NO_NUMBER); }, [&] { return shares(request); },
       [&] { return limit(VOLUME, "MaxVolumesSupported"); }});
}

std::string Explanation::cacheCreation(const CacheRequest& request) {
  return first(
      {[&] { return withoutName(request.volume.name); },
       [&] { return texts(request.volume.name, request.volume.description); },
       [&] { return nameInUse(VOLUME, request.volume.name, NO_NUMBER); },
       [&] { return drives({request.drive}); },
       [&]() -> std::string {
         const Instance& drive = *m_inventory.byNumber(DRIVE, request.drive);
         return numberOf(drive, "DeviceType") == DEVICE_SSD
                    ? "drive " + std::to_string(request.drive) + " is an SSD; a hard disk is what is cached"
                    : "";
       },
       [&] { return share(request.volume.pools.front()); },
       [&]() -> std::string {
         const std::uint32_t pool = request.volume.pools.front().pool;
         const bool ssd = numberOf(*m_inventory.byNumber(POOL, pool), "TierLevel") == TIER_SSD;
         return ssd ? "" : "pool " + std::to_string(pool) + " is no pool of SSDs";
       },
       [&] { return chunkSize(request.chunk); }, [&] { return space({request.drive}, request.size); },
       [&] { return volumeSize(request.chunk, std::max(request.size, request.volume.pools.front().size)); },
       [&] { return limit(VOLUME, "MaxVolumesSupported"); }});
}

std::string Explanation::volumeModification(std::uint32_t volume, const VolumeRequest& request) {
  return first(
      {[&] { return missing(VOLUME, volume); }, [&] { return texts(request.name, request.description); },
       [&] { return nameInUse(VOLUME, request.name, volume); }});
}

std::string Explanation::volumeDeletion(std::uint32_t volume) {
  return first({[&] { return missing(VOLUME, volume); }});
}

std::string Explanation::volumeFlush(std::uint32_t volume) {
  return first(
      {[&] { return missing(VOLUME, volume); },
       [&]() -> std::string {
         const std::uint64_t type = numberOf(*m_inventory.byNumber(VOLUME, volume), "VolumeType");
         return type == VOLUME_CACHED ? "" : "the volume has no cache that could be flushed";
       }});
}

std::string Explanation::volumeStatistics(std::uint32_t volume) {
  return first({[&] { return missing(VOLUME, volume); }});
}

}  // namespace tvp::host::tvpcim
