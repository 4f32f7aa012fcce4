// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSLogSwitch.h"

#include "oslib/KVSLog.h"

#include <mutex>
#include <set>
#include <string>

namespace {

/** @return a copy of the path that lasts until the process ends, since late threads may still read it. */
const char* lastingCopy(const char* path) {
  static std::mutex mutex;
  static auto& paths = *new std::set<std::string>;
  const std::lock_guard<std::mutex> lock(mutex);
  return paths.emplace(path).first->c_str();
}

}  // namespace

void KvsLogSwitch::watch(const char* path) {
  m_path = lastingCopy(path);
}

void KvsLogSwitch::stopWatching() {
  m_path = nullptr;
  m_fileSeen = false;
}

bool KvsLogSwitch::isOff() const {
  const char* path = m_path.load();
  return path != nullptr && !m_fileSeen && !m_lockKept && KvsFileExists(path, nullptr) == 0;
}

bool KvsLogSwitch::look(const char* path, std::uint64_t& size) {
  m_fileSeen = KvsFileExists(path, &size) != 0;
  return m_fileSeen;
}
