// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_THREADS_H
#define TESTS_SUPPORT_THREADS_H

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

namespace tvp::test {

/** Waits until a condition holds, two minutes at most. @return whether it holds */
template <typename Condition>
bool waitFor(Condition condition) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(2);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) {
      return false;
    }
    std::this_thread::yield();
  }
  return true;
}

/** The number of the calling thread, for isAsleep. */
inline pid_t threadNumber() {
  return static_cast<pid_t>(::syscall(SYS_gettid));
}

/** Whether a thread of this process sleeps, as one does that waits for a lock. */
inline bool isAsleep(pid_t thread) {
  std::ifstream stream("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string status;
  std::getline(stream, status);
  const std::size_t name = status.rfind(") ");
  return name != std::string::npos && status.compare(name + 2, 1, "S") == 0;
}

/** Whether all threads of this process but the calling one sleep. */
inline bool allOthersAreAsleep() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const auto thread = static_cast<pid_t>(std::atoi(entry.path().filename().c_str()));
    if (thread != threadNumber() && !isAsleep(thread)) {
      return false;
    }
  }
  return true;
}

/**
 * While one lives, the other threads of this process do not sleep: the listener goes from round to round at
 * once, and ends at once when it is stopped.
 */
class NoSleep {
public:
  NoSleep() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    ::sigaction(SIGUSR1, &action, nullptr);
    m_thread = std::thread([this] { interrupt(); });
  }
  ~NoSleep() {
    {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_ended = true;
    }
    m_end.notify_one();
    m_thread.join();
  }
  NoSleep(const NoSleep&) = delete;
  NoSleep& operator=(const NoSleep&) = delete;

private:
  void interrupt() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_end.wait_for(lock, std::chrono::milliseconds(2), [this] { return m_ended; })) {
      for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        const auto thread = static_cast<pid_t>(std::atoi(entry.path().filename().c_str()));
        if (thread != threadNumber()) {
          ::syscall(SYS_tgkill, ::getpid(), thread, SIGUSR1);
        }
      }
    }
  }

  std::mutex m_mutex;
  std::condition_variable m_end;
  bool m_ended = false;
  std::thread m_thread;
};

}  // namespace tvp::test

#endif
