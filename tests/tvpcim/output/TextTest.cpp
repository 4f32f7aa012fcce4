// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Text.h"

#include <gtest/gtest.h>

namespace tvp::host::tvpcim {
namespace {

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
