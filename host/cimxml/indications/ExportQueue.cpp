// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/ExportQueue.h"

#include <algorithm>
#include <utility>

namespace tvp::host::cimxml {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

ExportQueue::ExportQueue(
    const std::string& url, const DeliveryOptions& options, std::function<void(const std::string&)> log)
    : m_url(url), m_destination(Destination::parse(url)), m_options(options), m_log(std::move(log)),
      m_pause(options.firstPause), m_thread([this] { run(); }) {}

ExportQueue::~ExportQueue() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stopping = true;
  }
  m_changed.notify_all();
  m_thread.join();
}

void ExportQueue::add(std::string message) {
  bool dropped = false;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    // The one that is being exported may already be the listener's.
    const std::size_t first = m_exporting ? 1 : 0;
    if (m_waiting.size() > first && m_waiting.size() >= m_options.waiting + first) {
      m_waiting.erase(m_waiting.begin() + static_cast<std::ptrdiff_t>(first));
      dropped = true;
    }
    m_waiting.push_back({std::move(message), Clock::now() + m_options.patience});
  }
  m_changed.notify_all();
  if (dropped) {
    logDropped(1, std::to_string(m_options.waiting) + " newer ones are waiting for it");
  }
}

void ExportQueue::run() {
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    m_changed.wait(lock, [this] { return m_stopping || !m_waiting.empty(); });
    if (m_stopping) {
      return;
    }
    exportFirst(lock);
  }
}

void ExportQueue::exportFirst(std::unique_lock<std::mutex>& lock) {
  const std::string message = m_waiting.front().message;
  m_exporting = true;
  lock.unlock();
  const std::string failure = attempt(message);
  lock.lock();
  m_exporting = false;
  if (failure.empty()) {
    m_waiting.pop_front();
    m_pause = m_options.firstPause;
    return;
  }
  if (m_stopping) {
    return;
  }
  const std::size_t dropped = dropOld();
  lock.unlock();
  logDropped(dropped, failure);
  lock.lock();
  m_changed.wait_for(lock, m_pause, [this] { return m_stopping; });
  m_pause = std::min(2 * m_pause, m_options.longestPause);
}

/** @return empty if the listener has the message, else why not */
std::string ExportQueue::attempt(const std::string& message) {
  try {
    return postExport(m_destination, message, m_options.attempt, [this] {
      const std::lock_guard<std::mutex> glance(m_mutex);
      return m_stopping;
    });
  } catch (const std::exception& error) {
    return error.what();  // memory or threads are exhausted, which passes
  }
}

/** Drops what will be too old at the next attempt. @return how many */
std::size_t ExportQueue::dropOld() {
  const Clock::time_point next = Clock::now() + m_pause;
  std::size_t dropped = 0;
  for (; !m_waiting.empty() && m_waiting.front().end < next; ++dropped) {
    m_waiting.pop_front();
  }
  return dropped;
}

void ExportQueue::logDropped(std::size_t count, const std::string& reason) const {
  for (std::size_t i = 0; m_log && i < count; ++i) {
    m_log("an indication for " + m_url + " was dropped: " + reason);
  }
}

}  // namespace tvp::host::cimxml
