// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/status/StatisticsRates.h"

#include "host/tvpcim/output/Listing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace tvp::host::tvpcim {
namespace {

constexpr std::size_t WIDTH = 8;  ///< of each column; there are two blanks between them

std::string column(const std::string& text) {
  return std::string(WIDTH - std::min(WIDTH, text.size()), ' ') + text;
}

/** "12.3", "45678", "1.23M": never longer than a column. */
std::string rateText(double rate) {
  constexpr double MOST_WITH_DECIMAL = 10000;
  constexpr double MOST_WITHOUT_UNIT = 10000000;
  const char* unit = "";
  const char* const units[] = {"M", "G", "T", "P", "E"};
  if (rate >= MOST_WITHOUT_UNIT) {
    rate /= 1000;
    for (const char* next : units) {
      rate /= 1000;
      unit = next;
      if (rate < 1000) {
        break;
      }
    }
  }
  std::array<char, 64> text{};
  const bool whole = *unit == '\0' && rate >= MOST_WITH_DECIMAL;
  std::snprintf(text.data(), text.size(), whole ? "%.0f%s" : "%.1f%s", rate, unit);
  return text.data();
}

/** Rounded to what a measurement is worth. */
Value thousandths(double number) {
  return Value::real(CMPI_real64, std::round(number * 1000) / 1000);
}

}  // namespace

StatisticsSample::StatisticsSample(const Instance& answer)
    : reads(numberOf(answer, "ReadIO_Count")), writes(numberOf(answer, "WriteIO_Count")),
      sequential(numberOf(answer, "SeqIO_Count")), random(numberOf(answer, "RanIO_Count")),
      onSsd(numberOf(answer, "SSD_RIO_Count") + numberOf(answer, "SSD_WIO_Count")) {}

StatisticsRates
StatisticsRates::between(const StatisticsSample& before, const StatisticsSample& now, double seconds) {
  const bool reset = now.reads < before.reads || now.writes < before.writes;
  const auto grown = [&](std::uint64_t StatisticsSample::*counter) {
    const std::uint64_t start = reset ? 0 : std::min(before.*counter, now.*counter);
    return static_cast<double>(now.*counter - start);
  };
  StatisticsRates rates;
  rates.seconds = seconds;
  const double reads = grown(&StatisticsSample::reads);
  const double writes = grown(&StatisticsSample::writes);
  rates.reads = reads / seconds;
  rates.writes = writes / seconds;
  rates.sequential = grown(&StatisticsSample::sequential) / seconds;
  rates.random = grown(&StatisticsSample::random) / seconds;
  if (reads + writes > 0) {
    rates.hitRatio = std::min(grown(&StatisticsSample::onSsd) / (reads + writes), 1.0);
  }
  return rates;
}

std::string StatisticsRates::header() {
  std::string line = "TIME    ";  // as wide as HH:MM:SS

  for (const char* title : {"READS/S", "WRITES/S", "SEQ/S", "RANDOM/S", "SSD HIT", "MOVED"}) {
    line += "  " + column(title);
  }
  return line;
}

std::string StatisticsRates::line(const std::string& time) const {
  std::string line = time;
  for (const double rate : {reads, writes, sequential, random}) {
    line += "  " + column(rateText(rate));
  }
  constexpr int WHOLE = 100;
  line += "  " + column(hitRatio ? std::to_string(std::lround(*hitRatio * WHOLE)) + "%" : "-");
  return line + "  " + column(moved ? std::to_string(*moved) : "-");
}

Instance StatisticsRates::record(const std::string& time, const std::string& volume) const {
  Instance record;
  record.path.className = "VolumeStatistics";
  record.properties = {
      {"Time", Value::string(time)},
      {"VolumeName", Value::string(volume)},
      {"Seconds", thousandths(seconds)},
      {"ReadsPerSecond", thousandths(reads)},
      {"WritesPerSecond", thousandths(writes)},
      {"SequentialPerSecond", thousandths(sequential)},
      {"RandomPerSecond", thousandths(random)},
      {"SSDHitRatio", hitRatio ? thousandths(*hitRatio) : Value::null(CMPI_real64)},
      {"MovedChunks", moved ? Value::uint64(*moved) : Value::null(CMPI_uint64)}};
  return record;
}

}  // namespace tvp::host::tvpcim
