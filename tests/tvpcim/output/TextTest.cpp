// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Text.h"

#include <gtest/gtest.h>

namespace tvp::host::tvpcim {
namespace {

TEST(Text, BytesThatAreNoUtf8AndControlsAreMadeVisible) {
  const struct {
    std::string text;
    const char* utf8;
    const char* printable;
  } cases[] = {
      {"plain Käse 日本 🙂", "plain Käse 日本 🙂", "plain Käse 日本 🙂"},
      {"a\nb\tc\x7f", "a\nb\tc\x7f", "a\\x0Ab\\x09c\\x7F"},
      {"\x80"
       "a\xff",
       "\\x80a\\xFF", "\\x80a\\xFF"},
      {"cut \xe6\x97", "cut \\xE6\\x97", "cut \\xE6\\x97"},
      {"overlong \xc0\xaf \xe0\x80\x80", "overlong \\xC0\\xAF \\xE0\\x80\\x80",
       "overlong \\xC0\\xAF \\xE0\\x80\\x80"},
      {"surrogate \xed\xa0\x80", "surrogate \\xED\\xA0\\x80", "surrogate \\xED\\xA0\\x80"},
      {"beyond \xf4\x90\x80\x80", "beyond \\xF4\\x90\\x80\\x80", "beyond \\xF4\\x90\\x80\\x80"},
      {"C1 \xc2\x9b"
       "2J",
       "C1 \xc2\x9b"
       "2J",
       "C1 \\xC2\\x9B2J"},
      {std::string("nul\0", 4), "", "nul\\x00"},
  };
  for (const auto& [text, utf8, visible] : cases) {
    EXPECT_EQ(printable(text), visible);
    if (*utf8 != '\0') {
      EXPECT_EQ(toUtf8(text), utf8);
    }
  }
}

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
