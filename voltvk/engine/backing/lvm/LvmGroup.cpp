// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmGroup.h"

#include "text/Trim.h"
#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/state/Refusal.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>

namespace voltvk {

namespace {

using nlohmann::json;

std::string text(const json& row, const char* field) {
  return row.at(field).get<std::string>();
}

std::uint64_t number(const json& row, const char* field) {
  return std::stoull(text(row, field));
}

/** The rows of a part of the report; none if it is not there. */
const json& rows(const json& report, const char* part) {
  static const auto& none = *new json(json::array());
  const auto found = report.find(part);
  return found == report.end() ? none : *found;
}

/** Names of hidden volumes are in brackets. */
std::string bare(const std::string& name) {
  return std::string(tvp::text::trimmed(name, "[]"));
}

LvmDrive driveFrom(const json& row) {
  LvmDrive drive;
  drive.uuid = text(row, "pv_uuid");
  drive.node = text(row, "pv_name");
  if (drive.node.substr(0, 1) != "/") {
    drive.node.clear();  // "[unknown]"
  }
  drive.tags = splitTags(text(row, "pv_tags"));
  drive.extents = number(row, "pv_pe_count");
  drive.isMissing = drive.node.empty() || !text(row, "pv_missing").empty();
  return drive;
}

LvmVolume volumeFrom(const json& row) {
  LvmVolume volume;
  const std::string name = text(row, "lv_name");
  volume.name = bare(name);
  volume.isHidden = volume.name != name;
  volume.tags = splitTags(text(row, "lv_tags"));
  volume.isActive = text(row, "lv_active") == "active";
  volume.isPartial = text(row, "lv_health_status") == "partial";
  volume.movedFrom = text(row, "move_pv");
  return volume;
}

void addParts(LvmGroup& group, const json& report) {
  std::map<std::string, LvmVolume*> volumes;
  for (LvmVolume& volume : group.volumes) {
    volumes[volume.name] = &volume;
  }
  std::map<std::string, std::size_t> drives;
  for (const LvmDrive& drive : group.drives) {
    drives[drive.uuid] = group.indexOf(drive);
  }
  for (const json& row : rows(report, "pvseg")) {
    const auto volume = volumes.find(bare(text(row, "lv_name")));
    if (volume != volumes.end()) {
      volume->second->parts.push_back(
          {drives.at(text(row, "pv_uuid")), number(row, "pvseg_start"), number(row, "pvseg_size"),
           number(row, "seg_start_pe")});
    }
  }
  for (LvmVolume& volume : group.volumes) {
    std::sort(volume.parts.begin(), volume.parts.end(), [](const LvmPart& a, const LvmPart& b) {
      return a.logical < b.logical;
    });
  }
  for (const json& row : rows(report, "seg")) {
    const auto volume = volumes.find(bare(text(row, "lv_name")));
    if (volume != volumes.end()) {
      volume->second->type = text(row, "segtype");
      volume->second->cachePolicy = text(row, "cache_policy");
    }
  }
}

}  // namespace

std::uint64_t LvmVolume::extents() const {
  std::uint64_t sum = 0;
  for (const LvmPart& part : parts) {
    sum += part.extents;
  }
  return sum;
}

LvmGroup LvmGroup::read(const LvmCommand& command, const std::string& name) {
  const std::string task = "look at the volume group " + name;
  // Every field belongs to the part that it stands in; any other would be refused.
  const json report = command.report(
      task, {"fullreport",
             "--all",
             "--units",
             "s",
             "--nosuffix",
             "--configreport",
             "vg",
             "-o",
             "vg_name,vg_tags,vg_extent_size",
             "--configreport",
             "pv",
             "-o",
             "pv_name,pv_uuid,pv_tags,pv_pe_count,pv_missing",
             "--configreport",
             "lv",
             "-o",
             "lv_name,lv_tags,lv_active,lv_health_status,move_pv",
             "--configreport",
             "pvseg",
             "-o",
             "pv_uuid,pvseg_start,pvseg_size,lv_name,seg_start_pe",
             "--configreport",
             "seg",
             "-o",
             "lv_name,segtype,cache_policy"});
  try {
    return parse(report, name);
  } catch (const std::exception& error) {
    throw Refusal(
        TVK_BACKING_FAILED, "could not " + task + ": its report lacks what is needed (" + error.what() +
                                "); see what `lvm " + "fullreport --reportformat json` prints");
  }
}

LvmGroup LvmGroup::parse(const json& report, const std::string& name) {
  LvmGroup group;
  group.name = name;
  for (const json& one : report) {
    const json& head = rows(one, "vg");
    if (head.empty()) {
      for (const json& row : rows(one, "pv")) {
        group.loose.push_back(driveFrom(row));
      }
    } else if (text(head.at(0), "vg_name") == name) {
      group.exists = true;
      group.tags = splitTags(text(head.at(0), "vg_tags"));
      group.extentSectors = number(head.at(0), "vg_extent_size");
      for (const json& row : rows(one, "pv")) {
        group.drives.push_back(driveFrom(row));
      }
      for (const json& row : rows(one, "lv")) {
        group.volumes.push_back(volumeFrom(row));
      }
      addParts(group, one);
    }
  }
  return group;
}

bool LvmGroup::isOurs() const {
  return std::find(tags.begin(), tags.end(), GROUP_TAG) != tags.end();
}

const LvmVolume* LvmGroup::volume(const std::string& volumeName) const {
  const auto found = std::find_if(volumes.begin(), volumes.end(), [&](const LvmVolume& candidate) {
    return candidate.name == volumeName;
  });
  return found == volumes.end() ? nullptr : &*found;
}

const LvmDrive* LvmGroup::member(std::uint32_t poolId, std::size_t position) const {
  const auto found = std::find_if(drives.begin(), drives.end(), [&](const LvmDrive& drive) {
    const std::optional<PoolTag> tag = poolTagIn(drive.tags);
    return tag && tag->pool.id == poolId && tag->position == position;
  });
  return found == drives.end() ? nullptr : &*found;
}

const LvmDrive* LvmGroup::driveAt(const std::string& node) const {
  const auto found =
      std::find_if(drives.begin(), drives.end(), [&](const LvmDrive& drive) { return drive.node == node; });
  return found == drives.end() ? nullptr : &*found;
}

std::size_t LvmGroup::parts() const {
  std::size_t sum = 0;
  for (const LvmVolume& volume : volumes) {
    sum += volume.parts.size();
  }
  return sum;
}

std::string lvmNameOf(std::uint32_t volumeId) {
  return "vol" + std::to_string(volumeId);
}

std::string lvmCacheNameOf(std::uint32_t volumeId) {
  return lvmNameOf(volumeId) + "_cache";
}

}  // namespace voltvk
