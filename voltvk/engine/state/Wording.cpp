// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/state/Wording.h"

#include "text/Size.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/Specs.h"
#include "voltvk/VirtualPool.h"

#include <system_error>

namespace voltvk {

namespace {

constexpr std::string_view UNREADABLE = "cannot be read (";

std::string named(const char* noun, std::uint32_t number, const std::string& name) {
  return std::string(noun) + " " + std::to_string(number) + " (" + name + ")";
}

}  // namespace

std::string sizeText(std::uint64_t sectors) {
  std::string text = tvp::text::formatSectors(sectors);
  try {
    if (tvp::text::parseSectors(text) == sectors) {
      return text;
    }
  } catch (const tvp::text::SizeError&) {
    // Rounded to something that is not a whole number of sectors, or larger than can be read as a size.
  }
  return text + " (" + counted(sectors, "sector") + ")";
}

std::string counted(std::uint64_t number, std::string_view noun) {
  return std::to_string(number) + " " + std::string(noun) + (number == 1 ? "" : "s");
}

std::string enumerated(const std::vector<std::string>& texts) {
  std::string whole;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    whole += i == 0 ? "" : i + 1 < texts.size() ? ", " : " and ";
    whole += texts[i];
  }
  return whole;
}

std::string unreadable(int error) {
  return std::string(UNREADABLE) + std::generic_category().message(error) + ")";
}

bool isUnreadable(const std::string& content) {
  return content.rfind(UNREADABLE, 0) == 0;
}

std::string nameOf(const DriveRecord& drive) {
  return named("drive", drive.number, drive.name);
}

std::string nameOf(const PoolRecord& pool) {
  return named("pool", pool.id, pool.name);
}

std::string nameOf(const VolumeRecord& volume) {
  return named("volume", volume.id, volume.name);
}

std::string kindOf(const DriveRecord& drive) {
  return drive.type == TVK_DEVICE_SSD ? "an SSD" : "a hard disk";
}

std::string tierText(std::uint32_t tierLevel) {
  const char* kind = tierLevel == TVK_TIER_HDD ? " (hard disks)" : tierLevel == TVK_TIER_SSD ? " (SSDs)" : "";
  return std::to_string(tierLevel) + kind;
}

std::string missing(std::string_view noun, std::uint32_t id) {
  if (id == TVK_NO_ID) {
    return "the request names no " + std::string(noun);
  }
  return "no " + std::string(noun) + " has the number " + std::to_string(id);
}

}  // namespace voltvk
