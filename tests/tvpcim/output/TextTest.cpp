// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Text.h"

#include <gtest/gtest.h>

namespace tvp::host::tvpcim {
namespace {

TEST(Text, IsMeasuredAndCutInColumns) {
  const struct {
    const char* text;
    std::size_t width;
    std::size_t columns;
    const char* cut;
  } cases[] = {
      {"drive", 5, 5, "drive"},   {"drive", 5, 4, "dri…"},
      {"drive", 5, 1, "…"},       {"drive", 5, 0, ""},
      {"日本語", 6, 6, "日本語"}, {"日本語", 6, 5, "日本…"},
      {"日本語", 6, 4, "日…"},    {"e\xcc\x81t", 2, 2, "e\xcc\x81t"},
  };
  for (const auto& [text, width, columns, cut] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(displayWidth(text), width);
    EXPECT_EQ(cutToWidth(text, columns), cut);
  }
}

TEST(Text, SuggestsWhatIsNearAndNothingElse) {
  const std::vector<std::string> verbs = {"drives", "pools", "pool", "volumes", "volume", "ei", "ein", "di"};
  const struct {
    const char* word;
    const char* expected;
  } cases[] = {
      {"drivse", "; did you mean 'drives'?"},
      {"vol", "; did you mean 'volumes' or 'volume'?"},
      {"POOLS", "; did you mean 'pools' or 'pool'?"},
      {"frobnicate", ""},
      {"", ""},
      {"status", ""},
  };
  for (const auto& [word, expected] : cases) {
    EXPECT_EQ(suggestion(word, verbs), expected) << word;
  }
}

}  // namespace
}  // namespace tvp::host::tvpcim
