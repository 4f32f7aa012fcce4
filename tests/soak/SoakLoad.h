// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOAK_SOAKLOAD_H
#define TESTS_SOAK_SOAKLOAD_H

#include "host/provider/Provider.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <random>
#include <string>
#include <vector>

namespace tvp::soak {

/** What went wrong, for the summary. Thread-safe. */
class Findings {
public:
  /** Keeps the first hundred findings. */
  void add(const std::string& finding) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_findings.size() < 100) {
      m_findings.push_back(finding);
    }
  }
  std::vector<std::string> all() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_findings;
  }

private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_findings;
};

/** Random requests to a provider, or to a server of it. run() may run on several threads at once. */
class Load {
public:
  /** @param subscribing makes subscriptions of its own now and then; null where a server makes them */
  Load(const host::Schema& schema, Findings& findings, host::Provider* subscribing)
      : m_schema(schema), m_findings(findings), m_subscribing(subscribing) {}

  /** Makes requests until stop() is called. Two runs with one seed make the same requests. */
  void run(host::Operations& operations, unsigned int seed);
  void stop() { m_stop = true; }

  std::uint64_t done() const { return m_done; }
  /** Requests that failed, as they should while the driver is absent. */
  std::uint64_t refused() const { return m_refused; }

  /** Checks that the capacity used in each pool is the sum of the extents of its volumes. */
  void checkCapacities(host::Operations& operations);

private:
  using Random = std::mt19937;

  void request(host::Operations& operations, Random& random);
  void changeConfiguration(host::Operations& operations, Random& random);
  void subscribe(Random& random);
  void note(const host::Outcome& outcome, const std::string& what);
  host::MethodOutcome
  call(host::Operations& operations, const std::string& method, const host::Arguments& arguments);
  /** The identifier of any pool or volume; now and then one that does not exist. */
  std::uint32_t
  anyId(host::Operations& operations, Random& random, const std::string& className, const std::string& key);

  const host::Schema& m_schema;
  Findings& m_findings;
  host::Provider* const m_subscribing;
  std::atomic<bool> m_stop{false};
  std::atomic<std::uint64_t> m_done{0};
  std::atomic<std::uint64_t> m_refused{0};
};

}  // namespace tvp::soak

#endif
