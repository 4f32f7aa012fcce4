// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_LISTENERSLEEP_H
#define TESTS_LIFE_LISTENERSLEEP_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <utility>

namespace tvp::test {

/**
 * The sleep between two rounds of the provider's listener. This program defines sleep(), which stands in for
 * that of the C library, so that a round comes exactly when the test asks for one. Thread-safe.
 */
class ListenerSleep {
public:
  /** Never destroyed: the listener may sleep until the process ends. */
  static ListenerSleep& instance() {
    static auto& only = *new ListenerSleep;
    return only;
  }

  /** What sleep() does: returns when it is woken, whatever the time asked for, in seconds. @return 0 */
  unsigned int sleep(unsigned int seconds) {
    constexpr std::chrono::milliseconds BETWEEN_LOOKS(2);
    std::unique_lock<std::mutex> lock(m_mutex);
    m_asleep = true;
    m_seconds = seconds;
    m_changed.notify_all();
    while (!m_woken && !(m_condition && (m_condition() || Clock::now() >= m_latest))) {
      m_changed.wait_for(lock, BETWEEN_LOOKS);
    }
    m_asleep = false;
    m_woken = false;
    return 0;
  }

  /** @return the seconds that the sleeper asked for, 0 when nobody has gone to sleep within two minutes */
  unsigned int waitUntilAsleep() {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::minutes(2), [this] { return m_asleep; }) ? m_seconds : 0;
  }
  void wake() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_asleep = false;
    m_woken = true;
    m_changed.notify_all();
  }
  /** Wakes the sleeper as soon as something holds, which its own thread looks for; at the latest, as always,
   *  after the time asked for. */
  void wakeWhen(std::function<bool()> condition) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_condition = std::move(condition);
    m_latest = Clock::now() + std::chrono::seconds(m_seconds);
  }

private:
  using Clock = std::chrono::steady_clock;

  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_asleep = false;
  bool m_woken = false;
  unsigned int m_seconds = 0;
  std::function<bool()> m_condition;
  Clock::time_point m_latest;
};

}  // namespace tvp::test

#endif
