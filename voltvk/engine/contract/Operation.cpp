// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/Operation.h"

#include "voltvk/engine/rules/Refusal.h"
#include "voltvk/engine/state/State.h"

namespace voltvk {

void requirePresence(State& state, bool adapterToo) {
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  if (snapshot->hasFault(FaultKind::DriverAbsent)) {
    throw Refusal(
        TVK_NO_DRIVER, "the driver is switched off by an injected fault; "
                       "switch it on with `voltvkctl fault clear driver-absent`");
  }
  require(!adapterToo || !snapshot->hasFault(FaultKind::AdapterAbsent), TVK_NO_ADAPTER);
}

std::uint32_t Operation::attempt(State& state) const {
  try {
    requirePresence(state, onAdapter);
    const std::uint32_t injected = Faults::apply(state, name);
    if (injected == TVK_OK) {
      work(state);
    }
    return injected;
  } catch (const InjectedFault&) {
    throw;
  } catch (const Refusal& refusal) {
    return refusal.status();
  } catch (const std::exception&) {
    return TVK_INTERNAL;
  }
}

Ret Operation::run(State& state) const {
  try {
    const std::uint32_t status = attempt(state);
    if (status != TVK_OK && status != TVK_NO_DRIVER) {
      tell(state);
    }
    return Ret(status);
  } catch (const InjectedFault&) {
    tell(state);
    throw;
  }
}

void Operation::tell(State& state) const {
  if (!tellFailure) {
    return;
  }
  try {
    state.change(tellFailure);
  } catch (const std::exception&) {
    // The caller learns of the failure from the status; the event that would tell others is lost.
  }
}

}  // namespace voltvk
