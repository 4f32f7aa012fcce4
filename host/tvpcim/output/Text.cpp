// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Text.h"

#include "text/Case.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

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

/** Up to three of the candidates that look most like the word, best first; none when nothing is near. */
std::vector<std::string> nearest(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string wanted = text::lowerCase(word);
  std::vector<std::pair<std::size_t, std::string>> ranked;
  for (const std::string& candidate : candidates) {
    const std::string name = text::lowerCase(candidate);
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

}  // namespace

std::string join(const std::vector<std::string>& texts, const std::string& separator) {
  std::string result;
  for (const std::string& text : texts) {
    result += (&text == &texts.front() ? "" : separator) + text;
  }
  return result;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  for (std::size_t start = 0; start <= text.size() && !text.empty();) {
    const std::size_t end = std::min(text.find(separator, start), text.size());
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return parts;
}

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  std::vector<std::string> quoted;
  for (const std::string& name : nearest(word, candidates)) {
    quoted.push_back("'" + name + "'");
  }
  return quoted.empty() ? "" : "; did you mean " + join(quoted, " or ") + "?";
}

}  // namespace tvp::host::tvpcim
