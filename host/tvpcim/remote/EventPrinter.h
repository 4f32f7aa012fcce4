// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_EVENTPRINTER_H
#define HOST_TVPCIM_REMOTE_EVENTPRINTER_H

#include "host/tvpcim/Tool.h"

#include <CLI/CLI.hpp>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace tvp::host::tvpcim {

/** When printing ends, besides a signal. */
struct EventLimits {
  std::uint64_t count = 0;    ///< after so many indications; 0: never
  std::uint64_t seconds = 0;  ///< after this time; 0: never
};

/** Adds the options --count and --seconds to a verb. The limits must outlive the command line. */
void addLimitOptions(CLI::App& verb, EventLimits& limits);

/** Prints indications as they arrive, in the output format that was asked for. The tool must outlive it. */
class EventPrinter {
public:
  /** @param ownTimes the events are of this machine, so that their local times have its offset */
  EventPrinter(Tool& tool, const EventLimits& limits, bool ownTimes);
  ~EventPrinter();
  EventPrinter(const EventPrinter&) = delete;
  EventPrinter& operator=(const EventPrinter&) = delete;

  /** Prints one indication, unless all that were asked for are printed. Any thread. */
  CMPIrc receive(const Instance& indication);
  /** Waits for a signal, the time or the last of the indications. @param signals file of a SignalReader */
  void waitForEnd(int signals) const;
  /** @throws OperationError when an indication could not be printed */
  void check() const;

private:
  Tool& m_tool;
  const EventLimits m_limits;
  const bool m_ownTimes;
  const int m_wake;    ///< an eventfd that receive() raises at the end
  std::mutex m_mutex;  ///< guards standard output and m_received
  std::uint64_t m_received = 0;
  std::atomic<bool> m_outputFailed{false};
};

}  // namespace tvp::host::tvpcim

#endif
