// SPDX-License-Identifier: Apache-2.0
#include "text/Utf8.h"

#include <array>
#include <cstdio>

namespace tvp::text {

namespace {

constexpr bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

constexpr bool breaksLine(std::uint32_t code) {
  return isControl(code) || code == 0x2028 || code == 0x2029;
}

void appendEscaped(std::string& result, std::string_view bytes) {
  constexpr std::string_view DIGITS = "0123456789ABCDEF";
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    result += {'\\', 'x', DIGITS[value >> 4U], DIGITS[value & 0xFU]};
  }
}

/** The text with what is not UTF-8, and what the predicate finds, escaped. */
template <class Predicate>
std::string escaped(std::string_view text, Predicate alsoEscaped) {
  std::string result;
  while (!text.empty()) {
    const Character character = characterAt(text);
    const std::string_view bytes = text.substr(0, character.step());
    if (character.length == 0 || alsoEscaped(character.code)) {
      appendEscaped(result, bytes);
    } else {
      result += bytes;
    }
    text.remove_prefix(bytes.size());
  }
  return result;
}

}  // namespace

Character characterAt(std::string_view text, std::size_t position) {
  if (position >= text.size()) {
    return {};
  }
  const auto lead = static_cast<unsigned char>(text[position]);
  if (lead < 0x80) {
    return {lead, 1};
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || length > text.size() - position) {
    return {};
  }
  std::uint32_t code = lead & (0x7FU >> length);
  for (std::size_t index = 1; index < length; ++index) {
    if (!isContinuation(text[position + index])) {
      return {};
    }
    code = code << 6U | (static_cast<unsigned char>(text[position + index]) & 0x3FU);
  }
  constexpr std::array<std::uint32_t, 5> SMALLEST = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < SMALLEST.at(length) || surrogate || code > 0x10FFFF ? Character{} : Character{code, length};
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const Character character = characterAt(text);
    if (character.length == 0) {
      return false;
    }
    text.remove_prefix(character.length);
  }
  return true;
}

std::string_view cutToSize(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) {
    return text;
  }
  while (limit > 0 && isContinuation(text[limit])) {
    --limit;
  }
  return text.substr(0, limit);
}

std::string toUtf8(std::string_view text) {
  return escaped(text, [](std::uint32_t) { return false; });
}

std::string printable(std::string_view text) {
  return escaped(text, breaksLine);
}

std::string printableLines(std::string_view text) {
  return escaped(text, [](std::uint32_t code) { return code != '\n' && breaksLine(code); });
}

std::string printableJson(std::string_view json) {
  std::string result;
  while (!json.empty()) {
    const Character character = characterAt(json);
    if (character.code >= 0x7F && isControl(character.code)) {
      std::array<char, 16> escape{};
      std::snprintf(escape.data(), escape.size(), "\\u%04X", static_cast<unsigned>(character.code));
      result += escape.data();
    } else {
      result += json.substr(0, character.step());
    }
    json.remove_prefix(character.step());
  }
  return result;
}

}  // namespace tvp::text
