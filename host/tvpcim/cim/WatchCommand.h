// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_CIM_WATCHCOMMAND_H
#define HOST_TVPCIM_CIM_WATCHCOMMAND_H

#include "host/tvpcim/CommandGroup.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace tvp::host::tvpcim {

/**
 * The indications of the provider as they arrive: watch. Subscribes as an object manager does and, when it
 * is told to end, takes the subscription back and cleans the provider up.
 */
class WatchCommand : public CommandGroup {
public:
  using CommandGroup::CommandGroup;
  ~WatchCommand() override;
  void addTo(CLI::App& app) override;

private:
  void watch();
  void subscribe();
  void unsubscribe();
  /** Waits for a signal, the time or the last of the indications. */
  void waitForEnd(int signals) const;
  /** Prints one indication. Called on the provider's thread. */
  CMPIrc receive(const Instance& indication);

  std::string m_className = "TVP_CIMIndication";
  std::uint64_t m_count = 0;    ///< end after so many; 0: never
  std::uint64_t m_seconds = 0;  ///< end after this time; 0: never

  std::mutex m_mutex;  ///< guards standard output and m_received
  std::uint64_t m_received = 0;
  std::atomic<bool> m_outputFailed{false};
  int m_wake = -1;  ///< an eventfd that the provider's thread raises
};

}  // namespace tvp::host::tvpcim

#endif
