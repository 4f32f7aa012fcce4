// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_OPERATION_H
#define VOLTVK_ENGINE_CONTRACT_OPERATION_H

#include "voltvk/Ret.h"

#include <chrono>
#include <functional>

namespace voltvk {

class Connection;
class State;

/** A call of the interface; run does what all calls have in common. */
struct Operation {
  const char* name;  ///< one of namespace operations
  bool onAdapter;    ///< needs the adapter
  std::function<void(State&)> work;
  /** Appends the event that reports a failure, in its own transaction; may be empty. */
  std::function<void(Connection&)> reportFailure = {};

  /**
   * Applies the injected faults and runs the work. A failure is reported by its event and kept as the state's
   * last refusal, both only if the state can be written; a failure due to a missing driver is neither
   * reported nor kept.
   * @return success, or the status and the detail with which the work was refused
   * @throws std::runtime_error only if an injected fault says so; std::bad_alloc
   */
  Ret run(State& state) const;

private:
  using TimePoint = std::chrono::steady_clock::time_point;

  Ret refuse(State& state, std::uint32_t status, const char* detail, TimePoint until) const;
  void report(State& state, std::uint32_t status, const char* detail, TimePoint until) const;
};

/** @throws Refusal TVK_NO_DRIVER or TVK_NO_ADAPTER if a fault has switched one off. */
void requirePresence(State& state, bool adapterToo);

}  // namespace voltvk

#endif
