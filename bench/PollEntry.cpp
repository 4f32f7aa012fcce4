// SPDX-License-Identifier: Apache-2.0
// Makes one round of the event listener callable, so that an event can be timed without its five seconds of
// sleep, and counts how often the provider looks whether its log is there.
#include "backend/TarvexProEventManager.h"

#include <atomic>
#include <cstdint>

#include <sys/stat.h>

namespace {

std::atomic<std::uint64_t> looks{0};

}  // namespace

extern "C" {
int __real_stat(const char* path, struct stat* status);

/** The linker substitutes this for stat (--wrap), which the provider calls only for its log. */
int __wrap_stat(const char* path, struct stat* status);
int __wrap_stat(const char* path, struct stat* status) {
  ++looks;
  return __real_stat(path, status);
}

__attribute__((visibility("default"))) std::uint64_t benchLooks();
std::uint64_t benchLooks() {
  return looks;
}

__attribute__((visibility("default"))) void benchPollOnce();
void benchPollOnce() {
  if (auto* manager = tvp::cim::fwf::TvproEventManager::getInstance()) {
    manager->pollOnce();
  }
}
}
