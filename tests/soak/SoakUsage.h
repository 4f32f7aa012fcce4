// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOAK_SOAKUSAGE_H
#define TESTS_SOAK_SOAKUSAGE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

namespace tvp::soak {

/** What the process uses over time, and whether it grows. Not thread-safe. */
class UsageHistory {
public:
  /** Notes what is used now. */
  void add() {
    std::ifstream statm("/proc/self/statm");
    std::size_t size = 0;
    std::size_t resident = 0;
    statm >> size >> resident;
    const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    m_samples.push_back({resident * page / 1024, entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")});
  }

  /**
   * Compares the second quarter of the time (the first is for warming up) with the last one, by their
   * medians. Some memory is allowed for, since allocators keep what they have.
   * @return a sentence for each thing that grew
   */
  std::vector<std::string> growth() const {
    std::vector<std::string> grown;
    for (std::size_t i = 0; i < RESOURCES.size(); ++i) {
      if (median(i, 3) > median(i, 1) + RESOURCES[i].slack) {
        grown.push_back(change(i) + ": it grew");
      }
    }
    return grown;
  }
  /** "KiB of memory A -> B, ...": the medians of the second quarter and of the last. */
  std::string summary() const { return change(0) + ", " + change(1) + ", " + change(2); }

private:
  struct Resource {
    const char* name;
    std::size_t slack;
  };
  static constexpr std::array<Resource, 3> RESOURCES = {
      Resource{"KiB of memory", 8192}, {"descriptors", 2}, {"threads", 2}};

  static std::size_t entriesOf(const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
  }
  /** Median of a resource over one of the four quarters, from 0. */
  std::size_t median(std::size_t resource, std::size_t quarter) const {
    std::vector<std::size_t> values;
    for (std::size_t i = m_samples.size() * quarter / 4; i < m_samples.size() * (quarter + 1) / 4; ++i) {
      values.push_back(m_samples[i][resource]);
    }
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
  }
  std::string change(std::size_t resource) const {
    return RESOURCES[resource].name + (" " + std::to_string(median(resource, 1))) + " -> " +
           std::to_string(median(resource, 3));
  }

  std::vector<std::array<std::size_t, RESOURCES.size()>> m_samples;
};

}  // namespace tvp::soak

#endif
