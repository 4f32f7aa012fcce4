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

/** A provider to be measured, with its own broker. */
class Subject {
public:
  /**
   * Which of the built modules: the provider, the provider with the entries of PollEntry.cpp, or the
   * baseline.
   */
  enum class Kind { Product, PollingProduct, Baseline };

  /** Loads the module and creates its interfaces. @throws tvp::host::ProviderLoadError, MofError */
  explicit Subject(Kind kind);

  tvp::host::Broker& broker() { return m_broker; }
  tvp::host::Provider& provider() { return *m_provider; }
  /** Subscribes to indications; they are counted. */
  void subscribe();
  std::uint64_t indications() const { return m_indications.load(); }
  /** Fetches and delivers new events on a separate thread, as the listener does. @return seconds it took */
  double pollOnce();

  /** @return seconds that a call takes, together with the log lines that are added to it */
  double time(const std::function<void()>& call);
  /** Adds the least cost of that many log lines to every timed call; initially 0. */
  void addLogLines(std::uint64_t lines) { m_addedLines = lines; }
  /** How often the last timed call checked for the log, once per line; only for PollingProduct. */
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

/** The contents of a storage state, such as 8 pools; the first word of its name gives the kind. */
struct Scenario {
  std::string sort;  ///< "drives", "pools" or "volumes"
  std::size_t count;

  /** @throws std::invalid_argument unless the name is like "pools-8" */
  static Scenario named(const std::string& name);
};

/** @throws std::runtime_error unless the environment gives this process its own state and log. */
void requireScratch();

/** Fills the storage state of this process, $VOLTVK_STATE. @throws std::runtime_error when a step fails */
void prepare(const Scenario& scenario);

/** Switches the log under $TVP_TEST_ROOT on or off; it is written while its file exists. */
void switchLog(bool on);
/** Does what each log line costs: checks whether the log exists, and writes one line to it if so. */
void payLogLines(std::uint64_t lines);
/** Empties the log before it reaches the size at which it would no longer be written. */
void keepLogSmall();

}  // namespace bench

#endif
