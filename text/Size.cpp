// SPDX-License-Identifier: Apache-2.0
#include "text/Size.h"

#include "text/Case.h"
#include "text/Quote.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <limits>
#include <optional>

namespace tvp::text {

namespace {

constexpr std::uint64_t LARGEST = std::numeric_limits<std::uint64_t>::max();
constexpr std::size_t MOST_DECIMALS = 3;
constexpr std::string_view PREFIXES = "kmgtpe";

[[noreturn]] void refuse(std::string_view text, const std::string& reason) {
  throw SizeError("the size " + quoted(text) + " " + reason);
}

[[noreturn]] void refuseLarge(std::string_view text) {
  refuse(text, "is too large: sizes go up to 16 EiB");
}

std::optional<std::uint64_t> bytesOfUnit(std::string_view unit) {
  const std::string lower = lowerCase(unit);
  if (lower.empty() || lower == "b") {
    return 1;
  }
  if (lower == "s") {
    return SECTOR_SIZE;
  }
  const std::string rest = lower.substr(1);
  const std::size_t prefix = PREFIXES.find(lower[0]);
  if (prefix == std::string_view::npos || (!rest.empty() && rest != "b" && rest != "ib")) {
    return std::nullopt;
  }
  std::uint64_t bytes = 1;
  for (std::size_t power = 0; power <= prefix; ++power) {
    bytes *= rest == "b" ? 1000 : 1024;
  }
  return bytes;
}

struct SizeText {
  std::string_view whole;
  std::string_view decimals;
  std::string_view unit;
};

SizeText split(const std::string_view text) {
  std::string_view rest = text;
  const auto take = [&rest](std::string_view characters) {
    const std::size_t end = std::min(rest.find_first_not_of(characters), rest.size());
    const std::string_view taken = rest.substr(0, end);
    rest.remove_prefix(end);
    return taken;
  };
  constexpr std::string_view DIGITS = "0123456789";
  SizeText parts;
  parts.whole = take(DIGITS);
  if (!rest.empty() && rest.front() == '.') {
    rest.remove_prefix(1);
    parts.decimals = take(DIGITS);
    if (parts.decimals.empty()) {
      refuse(text, "has no digits after the point");
    }
  }
  take(" ");
  parts.unit = rest;
  return parts;
}

std::uint64_t readNumber(std::string_view text, std::string_view digits) {
  std::uint64_t number = 0;
  for (const char digit : digits) {
    const auto value = static_cast<std::uint64_t>(digit - '0');
    if (number > (LARGEST - value) / 10) {
      refuseLarge(text);
    }
    number = number * 10 + value;
  }
  return number;
}

}  // namespace

std::uint64_t parseSectors(std::string_view text) {
  const SizeText parts = split(text);
  const std::optional<std::uint64_t> unit = bytesOfUnit(parts.unit);
  if (parts.whole.empty() || !unit) {
    refuse(text, "cannot be read: give a number and a unit, such as 100GiB, 1M, 4096 or 204800s");
  }
  if (parts.decimals.size() > MOST_DECIMALS) {
    refuse(text, "has more than three decimals");
  }
  const std::uint64_t whole = readNumber(text, parts.whole);
  const std::uint64_t decimals = readNumber(text, parts.decimals);
  std::uint64_t scale = 1;
  for (std::size_t count = 0; count < parts.decimals.size(); ++count) {
    scale *= 10;
  }
  // Divided before it is multiplied: 999 thousandths of an EiB do not fit 64 bits.
  const std::uint64_t remainder = *unit % scale * decimals;
  const std::uint64_t part = *unit / scale * decimals + remainder / scale;
  if (whole > LARGEST / *unit || whole * *unit > LARGEST - part) {
    refuseLarge(text);
  }
  const std::uint64_t bytes = whole * *unit + part;
  if (remainder % scale != 0 || bytes % SECTOR_SIZE != 0) {
    refuse(text, "is not a multiple of 512 bytes");
  }
  return bytes / SECTOR_SIZE;
}

std::optional<unsigned> percentage(std::string_view text) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  std::string_view rest = text.substr(static_cast<std::size_t>(end - text.data()));
  rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
  const bool isShare = error == std::errc() && rest == "%" && number >= 1 && number <= 100;
  return isShare ? std::optional(number) : std::nullopt;
}

std::string formatSectors(std::uint64_t sectors) {
  static constexpr std::array<const char*, 6> UNITS = {"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  if (sectors < 2) {
    return std::to_string(sectors * SECTOR_SIZE) + " B";
  }
  // Sectors can count up to 8 ZiB, so the division starts from sectors, not from bytes.
  std::uint64_t divisor = 2;
  std::size_t unit = 0;
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
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text + " " + UNITS.at(unit);
}

}  // namespace tvp::text
