// SPDX-License-Identifier: Apache-2.0
#include "life/Recording.h"

#include "support/Lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <vector>

namespace tvp::test {
namespace {

using Strings = std::vector<std::string>;

/** The lines around one, with numbers as an editor shows them, and a mark at that one. */
std::string around(const Strings& lines, std::size_t line) {
  constexpr std::size_t BEFORE = 6;
  constexpr std::size_t AFTER = 4;
  std::string text;
  const std::size_t end = std::min(lines.size(), line + AFTER + 1);
  for (std::size_t i = line - std::min(line, BEFORE); i < end; ++i) {
    text += (i == line ? "> " : "  ") + std::to_string(i + 1) + ": " + lines[i] + "\n";
  }
  return line < lines.size() ? text : text + "> (the end)\n";
}

/** The step that a line belongs to. */
std::string headingAbove(const Strings& lines, std::size_t line) {
  for (std::size_t i = std::min(line + 1, lines.size()); i > 0; --i) {
    if (lines[i - 1].rfind("=== ", 0) == 0) {
      return lines[i - 1].substr(4);
    }
  }
  return "the beginning";
}

}  // namespace

void expectAsRecorded(const std::string& fileName, const std::string& text) {
  const std::string file = std::string(TVP_SOURCE_DIR "/tests/life/") + fileName;
  if (std::getenv("TVP_LIFE_WRITE") != nullptr) {
    std::ofstream stream(file, std::ios::binary);
    stream << text;
    stream.close();
    EXPECT_TRUE(stream) << file << " cannot be written";
    return;
  }
  std::ifstream stream(file, std::ios::binary);
  const std::string recorded{std::istreambuf_iterator<char>(stream), {}};
  if (text == recorded) {
    return;
  }
  const Strings expected = linesOf(recorded);
  const Strings actual = linesOf(text);
  const auto [first, second] = std::mismatch(expected.begin(), expected.end(), actual.begin(), actual.end());
  const auto line = static_cast<std::size_t>(std::distance(expected.begin(), first));
  ADD_FAILURE() << file << ": this life is not the recorded one; the first difference is at \""
                << headingAbove(second == actual.end() ? expected : actual, line) << "\"\nrecorded:\n"
                << around(expected, line) << "now:\n"
                << around(actual, line) << "If the change is meant, record it and review the difference of "
                << fileName << ":\n  TVP_LIFE_WRITE=1 ctest --test-dir " TVP_BINARY_DIR " -R OneLife";
}

}  // namespace tvp::test
