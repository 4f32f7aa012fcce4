// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Text.h"

#include "host/schema/Names.h"
#include "text/Trim.h"

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cwchar>
#include <numeric>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

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
  return std::string(text::trimmed(text));
}

std::size_t displayWidth(const std::string& text) {
  std::size_t width = 0;
  for (std::size_t at = 0; at < text.size();) {
    const text::Character character = text::characterAt(text, at);
    width += widthOf(character.code);
    at += character.step();
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
    const text::Character character = text::characterAt(text, at);
    const std::size_t length = character.step();
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
