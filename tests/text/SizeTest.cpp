// SPDX-License-Identifier: Apache-2.0
#include "text/Size.h"

#include <gtest/gtest.h>

namespace tvp::text {
namespace {

TEST(Size, IsReadInEveryUnit) {
  const struct {
    const char* text;
    std::uint64_t sectors;
  } cases[] = {
      {"0", 0},
      {"512", 1},
      {"1024B", 2},
      {"204800s", 204800},
      {"1MiB", 2048},
      {"1m", 2048},
      {"100G", 209715200},
      {"100GiB", 209715200},
      {"512 KB", 1000},
      {"1.5T", 3221225472},
      {"0.5k", 1},
      {"2.048GB", 4000000},
      {"2e", 4503599627370496},
      {"1.125 EiB", 2533274790395904},
      {"0.999EB", 1951171875000000},
      {"18446744073709551104", 36028797018963967},
      {"36028797018963967s", 36028797018963967},
  };
  for (const auto& [text, sectors] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(parseSectors(text), sectors);
  }
}

TEST(Size, IsRefusedWithAReason) {
  const struct {
    const char* text;
    const char* reason;
  } cases[] = {
      {"", "cannot be read"},
      {"G", "cannot be read"},
      {"-1G", "cannot be read"},
      {"1 Q", "cannot be read"},
      {"a\x1b[2J", "'a\\x1B[2J' cannot be read"},
      {"1GiBs", "cannot be read"},
      {"12ib", "cannot be read"},
      {"1.G", "no digits after the point"},
      {"1.0001G", "more than three decimals"},
      {"513", "not a multiple of 512"},
      {"1.001K", "not a multiple of 512"},
      {"16384P", "too large"},
      {"16EiB", "too large"},
      {"0.1E", "not a multiple of 512"},
      {"99999999999999999999", "too large"},
      {"36028797018963968s", "too large"},
  };
  for (const auto& [text, reason] : cases) {
    SCOPED_TRACE(text);
    try {
      parseSectors(text);
      ADD_FAILURE() << "is taken as a size";
    } catch (const SizeError& error) {
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  }
}

TEST(Size, IsReadAsAShare) {
  for (const auto& [text, share] : {std::pair{"1%", 1U}, {"25 %", 25U}, {"100%", 100U}}) {
    EXPECT_EQ(percentage(text), share) << text;
  }
  for (const char* text :
       {"", "%", "0%", "101%", "-5%", "+5%", "1.5%", "5", " 5%", "5%%", "5% ", "4294967297%"}) {
    EXPECT_EQ(percentage(text), std::nullopt) << text;
  }
}

TEST(Size, IsShownInTheLargestUnitThatFits) {
  const struct {
    std::uint64_t sectors;
    const char* text;
  } cases[] = {
      {0, "0 B"},
      {1, "512 B"},
      {3, "1.5 KiB"},
      {2047, "1023.5 KiB"},
      {2048, "1 MiB"},
      {209715200, "100 GiB"},
      {1953525168, "931.51 GiB"},
      {~std::uint64_t{0}, "8192 EiB"},
  };
  for (const auto& [sectors, text] : cases) {
    EXPECT_EQ(formatSectors(sectors), text);
  }
}

}  // namespace
}  // namespace tvp::text
