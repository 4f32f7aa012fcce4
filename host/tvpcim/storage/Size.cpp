// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/Size.h"

#include "host/schema/Names.h"
#include "host/tvpcim/Failure.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <optional>
#include <string_view>

namespace tvp::host::tvpcim {
namespace {

constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t MOST_DECIMALS = 3;
constexpr std::string_view PREFIXES = "KMGTP";

bool isDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

std::optional<std::uint64_t> bytesOfUnit(const std::string& unit) {
  const std::string lower = lowerCase(unit);
  if (lower.empty() || lower == "b") {
    return 1;
  }
  if (lower == "s") {
    return SECTOR_SIZE;
  }
  const std::string rest = lower.substr(1);
  const std::size_t prefix = lowerCase(std::string(PREFIXES)).find(lower[0]);
  if (prefix == std::string::npos || (!rest.empty() && rest != "b" && rest != "ib")) {
    return std::nullopt;
  }
  std::uint64_t bytes = 1;
  for (std::size_t power = 0; power <= prefix; ++power) {
    bytes *= rest == "b" ? 1000 : 1024;
  }
  return bytes;
}

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
  throw UsageError("the size '" + text + "' " + reason);
}

struct SizeText {
  std::string whole;
  std::string decimals;
  std::string unit;
};

SizeText split(const std::string& text) {
  SizeText parts;
  std::size_t at = 0;
  while (at < text.size() && isDigit(text[at])) {
    parts.whole += text[at++];
  }
  if (at < text.size() && text[at] == '.') {
    ++at;
    while (at < text.size() && isDigit(text[at])) {
      parts.decimals += text[at++];
    }
    if (parts.decimals.empty()) {
      refuse(text, "has no digits after the point");
    }
  }
  while (at < text.size() && text[at] == ' ') {
    ++at;
  }
  parts.unit = text.substr(at);
  return parts;
}

std::uint64_t readNumber(const std::string& text, const std::string& digits) {
  std::uint64_t number = 0;
  for (const char digit : digits) {
    const auto value = static_cast<std::uint64_t>(digit - '0');
    if (number > (LARGEST - value) / 10) {
      refuse(text, "is too large: sizes go up to 16 EiB");
    }
    number = number * 10 + value;
  }
  return number;
}

}  // namespace

std::uint64_t parseSectors(const std::string& text) {
  const SizeText parts = split(text);
  const std::optional<std::uint64_t> unit = bytesOfUnit(parts.unit);
  if (parts.whole.empty() || !unit) {
    refuse(text, "cannot be read: give a number and a unit, such as 100GiB, 1M, 4096 or 204800s");
  }
  if (parts.decimals.size() > MOST_DECIMALS) {
    refuse(text, "has more than three decimals");
  }
  const std::uint64_t whole = readNumber(text, parts.whole);
  std::uint64_t scale = 1;
  for (std::size_t count = 0; count < parts.decimals.size(); ++count) {
    scale *= 10;
  }
  const std::uint64_t part = readNumber(text, parts.decimals) * *unit;
  if (whole > LARGEST / *unit || whole * *unit > LARGEST - part / scale) {
    refuse(text, "is too large: sizes go up to 16 EiB");
  }
  const std::uint64_t bytes = whole * *unit + part / scale;
  if (part % scale != 0 || bytes % SECTOR_SIZE != 0) {
    refuse(text, "is not a multiple of 512 bytes");
  }
  return bytes / SECTOR_SIZE;
}

std::string formatSectors(std::uint64_t sectors) {
  static const std::array<const char*, 7> UNITS = {"B", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  if (sectors == 0) {
    return "0 B";
  }
  // Up to 8 ZiB can be said in sectors, so the division goes on from sectors, not from bytes.
  std::uint64_t divisor = 2;
  std::size_t unit = 1;
  if (sectors < divisor) {
    return "512 B";
  }
  while (unit + 1 < UNITS.size() && sectors / divisor >= 1024) {
    divisor *= 1024;
    ++unit;
  }
  if (sectors % divisor == 0) {
    return std::to_string(sectors / divisor) + " " + UNITS.at(unit);
  }
  std::array<char, 64> number{};
  std::snprintf(
      number.data(), number.size(), "%.2f", static_cast<double>(sectors) / static_cast<double>(divisor));
  std::string text = number.data();
  while (text.back() == '0') {
    text.pop_back();
  }
  if (text.back() == '.') {
    text.pop_back();
  }
  return text + " " + UNITS.at(unit);
}

unsigned percentOf(std::uint64_t used, std::uint64_t whole) {
  const double share = whole == 0 ? 0 : static_cast<double>(used) / static_cast<double>(whole);
  return static_cast<unsigned>(std::lround(100 * share));
}

}  // namespace tvp::host::tvpcim
