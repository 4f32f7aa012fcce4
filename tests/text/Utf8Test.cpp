// SPDX-License-Identifier: Apache-2.0
#include "text/Utf8.h"

#include <gtest/gtest.h>

namespace tvp::text {
namespace {

TEST(Utf8, InvalidBytesAndControlCharactersAreMadeVisible) {
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
      {"line \xe2\x80\xa8 break", "line \xe2\x80\xa8 break", "line \\xE2\\x80\\xA8 break"},
      {std::string("nul\0", 4), "", "nul\\x00"},
  };
  for (const auto& [text, utf8, visible] : cases) {
    EXPECT_EQ(printable(text), visible);
    if (*utf8 != '\0') {
      EXPECT_EQ(toUtf8(text), utf8);
      EXPECT_EQ(isUtf8(text), text == utf8);
    }
  }
}

TEST(Utf8, CharactersEndWhereTheTableOfWellFormedSequencesSays) {
  const struct {
    const char* text;
    std::uint32_t code;
    std::size_t length;
  } cases[] = {
      {"", 0, 0},
      {"A", 0x41, 1},
      {"\xc2\x80", 0x80, 2},
      {"\xdf\xbf", 0x7FF, 2},
      {"\xe0\xa0\x80", 0x800, 3},
      {"\xed\x9f\xbf", 0xD7FF, 3},
      {"\xee\x80\x80", 0xE000, 3},
      {"\xf0\x90\x80\x80", 0x10000, 4},
      {"\xf4\x8f\xbf\xbf", 0x10FFFF, 4},
      {"\xc1\xbf", 0, 0},
      {"\xe0\x9f\xbf", 0, 0},
      {"\xed\xbf\xbf", 0, 0},
      {"\xf0\x8f\xbf\xbf", 0, 0},
      {"\xf5\x80\x80\x80", 0, 0},
      {"\xe2\x82", 0, 0},
      {"\xe2\x41\x80", 0, 0},
  };
  for (const auto& [text, code, length] : cases) {
    const Character character = characterAt(text);
    EXPECT_EQ(character.code, code) << printable(text);
    EXPECT_EQ(character.length, length) << printable(text);
  }
}

TEST(Utf8, CuttingNeverSplitsACharacter) {
  const struct {
    const char* text;
    std::size_t limit;
    const char* cut;
  } cases[] = {
      {"plain", 9, "plain"},         {"plain", 5, "plain"},       {"plain", 3, "pla"}, {"a\xc3\xa9", 2, "a"},
      {"a\xc3\xa9", 3, "a\xc3\xa9"}, {"\xf0\x9f\x92\xbe", 3, ""}, {"", 0, ""},         {"x", 0, ""},
  };
  for (const auto& [text, limit, cut] : cases) {
    EXPECT_EQ(cutToSize(text, limit), cut) << printable(text) << " in " << limit;
  }
}

}  // namespace
}  // namespace tvp::text
