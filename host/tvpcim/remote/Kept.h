// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_KEPT_H
#define HOST_TVPCIM_REMOTE_KEPT_H

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace tvp::host::tvpcim {

/**
 * Something that takes work to make and that many want: made when it is asked for, by one thread at a time,
 * and no more often than once in an interval. While it is made, others get the one before. Thread-safe.
 */
template <typename Content>
class Kept {
public:
  using Clock = std::chrono::steady_clock;

  /** How much older than the interval that may be which others get meanwhile. */
  static constexpr std::chrono::seconds OLDEST{5};

  /** @param make called on the thread of whoever asks; what it throws is thrown there */
  Kept(std::chrono::milliseconds interval, std::function<Content()> make)
      : m_interval(interval), m_make(std::move(make)) {}

  std::shared_ptr<const Content> get() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_made.wait(lock, [this] { return !m_making || Clock::now() < m_until + OLDEST; });
    if (m_making || Clock::now() < m_until) {
      return m_content;
    }
    m_making = true;
    lock.unlock();
    std::shared_ptr<const Content> made;
    try {
      made = std::make_shared<const Content>(m_make());
    } catch (...) {
      lock.lock();
      end();
      throw;
    }
    lock.lock();
    m_content = std::move(made);
    m_until = Clock::now() + m_interval;
    end();
    return m_content;
  }

private:
  void end() {
    m_making = false;
    m_made.notify_all();
  }

  const std::chrono::milliseconds m_interval;
  const std::function<Content()> m_make;
  std::mutex m_mutex;
  std::condition_variable m_made;
  bool m_making = false;
  std::shared_ptr<const Content> m_content;
  Clock::time_point m_until = Clock::time_point::min();  ///< that of no content is long over
};

}  // namespace tvp::host::tvpcim

#endif
