// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/Faults.h"

#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Connection.h"
#include "voltvk/engine/state/EventJournal.h"
#include "voltvk/engine/state/Refusal.h"
#include "voltvk/engine/state/SnapshotReader.h"
#include "voltvk/engine/state/Statement.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace voltvk {

namespace {

constexpr std::uint32_t MAX_DELAY_MILLISECONDS = 600000;

bool isAbsence(FaultKind kind) {
  return kind == FaultKind::DriverAbsent || kind == FaultKind::AdapterAbsent;
}

bool holdsForOneCall(FaultKind kind) {
  return kind == FaultKind::Fail || kind == FaultKind::Throw;
}

void check(const Fault& fault) {
  const std::vector<std::string>& names = Faults::operations();
  if (isAbsence(fault.kind)) {
    if (!fault.operation.empty()) {
      throw std::invalid_argument(std::string(faultKindName(fault.kind)) + " takes no operation");
    }
    return;
  }
  if (std::find(names.begin(), names.end(), fault.operation) == names.end()) {
    std::string known;
    for (const std::string& operation : names) {
      known += (known.empty() ? "" : ", ") + operation;
    }
    throw std::invalid_argument("there is no operation '" + fault.operation + "'; use one of: " + known);
  }
  if (fault.kind == FaultKind::Fail && fault.status == TVK_OK) {
    throw std::invalid_argument("status 0 is success; give the status that the call shall fail with");
  }
  if (fault.kind == FaultKind::Slow &&
      (fault.milliseconds == 0 || fault.milliseconds > MAX_DELAY_MILLISECONDS)) {
    throw std::invalid_argument("a slow operation takes 1 to 600000 milliseconds");
  }
}

/** Removes from the state the oldest one-call fault of an operation, if it is still there. */
std::optional<Fault> takeOne(State& state, const std::string& operation) {
  std::optional<Fault> taken;
  state.change([&](Connection& connection) {
    Statement row(
        connection,
        "DELETE FROM fault WHERE id = (SELECT min(id) FROM fault WHERE operation = ? AND kind IN (?, ?))"
        " RETURNING kind, status",
        operation, FaultKind::Fail, FaultKind::Throw);
    while (row.step()) {
      taken = Fault{row.as<FaultKind>(0), operation, row.as<std::uint32_t>(1), 0};
    }
  });
  return taken;
}

}  // namespace

const char* faultKindName(FaultKind kind) {
  switch (kind) {
  case FaultKind::DriverAbsent:
    return "driver-absent";
  case FaultKind::AdapterAbsent:
    return "adapter-absent";
  case FaultKind::Fail:
    return "fail";
  case FaultKind::Throw:
    return "throw";
  case FaultKind::Slow:
    return "slow";
  }
  return "unknown";
}

std::string describeFault(const Fault& fault) {
  std::string text = faultKindName(fault.kind);
  if (!fault.operation.empty()) {
    text += " " + fault.operation;
  }
  if (fault.kind == FaultKind::Fail) {
    text += " with status " + std::to_string(fault.status);
  } else if (fault.kind == FaultKind::Slow) {
    text += " by " + std::to_string(fault.milliseconds) + " ms";
  }
  return text;
}

Faults::Faults() : Faults(State::forProcess()) {}

Faults::Faults(std::shared_ptr<State> state) : m_state(std::move(state)) {}

const std::vector<std::string>& Faults::operations() {
  // Not destroyed at exit, like the state itself.
  static const auto& names = *new std::vector<std::string>{
#define TVK_OPERATION(name) operations::name,
#include "voltvk/engine/contract/Operations.def"
  };
  return names;
}

void Faults::set(const Fault& fault) {
  check(fault);
  m_state->change([&](Connection& connection) {
    if (!holdsForOneCall(fault.kind)) {
      Statement(connection, "DELETE FROM fault WHERE kind = ? AND operation = ?", fault.kind, fault.operation)
          .run();
    }
    Statement(
        connection, "INSERT INTO fault(kind, operation, status, milliseconds) VALUES(?, ?, ?, ?)", fault.kind,
        fault.operation, fault.status, fault.milliseconds)
        .run();
    EventJournal(connection)
        .append(TVK_EVENT_FAULT_SET, TVK_EVENT_WARNING, "A fault was injected: {}", {describeFault(fault)});
  });
}

std::size_t Faults::clear(std::optional<FaultKind> kind, const std::string& operation) {
  std::size_t cleared = 0;
  m_state->change([&](Connection& connection) {
    cleared = 0;
    for (const Fault& fault : SnapshotReader(connection).faults()) {
      if ((kind && fault.kind != *kind) || (!operation.empty() && fault.operation != operation)) {
        continue;
      }
      Statement(
          connection,
          "DELETE FROM fault WHERE id = (SELECT min(id) FROM fault WHERE kind = ? AND operation = ?)",
          fault.kind, fault.operation)
          .run();
      EventJournal(connection)
          .append(
              TVK_EVENT_FAULT_CLEARED, TVK_EVENT_INFORMATION, "An injected fault was cleared: {}",
              {describeFault(fault)});
      ++cleared;
    }
  });
  return cleared;
}

std::vector<Fault> Faults::list() {
  std::vector<Fault> faults;
  m_state->read([&](Connection& connection) { faults = SnapshotReader(connection).faults(); });
  return faults;
}

void Faults::apply(State& state, const char* operation) {
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  bool mayEnd = false;
  for (const Fault& fault : snapshot->configuration().faults) {
    if (fault.operation != operation) {
      continue;
    }
    if (fault.kind == FaultKind::Slow) {
      std::this_thread::sleep_for(std::chrono::milliseconds(fault.milliseconds));
    } else {
      mayEnd = true;
    }
  }
  const std::optional<Fault> taken = mayEnd ? takeOne(state, operation) : std::nullopt;
  if (!taken) {
    return;
  }
  if (taken->kind == FaultKind::Throw) {
    throw InjectedFault(std::string("injected fault in ") + operation);
  }
  throw Refusal(
      static_cast<TvkStatus>(taken->status),
      "an injected fault has refused this call: " + describeFault(*taken));
}

}  // namespace voltvk
