// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/IsoTime.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Refusal.h"

#include <CLI/CLI.hpp>

#include <cstring>

namespace voltvk::ctl {

std::shared_ptr<State> Context::state() const {
  std::shared_ptr<State> state = State::forProcess();
  const std::string error = state->openError();
  if (!error.empty()) {
    throw Refusal(TVK_NO_DRIVER, error);
  }
  return state;
}

namespace {

std::size_t countOf(const Snapshot& snapshot, const char* type) {
  std::size_t count = 0;
  for (const RaidObject* object : snapshot.objects()) {
    count += std::strcmp(object->getTypeName(), type) == 0 ? 1 : 0;
  }
  return count;
}

Json describe(const LastRefusal& refusal) {
  const bool hasStatus = refusal.status != TVK_OK;
  return {
      {"time", isoTime(refusal.time)},
      {"operation", refusal.operation},
      {"status", hasStatus ? Json(refusal.status) : Json(nullptr)},
      {"text", hasStatus ? tvkStatusText(refusal.status) : "An exception ended the operation"},
      {"detail", refusal.detail}};
}

/** What is wrong with the drives of pools, and how many drives there is no room for; empty if nothing is. */
std::string troubleIn(const Snapshot& snapshot) {
  std::vector<std::string> troubles;
  for (const RaidObject* object : snapshot.objects()) {
    const auto* drive = dynamic_cast<const LogicalDevice*>(object);
    if (drive != nullptr && *drive->getTrouble() != '\0') {
      troubles.emplace_back(drive->getTrouble());
    }
  }
  const std::size_t leftOut = snapshot.configuration().drivesLeftOut;
  if (leftOut > 0) {
    troubles.push_back(counted(leftOut, "drive") + " of the machine left out, since there are too many");
  }
  return enumerated(troubles);
}

/** The refusal on one line: time, operation, text and number of the status, detail. */
std::string textOf(const Json& refusal) {
  std::string text = refusal.at("time").get<std::string>() + " " +
                     refusal.at("operation").get<std::string>() + ": " +
                     refusal.at("text").get<std::string>();
  if (!refusal.at("status").is_null()) {
    text += " (" + refusal.at("status").dump() + ")";
  }
  const auto detail = refusal.at("detail").get<std::string>();
  return detail.empty() ? text : text + ": " + detail;
}

Json describe(State& state) {
  Json status = {{"state", state.path()}, {"driver", "available"}, {"reason", nullptr}};
  const std::string error = state.openError();
  if (!error.empty()) {
    status["driver"] = "not available";
    status["reason"] = error;
    return status;
  }
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  if (snapshot->hasFault(FaultKind::DriverAbsent)) {
    status["driver"] = "not available";
    status["reason"] = "an injected fault; clear it with `voltvkctl fault clear driver-absent`";
  }
  status["state"] =
      state.path();  // once more: with the first use of the file its directory's links are resolved
  status["drives"] = countOf(*snapshot, "LogicalDevice");
  status["pools"] = countOf(*snapshot, "VirtualPool");
  status["volumes"] = countOf(*snapshot, "VirtualVolume");
  status["faults"] = snapshot->configuration().faults.size();
  status["policy"] = snapshot->configuration().policyRunning ? "running" : "stopped";
  const std::string trouble = troubleIn(*snapshot);
  status["trouble"] = trouble.empty() ? Json(nullptr) : Json(trouble);
  status["refusal"] = nullptr;
  state.read([&](Connection& connection) {
    if (const std::optional<LastRefusal> refusal = LastRefusal::read(connection)) {
      status["refusal"] = describe(*refusal);
    }
  });
  return status;
}

}  // namespace

void addStatusCommand(CLI::App& app, Context& context) {
  CLI::App* status = app.add_subcommand("status", "Show whether the driver is available, and what there is");
  status->callback([&context] {
    const Json document = describe(*State::forProcess());
    std::string text;
    for (const auto& [name, value] : document.items()) {
      if (!value.is_null()) {
        text += text.empty() ? "" : "\n";
        text += name;
        text += ':';
        text.append(9 - name.size(), ' ');
        text += value.is_string()   ? value.get<std::string>()
                : value.is_object() ? textOf(value)
                                    : value.dump();
      }
    }
    context.output.write(document, text);
  });
}

}  // namespace voltvk::ctl
