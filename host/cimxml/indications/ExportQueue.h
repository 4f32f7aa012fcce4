// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_EXPORTQUEUE_H
#define HOST_CIMXML_INDICATIONS_EXPORTQUEUE_H

#include "host/cimxml/indications/Destination.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tvp::host::cimxml {

/** How exports are repeated and what is kept of them. */
struct DeliveryOptions {
  std::size_t waiting = 1000;                  ///< exports of one destination; then the oldest is dropped
  std::chrono::milliseconds firstPause{1000};  ///< after a failure; each further one is twice as long
  std::chrono::milliseconds longestPause{60000};
  std::chrono::milliseconds patience{600000};  ///< then an export that still fails is dropped
  ExportAttempt attempt;
};

/**
 * The exports that wait for one destination, with the thread that makes them one after the other, in order.
 * An export that fails is repeated, with growing pauses, until it is too old. A listener that takes an export
 * and goes away before it answers gets it again. Thread-safe.
 */
class ExportQueue {
public:
  /** @param log receives a line for each export that was dropped; called by several threads */
  ExportQueue(
      const std::string& url, const DeliveryOptions& options, std::function<void(const std::string&)> log);
  /** Stops the queue; what still waits is dropped without a line. */
  ~ExportQueue();
  ExportQueue(const ExportQueue&) = delete;
  ExportQueue& operator=(const ExportQueue&) = delete;

  /** Queues a message; never waits. */
  void add(std::string message);

private:
  struct Waiting {
    std::string message;
    std::chrono::steady_clock::time_point end;  ///< of the patience
  };

  void run();
  /** Makes the export at the front until it is taken or dropped. */
  void exportFirst(std::unique_lock<std::mutex>& lock);
  std::string attempt(const std::string& message);
  std::size_t dropOld();
  void logDropped(std::size_t count, const std::string& reason) const;

  const std::string m_url;
  const Destination m_destination;
  const DeliveryOptions m_options;
  const std::function<void(const std::string&)> m_log;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<Waiting> m_waiting;
  bool m_exporting = false;  ///< the front is being exported
  bool m_stopping = false;
  std::chrono::milliseconds m_pause;  ///< after the next failure
  std::thread m_thread;
};

}  // namespace tvp::host::cimxml

#endif
