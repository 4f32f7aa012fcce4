// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_OPERATION_H
#define VOLTVK_ENGINE_CONTRACT_OPERATION_H

#include "voltvk/Ret.h"

#include <functional>

namespace voltvk {

class Connection;
class State;

/** A call of the interface: what all of them have in common is done by run. */
struct Operation {
  const char* name;  ///< as in Faults::operations
  bool onAdapter;    ///< needs the adapter
  std::function<void(State&)> work;
  /** Appends the event that tells of a failure, in a transaction of its own; may be empty. */
  std::function<void(Connection&)> tellFailure = {};

  /**
   * Applies the injected faults and runs the work.
   * @return what the work was refused with, or success
   * @throws std::runtime_error only when an injected fault says so
   */
  Ret run(State& state) const;

private:
  std::uint32_t attempt(State& state) const;
  void tell(State& state) const;
};

/** @throws Refusal TVK_NO_DRIVER or TVK_NO_ADAPTER when a fault has switched one off. */
void requirePresence(State& state, bool adapterToo);

}  // namespace voltvk

#endif
