// SPDX-License-Identifier: Apache-2.0
#include "life/ListenerSleep.h"

#include <utility>

#include <unistd.h>

extern "C" __attribute__((visibility("default"))) unsigned int sleep(unsigned int seconds) {
  return tvp::test::ListenerSleep::instance().sleep(seconds);
}

namespace tvp::test {

ListenerSleep& ListenerSleep::instance() {
  static auto& only = *new ListenerSleep;
  return only;
}

unsigned int ListenerSleep::sleep(unsigned int seconds) {
  constexpr std::chrono::milliseconds BETWEEN_LOOKS(2);
  std::unique_lock<std::mutex> lock(m_mutex);
  m_asleep = true;
  m_seconds = seconds;
  m_changed.notify_all();
  while (!mayWake()) {
    m_changed.wait_for(lock, BETWEEN_LOOKS);
  }
  m_asleep = false;
  m_woken = false;
  return 0;
}

bool ListenerSleep::mayWake() const {
  return m_woken || (m_condition && (m_condition() || Clock::now() >= m_latest));
}

bool ListenerSleep::waitUntilAsleep() {
  std::unique_lock<std::mutex> lock(m_mutex);
  return m_changed.wait_for(lock, std::chrono::minutes(1), [this] { return m_asleep; });
}

unsigned int ListenerSleep::secondsAskedFor() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_seconds;
}

void ListenerSleep::wake() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_asleep = false;
  m_woken = true;
  m_changed.notify_all();
}

void ListenerSleep::wakeWhen(std::function<bool()> condition) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_condition = std::move(condition);
  m_latest = Clock::now() + std::chrono::seconds(m_seconds);
}

}  // namespace tvp::test
