// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LIFE_LISTENERSLEEP_H
#define TESTS_LIFE_LISTENERSLEEP_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace tvp::test {

/**
 * The sleep between two rounds of the provider's listener. This program defines sleep(), which stands in for
 * that of the C library, so that a round comes exactly when the test asks for one. Thread-safe.
 */
class ListenerSleep {
public:
  /** Never destroyed: the listener may sleep until the process ends. */
  static ListenerSleep& instance();

  /** What sleep() does: returns when it is woken, whatever the time asked for, in seconds. @return 0 */
  unsigned int sleep(unsigned int seconds);

  /** @return false when nobody has gone to sleep within a minute */
  bool waitUntilAsleep();
  /** The time that the sleeper asked for, in seconds. */
  unsigned int secondsAskedFor();
  void wake();
  /** Wakes the sleeper as soon as something holds, which its own thread looks for; at the latest, as always,
   *  after the time asked for. */
  void wakeWhen(std::function<bool()> condition);

private:
  using Clock = std::chrono::steady_clock;

  bool mayWake() const;

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
