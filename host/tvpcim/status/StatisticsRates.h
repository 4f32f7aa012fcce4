// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STATUS_STATISTICSRATES_H
#define HOST_TVPCIM_STATUS_STATISTICSRATES_H

#include "host/schema/Value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tvp::host::tvpcim {

/** The counters of a volume at one moment. */
struct StatisticsSample {
  std::uint64_t reads = 0;
  std::uint64_t writes = 0;
  std::uint64_t sequential = 0;
  std::uint64_t random = 0;
  std::uint64_t onSsd = 0;  ///< reads and writes that SSDs have served

  StatisticsSample() = default;
  /** @param answer of the method GetVirtualVolumeStats */
  explicit StatisticsSample(const Instance& answer);
};

/** What happened between two samples. */
struct StatisticsRates {
  double seconds = 0;
  double reads = 0;  ///< per second, as the next three
  double writes = 0;
  double sequential = 0;
  double random = 0;
  std::optional<double> hitRatio;  ///< the share that SSDs have served, 0 to 1; nothing without any access
  std::optional<std::uint64_t> moved;  ///< chunks that were moved to SSDs; nothing where that is not known

  /** Counters that were set to 0 in between count from there. @param seconds more than 0 */
  static StatisticsRates between(const StatisticsSample& before, const StatisticsSample& now, double seconds);

  /** The titles of the columns, and a line below them: each as long as the other, whatever the numbers. */
  static std::string header();
  /** @param time "HH:MM:SS" */
  std::string line(const std::string& time) const;

  /** For programs. @param time in ISO 8601 */
  Instance record(const std::string& time, const std::string& volume) const;
};

}  // namespace tvp::host::tvpcim

#endif
