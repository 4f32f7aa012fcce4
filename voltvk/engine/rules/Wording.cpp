// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/rules/Wording.h"

#include "voltvk/LogicalDevice.h"
#include "voltvk/Specs.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/engine/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace voltvk {

namespace {

std::string named(const char* noun, std::uint32_t number, const std::string& name) {
  return std::string(noun) + " " + std::to_string(number) + " (" + name + ")";
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t length = utf8Length(text);
    const std::string_view character = text.substr(0, std::max<std::size_t>(length, 1));
    if (length > 0 && !isControlCharacter(character)) {
      shown += character;
    } else {
      for (const char byte : character) {
        std::array<char, 8> escaped{};
        std::snprintf(
            escaped.data(), escaped.size(), "\\x%02X",
            static_cast<unsigned int>(static_cast<unsigned char>(byte)));
        shown += escaped.data();
      }
    }
    text.remove_prefix(character.size());
  }
  return shown;
}

std::string quoted(std::string_view text) {
  return "'" + std::string(text) + "'";
}

std::string sizeText(std::uint64_t sectors) {
  constexpr std::array<const char*, 6> UNITS = {"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  if (sectors < 2) {
    return std::to_string(sectors * 512) + " B";
  }
  // 64 bits of sectors are more than 64 bits of bytes, so the division goes on from sectors.
  std::uint64_t divisor = 2;
  std::size_t unit = 0;
  for (; unit + 1 < UNITS.size() && sectors / divisor >= 1024; ++unit) {
    divisor *= 1024;
  }
  std::array<char, 64> number{};
  std::snprintf(
      number.data(), number.size(), "%.2f", static_cast<double>(sectors) / static_cast<double>(divisor));
  std::string text = number.data();
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  text += std::string(" ") + UNITS[unit];
  const bool isExact = sectors % divisor * 100 % divisor == 0;
  return isExact ? text : text + " (" + counted(sectors, "sector") + ")";
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
  const char* kind =
      tierLevel == TVK_TIER_HDD ? " (hard disks)" : tierLevel == TVK_TIER_SSD ? " (SSDs)" : "";
  return std::to_string(tierLevel) + kind;
}

std::string missing(std::string_view noun, std::uint32_t id) {
  if (id == TVK_NO_ID) {
    return "the request names no " + std::string(noun);
  }
  return "no " + std::string(noun) + " has the number " + std::to_string(id);
}

}  // namespace voltvk
