// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/Operation.h"

#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Refusal.h"

#include <new>

namespace voltvk {

void requirePresence(State& state, bool adapterToo) {
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  require(
      !snapshot->hasFault(FaultKind::DriverAbsent), TVK_NO_DRIVER,
      "the driver is switched off by an injected fault; "
      "switch it on with `voltvkctl fault clear driver-absent`");
  require(
      !adapterToo || !snapshot->hasFault(FaultKind::AdapterAbsent), TVK_NO_ADAPTER,
      "the adapter is switched off by an injected fault; "
      "switch it on with `voltvkctl fault clear adapter-absent`");
}

Ret Operation::run(State& state) const {
  const auto until = State::Clock::now() + BUSY_TIMEOUT;
  try {
    requirePresence(state, onAdapter);
    Faults::apply(state, name);
    work(state);
    return Ret();
  } catch (const InjectedFault& fault) {
    report(state, TVK_OK, fault.what(), until);
    throw;
  } catch (const Refusal& refusal) {
    return refuse(state, refusal.status(), refusal.what(), until);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    return refuse(state, TVK_INTERNAL, exception.what(), until);
  }
}

Ret Operation::refuse(State& state, std::uint32_t status, const char* detail, TimePoint until) const {
  if (status != TVK_NO_DRIVER) {
    report(state, status, detail, until);
  }
  return Ret(status, detail);
}

void Operation::report(State& state, std::uint32_t status, const char* detail, TimePoint until) const {
  try {
    if (reportFailure) {
      state.change(reportFailure, until);  // not another wait after one that was in vain
    }
  } catch (const std::exception&) {
    // The caller learns of the failure from the status; the event that would inform others is lost.
  }
  LastRefusal::keep(state, name, status, detail);
}

}  // namespace voltvk
