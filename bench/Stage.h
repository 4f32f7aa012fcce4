// SPDX-License-Identifier: Apache-2.0
#ifndef BENCH_STAGE_H
#define BENCH_STAGE_H

#include "host/provider/Provider.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench {

/** A provider that is measured, with a broker of its own. */
class Subject {
public:
  /** Which of the built modules: the provider, the same with the entries of PollEntry.cpp, or the baseline.
   */
  enum class Kind { Product, PollingProduct, Baseline };

  /** Loads the module and creates its interfaces. @throws tvp::host::ProviderLoadError, MofError */
  explicit Subject(Kind kind);

  tvp::host::Broker& broker() { return m_broker; }
  tvp::host::Provider& provider() { return *m_provider; }
  /** Subscribes to indications; they are counted. */
  void subscribe();
  std::uint64_t indications() const { return m_indications.load(); }
  /** Fetches and delivers new events on a thread of its own, as the listener does. @return seconds it took */
  double pollOnce();

  /** @return seconds that a call takes, together with the log lines that are added to it */
  double time(const std::function<void()>& call);
  /** Adds to every timed call what as many log lines cost at least; 0 at first. */
  void addLogLines(std::uint64_t lines) { m_addedLines = lines; }
  /** How often the last timed call looked at the log, once for each line; only of PollingProduct. */
  std::uint64_t looksOfLastCall() const { return m_looksOfLastCall; }

private:
  tvp::host::Broker m_broker;
  std::unique_ptr<tvp::host::Provider> m_provider;
  void (*m_pollOnce)() = nullptr;
  std::uint64_t (*m_looks)() = nullptr;
  std::uint64_t m_addedLines = 0;
  std::atomic<std::uint64_t> m_looksOfLastCall{0};
  std::atomic<std::uint64_t> m_indications{0};
};

/** What a storage state holds, such as 8 pools; the first word of its name tells the sort. */
struct Scenario {
  std::string sort;  ///< "drives", "pools" or "volumes"
  std::size_t count;

  /** @throws std::invalid_argument unless the name is like "pools-8" */
  static Scenario named(const std::string& name);
};

/** @throws std::runtime_error unless the environment gives this process a state and a log of its own. */
void requireScratch();

/** Fills the storage state of this process, $VOLTVK_STATE. @throws std::runtime_error when a step fails */
void prepare(const Scenario& scenario);

/** Switches the log below $TVP_TEST_ROOT on or off, which is written while its file exists. */
void switchLog(bool on);
/** Pays what is promised for each log line: a look whether the log is there, and one line in it if it is. */
void payLogLines(std::uint64_t lines);
/** Empties the log before it reaches the size at which it would no longer be written. */
void keepLogSmall();

}  // namespace bench

#endif
