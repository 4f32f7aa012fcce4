// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Text.h"

#include "host/schema/Names.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <numeric>
#include <string_view>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

struct Character {
  std::uint32_t code = 0;
  std::size_t length = 0;  ///< 0: the byte is no part of UTF-8
};

/** The character that starts at a position, by the table of well-formed byte sequences. */
Character characterAt(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[at + index]); };
  const unsigned first = byte(0);
  if (first < 0x80) {
    return {first, 1};
  }
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || at + length > text.size()) {
    return {};
  }
  std::uint32_t code = first & (0xFFU >> (length + 1));
  for (std::size_t index = 1; index < length; ++index) {
    if ((byte(index) & 0xC0) != 0x80) {
      return {};
    }
    code = code << 6 | (byte(index) & 0x3F);
  }
  const std::uint32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
  if (code < smallest || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
    return {};
  }
  return {code, length};
}

bool isControl(std::uint32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0x2028 || code == 0x2029;
}

void appendEscaped(std::string& result, std::string_view bytes) {
  for (const char byte : bytes) {
    std::array<char, 8> escaped{};
    std::snprintf(
        escaped.data(), escaped.size(), "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    result += escaped.data();
  }
}

std::string cleaned(const std::string& text, bool withControls) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = characterAt(text, at);
    const std::size_t length = std::max<std::size_t>(character.length, 1);
    const std::string_view bytes = std::string_view(text).substr(at, length);
    if (character.length == 0 || (withControls && isControl(character.code))) {
      appendEscaped(result, bytes);
    } else {
      result += bytes;
    }
    at += length;
  }
  return result;
}

std::size_t widthOf(std::uint32_t code) {
  if (code < 0x80) {
    return 1;
  }
  // The process's own locale stays as it is: it belongs to the provider as well.
  static const locale_t utf8 = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (utf8 == nullptr) {
    return 1;
  }
  const locale_t before = ::uselocale(utf8);
  const int width = ::wcwidth(static_cast<wchar_t>(code));
  ::uselocale(before);
  return width < 0 ? 1 : static_cast<std::size_t>(width);
}

std::size_t editDistance(const std::string& left, const std::string& right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 1; i <= left.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i);
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t replaced = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row[right.size()];
}

}  // namespace

std::string join(const std::vector<std::string>& texts, const std::string& separator) {
  std::string result;
  for (const std::string& text : texts) {
    result += (&text == &texts.front() ? "" : separator) + text;
  }
  return result;
}

std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' ');
  return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::string toUtf8(const std::string& text) {
  return cleaned(text, false);
}

std::string printable(const std::string& text) {
  return cleaned(text, true);
}

std::size_t displayWidth(const std::string& text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = characterAt(text, at);
    width += widthOf(character.code);
    at += std::max<std::size_t>(character.length, 1);
  }
  return width;
}

std::string cutToWidth(const std::string& text, std::size_t columns) {
  if (displayWidth(text) <= columns) {
    return text;
  }
  std::string result;
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const Character character = characterAt(text, at);
    const std::size_t length = std::max<std::size_t>(character.length, 1);
    width += widthOf(character.code);
    if (width >= columns) {
      break;
    }
    result += text.substr(at, length);
    at += length;
  }
  return columns == 0 ? "" : result + "…";
}

std::vector<std::string> nearest(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string wanted = lowerCase(word);
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (const std::string& candidate : candidates) {
    const std::string name = lowerCase(candidate);
    const std::size_t distance = editDistance(wanted, name);
    const bool begins = wanted.size() >= 3 && name.compare(0, wanted.size(), wanted) == 0;
    if (begins || distance <= std::max<std::size_t>(1, std::min(wanted.size(), name.size()) / 3)) {
      ranked.emplace_back(begins ? 0 : distance, candidate);
    }
  }
  std::stable_sort(ranked.begin(), ranked.end(), [](const auto& left, const auto& right) {
    return left.first < right.first;
  });
  std::vector<std::string> result;
  for (std::size_t index = 0; index < std::min<std::size_t>(ranked.size(), 3); ++index) {
    result.push_back(ranked[index].second);
  }
  return result;
}

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  std::vector<std::string> quoted;
  for (const std::string& name : nearest(word, candidates)) {
    quoted.push_back("'" + name + "'");
  }
  return quoted.empty() ? "" : "; did you mean " + join(quoted, " or ") + "?";
}

}  // namespace tvp::host::tvpcim
