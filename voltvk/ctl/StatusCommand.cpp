// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/IsoTime.h"
#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/Findings.h"
#include "voltvk/engine/contract/LastRefusal.h"
#include "voltvk/engine/contract/Operation.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Refusal.h"

#include <CLI/CLI.hpp>

#include <cstdlib>

namespace voltvk::ctl {

std::shared_ptr<State> Context::anyState() const {
  if (isDryRun) {
    ::setenv("VOLTVK_DRY_RUN", "1", 1);
  }
  return State::forProcess();
}

std::shared_ptr<State> Context::state() const {
  std::shared_ptr<State> state = anyState();
  const std::string error = state->openError();
  if (!error.empty()) {
    throw Refusal(TVK_NO_DRIVER, error);
  }
  return state;
}

void Context::report(Json document, const std::string& text) const {
  const std::shared_ptr<State> current = state();
  if (!current->isDryRun()) {
    output.write(document, text);
    return;
  }
  const std::vector<std::string> steps = current->rehearsedSteps();
  std::string shown = "dry run, nothing was changed; otherwise:\n" + text;
  for (const std::string& step : steps) {
    shown += "\n- " + step;
  }
  document["dryRun"] = true;
  document["steps"] = steps;
  output.write(document, shown);
}

namespace {

/** The numbers of objects, as management clients see them: they are not shown internal pools. */
void count(const Snapshot& snapshot, Json& status) {
  std::size_t drives = 0;
  std::size_t pools = 0;
  std::size_t internalPools = 0;
  std::size_t volumes = 0;
  for (const RaidObject* object : snapshot.objects()) {
    const auto* pool = dynamic_cast<const VirtualPool*>(object);
    drives += dynamic_cast<const LogicalDevice*>(object) != nullptr ? 1 : 0;
    volumes += dynamic_cast<const VirtualVolume*>(object) != nullptr ? 1 : 0;
    if (pool != nullptr) {
      ++(pool->isInternal() ? internalPools : pools);
    }
  }
  status["drives"] = drives;
  status["pools"] = pools;
  status["internalPools"] = internalPools;
  status["volumes"] = volumes;
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

Json describe(const std::vector<Finding>& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
    list.push_back(
        {{"object", finding.object},
         {"kind", finding.kind},
         {"severity", finding.severity == Finding::Severity::Failed ? "failed" : "degraded"},
         {"cause", finding.cause},
         {"remedy", finding.remedy}});
  }
  return list;
}

/** The findings below each other, without that of the driver: the line "reason" has the same sentence. */
std::string textOf(const std::vector<Json>& findings) {
  std::string text;
  for (const Json& finding : findings) {
    if (finding.at("kind") == "driver") {
      continue;
    }
    text += text.empty() ? "" : "\n" + std::string(10, ' ');
    text += finding.at("object").get<std::string>() + ": " + finding.at("cause").get<std::string>() + "; " +
            finding.at("remedy").get<std::string>();
  }
  return text;
}

Json describe(State& state) {
  Json status = {{"state", state.path()}, {"driver", "available"}, {"reason", nullptr}};
  const std::string error = state.openError();
  if (!error.empty()) {
    status["driver"] = "not available";
    status["reason"] = error;
    status["findings"] = describe(findingsOf(state));
    return status;
  }
  const std::shared_ptr<const Snapshot> snapshot = state.snapshot();
  try {
    requirePresence(state, true);
  } catch (const Refusal& refusal) {
    status["driver"] = refusal.status() == TVK_NO_DRIVER ? "not available" : "without an adapter";
    status["reason"] = refusal.what();
  }
  status["state"] =
      state.path();  // once more: with the first use of the file its directory's links are resolved
  count(*snapshot, status);
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
  status["findings"] = describe(findingsOf(state));
  return status;
}

std::string textOf(const std::string& name, const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  return name == "refusal"    ? textOf(value)
         : name == "findings" ? textOf(value.get<std::vector<Json>>())
                              : value.dump();
}

}  // namespace

void addStatusCommand(CLI::App& app, Context& context) {
  CLI::App* status = app.add_subcommand("status", "Show whether the driver is available, and what there is");
  status->callback([&context] {
    const Json document = describe(*State::forProcess());
    std::string text;
    for (const auto& [name, value] : document.items()) {
      if (name == "internalPools") {
        text += value == 0 ? "" : " and " + value.dump() + " internal";
      } else if (const std::string shown = value.is_null() ? "" : textOf(name, value); !shown.empty()) {
        text += text.empty() ? "" : "\n";
        text += name;
        text += ':';
        text.append(9 - name.size(), ' ');
        text += shown;
      }
    }
    context.output.write(document, text);
    if (!document.at("reason").is_null()) {
      throw Refusal(
          TVK_NO_DRIVER, "the storage driver is " + document.at("driver").get<std::string>() +
                             "; the status shows the reason");
    }
  });
}

}  // namespace voltvk::ctl
