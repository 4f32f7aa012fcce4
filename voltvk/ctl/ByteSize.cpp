// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/ByteSize.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <stdexcept>

namespace voltvk::ctl {

namespace {

constexpr std::array<const char*, 5> UNITS = {"B", "KiB", "MiB", "GiB", "TiB"};

/** The power of 1024 that a unit stands for; -1 for no unit. */
int exponentOf(const std::string& unit) {
  if (unit.empty()) {
    return 0;
  }
  for (std::size_t i = 0; i < UNITS.size(); ++i) {
    if (unit == UNITS[i] || (i > 0 && unit == std::string(1, UNITS[i][0]))) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

}  // namespace

std::uint64_t parseByteSize(const std::string& text) {
  std::uint64_t value = 0;
  std::size_t digits = 0;
  bool fits = true;
  for (; digits < text.size() && std::isdigit(static_cast<unsigned char>(text[digits])) != 0; ++digits) {
    const auto digit = static_cast<std::uint64_t>(text[digits] - '0');
    fits = fits && value <= (UINT64_MAX - digit) / 10;
    value = fits ? value * 10 + digit : value;
  }
  const int exponent = exponentOf(text.substr(digits));
  if (digits == 0 || exponent < 0) {
    throw std::invalid_argument(
        "'" + text + "' is no size; give a number and B, KiB, MiB, GiB or TiB, as 100GiB");
  }
  const std::uint64_t unit = std::uint64_t{1} << (10U * static_cast<unsigned int>(exponent));
  if (!fits || value > UINT64_MAX / unit) {
    throw std::invalid_argument("'" + text + "' is too large; give less than 16 EiB");
  }
  return value * unit;
}

std::string showSectors(std::uint64_t sectors) {
  auto size = static_cast<double>(sectors) * 512;
  std::size_t unit = 0;
  while (size >= 1024 && unit + 1 < UNITS.size()) {
    size /= 1024;
    ++unit;
  }
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%.2f", size);
  std::string shown = text.data();
  shown.erase(shown.find_last_not_of('0') + 1);
  if (shown.back() == '.') {
    shown.pop_back();
  }
  return shown + " " + UNITS[unit];
}

}  // namespace voltvk::ctl
