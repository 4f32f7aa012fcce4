// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_REQUESTCOUNTERS_H
#define HOST_CIMXML_SERVER_REQUESTCOUNTERS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

namespace tvp::host::cimxml {

/** What a request asked for, as far as the server understood it. */
enum class Asked { Operation, Page, Nothing };

/** What a server has done since it started. */
struct ServerCounts {
  struct Requests {
    std::uint64_t count = 0;
    std::chrono::duration<double> time{0};  ///< from the first byte of a request to the last of its answer
  };
  /** By what was asked for and the HTTP status of the answer. */
  std::map<std::pair<Asked, int>, Requests> requests;
  std::uint64_t failedOperations = 0;  ///< answered with a status of CIM that is not success
  std::uint64_t lostAnswers = 0;       ///< that their clients did not take
  std::uint64_t refusedConnections = 0;
  std::size_t connections = 0;  ///< at the moment
};

/** Counts what a server does. Thread-safe. */
class RequestCounters {
public:
  /** What became of a request. */
  struct Request {
    Asked asked;
    int status;
    bool failed;  ///< as an operation of CIM
    bool taken;   ///< by the client
    std::chrono::duration<double> time;
  };

  void add(const Request& request) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ServerCounts::Requests& requests = m_counts.requests[{request.asked, request.status}];
    ++requests.count;
    requests.time += request.time;
    m_counts.failedOperations += request.failed ? 1 : 0;
    m_counts.lostAnswers += request.taken ? 0 : 1;
  }
  void refuseConnection() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_counts.refusedConnections;
  }
  void open() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    ++m_counts.connections;
  }
  void close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_counts.connections;
  }

  ServerCounts counts() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_counts;
  }

private:
  mutable std::mutex m_mutex;
  ServerCounts m_counts;
};

}  // namespace tvp::host::cimxml

#endif
