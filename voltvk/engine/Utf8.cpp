// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/Utf8.h"

#include <cstdint>

namespace voltvk {

namespace {

constexpr bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

std::size_t utf8Length(std::string_view text) {
  if (text.empty()) {
    return 0;
  }
  const auto lead = static_cast<unsigned char>(text[0]);
  if (lead < 0x80) {
    return 1;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) {
    return 0;
  }
  std::uint32_t code = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[i])) {
      return 0;
    }
    code = code << 6U | (static_cast<unsigned char>(text[i]) & 0x3FU);
  }
  // Overlong forms, halves of surrogate pairs and what lies beyond Unicode are no characters.
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  return overlong || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF ? 0 : length;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    std::size_t length = utf8Length(text);
    if (length == 0) {
      return false;
    }
    text.remove_prefix(length);
  }
  return true;
}

bool isControlCharacter(std::string_view character) {
  const auto first = static_cast<unsigned char>(character[0]);
  if (character.size() == 1) {
    return first < 0x20 || first == 0x7F;
  }
  return first == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
}

std::string_view cutUtf8(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) {
    return text;
  }
  while (limit > 0 && isContinuation(text[limit])) {
    --limit;
  }
  return text.substr(0, limit);
}

}  // namespace voltvk
