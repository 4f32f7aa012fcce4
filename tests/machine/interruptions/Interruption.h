// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_MACHINE_INTERRUPTIONS_INTERRUPTION_H
#define TESTS_MACHINE_INTERRUPTIONS_INTERRUPTION_H

#include <functional>
#include <string>
#include <vector>

namespace tvp::test {

/** The steps of a change: what the volume manager was called for, and how often the state was synced. */
struct Steps {
  std::vector<std::string> calls;    ///< the verbs of all calls
  std::vector<std::string> changes;  ///< the verbs of the calls that change something
  std::vector<std::string> reports;  ///< those of the others
  std::vector<std::string> syncs;    ///< "fdatasync" or "fsync"
};

/** What happens to a change at one of its steps. */
struct Interruption {
  /** As in the script "lvm" beside this file; "kill-sync" and "power-sync" are for a write to the state. */
  std::string kind;
  unsigned int step = 0;  ///< from 1 on, among the steps of its kind

  bool cutsPower() const { return kind.compare(0, 5, "power") == 0; }
  bool kills() const { return kind.compare(0, 4, "kill") == 0; }
  /** The steps that this kind can happen to. */
  const std::vector<std::string>& stepsOf(const Steps& steps) const;
};

/** How a change ended. */
struct Ending {
  bool wasReached = false;  ///< the interruption took place
  bool wasKilled = false;
  std::string refusal;  ///< why the change was refused; empty if it was not
};

/**
 * Runs a change in a process of its own, and interrupts it. Does not return from a power cut. No state may be
 * open in this process.
 */
Ending runInterrupted(const std::function<void()>& change, const Interruption& interruption);

/** Runs a change in a process of its own and finds its steps. @throws std::runtime_error if it is refused */
Steps findSteps(const std::function<void()>& change);

}  // namespace tvp::test

#endif
