// SPDX-License-Identifier: Apache-2.0
#include "soak/SoakUsage.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace tvp::soak {
namespace {

constexpr std::size_t MEMORY_SLACK = 8192;  // KiB
constexpr std::size_t OTHER_SLACK = 2;

std::size_t entriesOf(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

Usage Usage::now() {
  std::ifstream statm("/proc/self/statm");
  std::size_t size = 0;
  std::size_t resident = 0;
  statm >> size >> resident;
  const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  return {resident * page / 1024, entriesOf("/proc/self/fd"), entriesOf("/proc/self/task")};
}

std::size_t UsageHistory::median(std::size_t Usage::*member, std::size_t quarter) const {
  std::vector<std::size_t> values;
  for (std::size_t i = m_samples.size() * quarter / 4; i < m_samples.size() * (quarter + 1) / 4; ++i) {
    values.push_back(m_samples[i].*member);
  }
  if (values.empty()) {
    return 0;
  }
  std::nth_element(
      values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
  return values[values.size() / 2];
}

std::vector<std::string> UsageHistory::growth() const {
  struct Resource {
    const char* name;
    std::size_t Usage::*member;
    std::size_t slack;
  };
  std::vector<std::string> grown;
  for (const Resource& resource :
       {Resource{"KiB of memory", &Usage::kibibytes, MEMORY_SLACK},
        {"descriptors", &Usage::descriptors, OTHER_SLACK},
        {"threads", &Usage::threads, OTHER_SLACK}}) {
    const std::size_t before = median(resource.member, 1);
    const std::size_t after = median(resource.member, 3);
    if (after > before + resource.slack) {
      grown.push_back(
          std::string(resource.name) + " grew from " + std::to_string(before) + " to " +
          std::to_string(after));
    }
  }
  return grown;
}

std::string UsageHistory::summary() const {
  char text[160];
  std::snprintf(
      text, sizeof text, "memory %zu -> %zu KiB, descriptors %zu -> %zu, threads %zu -> %zu",
      median(&Usage::kibibytes, 1), median(&Usage::kibibytes, 3), median(&Usage::descriptors, 1),
      median(&Usage::descriptors, 3), median(&Usage::threads, 1), median(&Usage::threads, 3));
  return text;
}

}  // namespace tvp::soak
