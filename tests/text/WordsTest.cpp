// SPDX-License-Identifier: Apache-2.0
// Case, quotes and blanks of texts.
#include "text/Case.h"
#include "text/Quote.h"
#include "text/Trim.h"

#include <gtest/gtest.h>

namespace tvp::text {
namespace {

TEST(Case, ChangesAsciiLettersAlone) {
  EXPECT_EQ(lowerCase("TVP_@AZ[`az{\xC3\x84\xFF"), "tvp_@az[`az{\xC3\x84\xFF");
  EXPECT_TRUE(equalsIgnoringCase("TVP_Pool", "tvp_pOOL"));
  EXPECT_TRUE(equalsIgnoringCase("", ""));
  EXPECT_FALSE(equalsIgnoringCase("TVP_Pool", "TVP_Pools"));
  EXPECT_FALSE(equalsIgnoringCase("[", "{"));
  EXPECT_FALSE(equalsIgnoringCase("\xC3\x84", "\xC3\xA4"));
}

TEST(Quote, KeepsTheTextRecognisable) {
  EXPECT_EQ(quoted("gold"), "'gold'");
  EXPECT_EQ(quoted("a\n\xFF"), "'a\\x0A\\xFF'");
  EXPECT_EQ(doubleQuoted(""), "\"\"");
  EXPECT_EQ(doubleQuoted("C:\\a \"b\"\n"), "\"C:\\\\a \\\"b\\\"\n\"");
}

TEST(Trim, TakesTheNamedCharactersFromBothEnds) {
  EXPECT_EQ(trimmed("  a b "), "a b");
  EXPECT_EQ(trimmed("\ta\t"), "\ta\t");
  EXPECT_EQ(trimmed(" \t\na\r\n", " \t\n"), "a\r");
  EXPECT_EQ(trimmed("   "), "");
  EXPECT_EQ(trimmed(""), "");
}

}  // namespace
}  // namespace tvp::text
