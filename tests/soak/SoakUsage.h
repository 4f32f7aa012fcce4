// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOAK_SOAKUSAGE_H
#define TESTS_SOAK_SOAKUSAGE_H

#include <cstddef>
#include <string>
#include <vector>

namespace tvp::soak {

/** What the process uses at one moment. */
struct Usage {
  std::size_t kibibytes = 0;  ///< of memory that is resident
  std::size_t descriptors = 0;
  std::size_t threads = 0;

  static Usage now();
};

/** What was used over time, and whether it grows. Not thread-safe. */
class UsageHistory {
public:
  void add(const Usage& usage) { m_samples.push_back(usage); }

  /**
   * Compares the second quarter of the time (the first is for warming up) with the last one, by their
   * medians. Some memory is allowed for, since allocators keep what they have.
   * @return a sentence for each thing that grew
   */
  std::vector<std::string> growth() const;
  /** "memory A -> B KiB, ...": the medians of the second quarter and of the last. */
  std::string summary() const;

private:
  /** Median of a member over one of the four quarters, from 0. */
  std::size_t median(std::size_t Usage::*member, std::size_t quarter) const;

  std::vector<Usage> m_samples;
};

}  // namespace tvp::soak

#endif
