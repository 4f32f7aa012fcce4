// SPDX-License-Identifier: Apache-2.0
// Rates are those of the interval, and lines stay aligned whatever the numbers.
#include "host/tvpcim/status/StatisticsRates.h"

#include <gtest/gtest.h>

#include <limits>

namespace tvp::test {
namespace {

using host::tvpcim::StatisticsRates;
using host::tvpcim::StatisticsSample;

StatisticsSample sample(
    std::uint64_t reads, std::uint64_t writes, std::uint64_t sequential, std::uint64_t random,
    std::uint64_t onSsd) {
  StatisticsSample made;
  made.reads = reads;
  made.writes = writes;
  made.sequential = sequential;
  made.random = random;
  made.onSsd = onSsd;
  return made;
}

TEST(StatisticsRatesTest, CountWhatHappenedInTheInterval) {
  const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  const struct {
    StatisticsSample before;
    StatisticsSample now;
    double seconds;
    const char* line;
  } cases[] = {
      {sample(0, 0, 0, 0, 0), sample(0, 0, 0, 0, 0), 1, "       0.0       0.0       0.0       0.0         -"},
      {sample(10, 20, 5, 25, 9), sample(30, 21, 6, 45, 23), 2,
       "      10.0       0.5       0.5      10.0       67%"},
      // Set to 0 in between: what was counted since.
      {sample(100, 100, 100, 100, 100), sample(4, 0, 1, 3, 1), 1,
       "       4.0       0.0       1.0       3.0       25%"},
      {sample(0, 0, 0, 0, 0), sample(12345, 9999999, 10000000, most, most), 1,
       "     12345   9999999     10.0M     18.4E      100%"},
  };
  const std::size_t width = StatisticsRates::header().size();
  for (const auto& [before, now, seconds, line] : cases) {
    StatisticsRates rates = StatisticsRates::between(before, now, seconds);
    EXPECT_EQ(rates.line("09:17:53"), "09:17:53" + std::string(line) + "         -");
    rates.moved = 12;
    EXPECT_EQ(rates.line("09:17:53").size(), width);
  }
}

}  // namespace
}  // namespace tvp::test
