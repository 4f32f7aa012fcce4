// SPDX-License-Identifier: Apache-2.0
#include "text/Invisible.h"

#include "text/Utf8.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tvp::text {

namespace {

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

/** The default-ignorable characters of Unicode, the separators of lines and paragraphs, and annotation marks.
 */
constexpr std::array<Range, 17> INVISIBLE = {{
    {0x00AD, 0x00AD},
    {0x034F, 0x034F},
    {0x061C, 0x061C},
    {0x115F, 0x1160},
    {0x17B4, 0x17B5},
    {0x180B, 0x180F},
    {0x200B, 0x200F},
    {0x2028, 0x202E},
    {0x2060, 0x206F},
    {0x3164, 0x3164},
    {0xFE00, 0xFE0F},
    {0xFEFF, 0xFEFF},
    {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFFB},
    {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A},
    {0xE0000, 0xE0FFF},
}};

/** The space separators of Unicode, and the empty Braille pattern. */
constexpr std::array<Range, 8> BLANKS = {{
    {0x0020, 0x0020},
    {0x00A0, 0x00A0},
    {0x1680, 0x1680},
    {0x2000, 0x200A},
    {0x202F, 0x202F},
    {0x205F, 0x205F},
    {0x2800, 0x2800},
    {0x3000, 0x3000},
}};

template <std::size_t SIZE>
bool isIn(const std::array<Range, SIZE>& ranges, std::uint32_t code) {
  return std::any_of(ranges.begin(), ranges.end(), [&](const Range& range) {
    return code >= range.first && code <= range.last;
  });
}

/** The first character with the property; 0 if there is none. */
template <typename Property>
std::uint32_t findFirst(std::string_view text, const Property& property) {
  while (!text.empty()) {
    const Character character = characterAt(text);
    if (property(character.code)) {
      return character.code;
    }
    text.remove_prefix(character.step());
  }
  return 0;
}

}  // namespace

std::uint32_t firstInvisible(std::string_view text) {
  return findFirst(text, [](std::uint32_t code) { return isIn(INVISIBLE, code); });
}

bool isBlank(std::string_view text) {
  return findFirst(text, [](std::uint32_t code) { return !isIn(BLANKS, code); }) == 0;
}

std::string codePointName(std::uint32_t code) {
  std::array<char, 16> name{};
  std::snprintf(name.data(), name.size(), "U+%04X", code);
  return name.data();
}

}  // namespace tvp::text
