// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOAK_SOAKUSAGE_H
#define TESTS_SOAK_SOAKUSAGE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

#include <malloc.h>

namespace tvp::soak {

/**
 * What the process uses while it serves requests, and whether it grows with them. How long the requests take
 * makes no difference. Not thread-safe.
 */
class UsageHistory {
public:
  /** Notes what is used now. @param requests made so far */
  void add(std::uint64_t requests) {
    // What is in use, without what the allocator keeps for later.
    const struct mallinfo2 heap = ::mallinfo2();
    m_samples.push_back(
        {requests, {heap.uordblks + heap.hblkhd, entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")}});
  }

  /** Whether there were enough requests for a verdict. */
  bool isConclusive() const { return requestsCompared() >= ENOUGH_REQUESTS; }
  /**
   * Compares the second quarter of the samples (the first is for warming up) with the last one, by their
   * medians. Some memory is allowed for: caches fill up to a limit.
   * @return a sentence for each thing that grew
   */
  std::vector<std::string> growth() const {
    std::vector<std::string> grown;
    for (std::size_t i = 0; i < RESOURCES.size(); ++i) {
      const Resource& resource = RESOURCES[i];
      if (median(i, 3) > median(i, 1) + resource.slack + resource.slackPerRequest * requestsCompared()) {
        grown.push_back(change(i) + ": it grew");
      }
    }
    return grown;
  }
  /** "bytes of memory A -> B, ... in N requests": the medians of the second quarter and of the last. */
  std::string summary() const {
    return change(0) + ", " + change(1) + ", " + change(2) + " in " + std::to_string(requestsCompared()) +
           " requests";
  }

private:
  struct Resource {
    const char* name;
    std::uint64_t slack;
    std::uint64_t slackPerRequest;
  };
  struct Sample {
    std::uint64_t requests;
    std::array<std::uint64_t, 3> used;
  };
  static constexpr std::array<Resource, 3> RESOURCES = {
      Resource{"bytes of memory", 524288, 16}, {"descriptors", 2, 0}, {"threads", 2, 0}};
  static constexpr std::uint64_t ENOUGH_REQUESTS = 2000;

  static std::uint64_t entriesOf(const char* directory) {
    const std::filesystem::directory_iterator entries(directory);
    return static_cast<std::uint64_t>(std::distance(begin(entries), end(entries)));
  }
  /** Median of a value of the samples over one of the four quarters, from 0; 0 without a sample. */
  template <typename Value>
  std::uint64_t medianOf(std::size_t quarter, Value value) const {
    std::vector<std::uint64_t> values;
    for (std::size_t i = m_samples.size() * quarter / 4; i < m_samples.size() * (quarter + 1) / 4; ++i) {
      values.push_back(value(m_samples[i]));
    }
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
  }
  std::uint64_t median(std::size_t resource, std::size_t quarter) const {
    return medianOf(quarter, [=](const Sample& sample) { return sample.used[resource]; });
  }
  /** The requests between what is compared. */
  std::uint64_t requestsCompared() const {
    const auto requests = [](const Sample& sample) { return sample.requests; };
    return medianOf(3, requests) - medianOf(1, requests);
  }
  std::string change(std::size_t resource) const {
    return RESOURCES[resource].name + (" " + std::to_string(median(resource, 1))) + " -> " +
           std::to_string(median(resource, 3));
  }

  std::vector<Sample> m_samples;
};

}  // namespace tvp::soak

#endif
