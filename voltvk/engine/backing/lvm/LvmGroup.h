// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMGROUP_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMGROUP_H

#include "voltvk/engine/backing/lvm/LvmTags.h"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace voltvk {

class LvmCommand;

/** Sectors of an extent, in which the volume manager allocates space. */
constexpr std::uint64_t EXTENT_SECTORS = 2048;

/** A physical volume. */
struct LvmDrive {
  std::string uuid;
  std::string node;  ///< device node; empty while the drive is not there
  LvmTags tags;
  std::uint64_t extents = 0;
  /** The drive is not there, or was not when the group was last changed: what is on it cannot be used. */
  bool isMissing = false;
};

/** Consecutive extents of a logical volume that are also consecutive on a drive. */
struct LvmPart {
  std::size_t drive = 0;  ///< index in LvmGroup::drives
  std::uint64_t first = 0;
  std::uint64_t extents = 0;
  std::uint64_t logical = 0;  ///< first extent within the logical volume
};

/** A logical volume, also a hidden one that is part of another. */
struct LvmVolume {
  std::string name;
  bool isHidden = false;
  LvmTags tags;
  std::string type;  ///< "linear", "cache" ...
  std::string cachePolicy;
  bool isActive = false;
  bool isPartial = false;      ///< a drive is missing
  std::string movedFrom;       ///< of a hidden volume that moves extents: the device node they are moved from
  std::vector<LvmPart> parts;  ///< in logical order; none of a volume that consists of others

  std::uint64_t extents() const;
};

/** A volume group as the volume manager reports it, with the physical volumes that are in no group. */
struct LvmGroup {
  std::string name;
  bool exists = false;
  LvmTags tags;
  std::uint64_t extentSectors = 0;
  std::vector<LvmDrive> drives;
  std::vector<LvmVolume> volumes;
  std::vector<LvmDrive> loose;  ///< physical volumes in no group; without tags

  /** Runs one program. @throws Refusal as LvmCommand */
  static LvmGroup read(const LvmCommand& command, const std::string& name);
  /** @param report the array "report" @throws nlohmann::json::exception if it lacks what it should have */
  static LvmGroup parse(const nlohmann::json& report, const std::string& name);

  bool isOurs() const;
  const LvmVolume* volume(const std::string& volumeName) const;
  /** The drive at a position of a pool, by its tags. */
  const LvmDrive* member(std::uint32_t poolId, std::size_t position) const;
  const LvmDrive* driveAt(const std::string& node) const;
  std::size_t indexOf(const LvmDrive& drive) const {
    return static_cast<std::size_t>(&drive - drives.data());
  }
  /** All parts of all volumes. */
  std::size_t parts() const;
};

/** The logical volume of a volume, "vol1", and that of its cache. */
std::string lvmNameOf(std::uint32_t volumeId);
std::string lvmCacheNameOf(std::uint32_t volumeId);

}  // namespace voltvk

#endif
