// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/CacheCleaner.h"

#include "voltvk/engine/state/Refusal.h"

#include <algorithm>
#include <chrono>
#include <sstream>
#include <thread>
#include <vector>

namespace voltvk {

namespace {

constexpr std::chrono::seconds BETWEEN_LOOKS{1};

}  // namespace

std::string withCleaner(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) {
    words.push_back(word);
  }
  // START LENGTH cache METADATA DATA ORIGIN BLOCK #FEATURES FEATURE... POLICY #ARGUMENTS ARGUMENT...
  constexpr std::size_t KIND = 2;
  constexpr std::size_t FEATURE_COUNT = 7;
  if (words.size() <= FEATURE_COUNT || words[KIND] != "cache") {
    return {};
  }
  const std::size_t policy = FEATURE_COUNT + 1 + std::strtoul(words[FEATURE_COUNT].c_str(), nullptr, 10);
  if (policy >= words.size()) {
    return {};
  }
  std::string changed;
  for (std::size_t i = 0; i < policy; ++i) {
    changed += words[i] + " ";
  }
  return changed + "cleaner 0";
}

CacheCleaner::CacheCleaner(
    const LvmCommand& command, const DeviceMapper& mapper, const std::string& group,
    const std::string& volume)
    : m_command(command), m_mapper(mapper), m_volume(group + "/" + volume),
      m_device(DeviceMapper::deviceName(group, volume)) {}

CacheStatus CacheCleaner::status() const {
  const std::optional<CacheStatus> status = m_mapper.cacheStatus(m_device);
  require(status && !status->hasFailed, TVK_BACKING_FAILED, [&] {
    return "the cache of " + m_volume + (status ? " has failed" : " is not active") +
           ", so it cannot be written back; see `voltvkctl check`";
  });
  return *status;
}

void CacheCleaner::loadCleaner() {
  const LvmCommand dmsetup("dmsetup");
  const std::string task = "write back the cache of " + m_volume;
  const std::string table = withCleaner(dmsetup.output(task, {"table", m_device}));
  require(!table.empty(), TVK_BACKING_FAILED, [&] {
    return m_volume + " is not a cache; see `voltvkctl check`";
  });
  dmsetup.run(task, {"load", m_device, "--table", table});
  dmsetup.run(task, {"resume", m_device});
}

std::uint64_t CacheCleaner::clean(const FlushProgress& progress) {
  const std::uint64_t before = status().counters.dirtyBlocks;
  m_command.run("write back the cache of " + m_volume, {"lvchange", "--cachepolicy", "cleaner", m_volume});
  // The volume manager (seen with 2.03.16) does not pass the policy of such a cache to the kernel.
  if (status().policy != "cleaner") {
    loadCleaner();
  }
  std::uint64_t left = status().counters.dirtyBlocks;
  while (left > 0 && (!progress || progress(left))) {
    std::this_thread::sleep_for(BETWEEN_LOOKS);
    left = status().counters.dirtyBlocks;
  }
  restore();
  return before - std::min(before, left);
}

void CacheCleaner::restore() {
  const std::string task = "let the cache of " + m_volume + " work as usual";
  m_command.run(task, {"lvchange", "--cachepolicy", "smq", m_volume});
  const std::optional<CacheStatus> now = m_mapper.cacheStatus(m_device);
  if (now && now->policy == "cleaner") {
    m_command.run(task, {"lvchange", "--refresh", m_volume});
  }
}

}  // namespace voltvk
