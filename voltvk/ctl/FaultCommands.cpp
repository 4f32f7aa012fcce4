// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/engine/contract/Faults.h"

#include <CLI/CLI.hpp>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

namespace voltvk::ctl {

namespace {

constexpr std::array<FaultKind, 5> KINDS = {
    FaultKind::DriverAbsent, FaultKind::AdapterAbsent, FaultKind::Fail, FaultKind::Throw, FaultKind::Slow};

/** A part of the help that lists words, laid out like its lists of verbs: completions read both. */
std::string helpSection(const std::string& title, const std::vector<std::string>& words) {
  std::string text = title + ":\n";
  for (const std::string& word : words) {
    text += "  " + word + "\n";
  }
  return text;
}

std::vector<std::string> kindNames() {
  std::vector<std::string> names;
  names.reserve(std::size(KINDS));
  for (const FaultKind kind : KINDS) {
    names.emplace_back(faultKindName(kind));
  }
  return names;
}

Json describe(const Fault& fault) {
  const bool ofOperation = !fault.operation.empty();
  return {
      {"kind", faultKindName(fault.kind)},
      {"operation", ofOperation ? Json(fault.operation) : Json(nullptr)},
      {"status", fault.kind == FaultKind::Fail ? Json(fault.status) : Json(nullptr)},
      {"milliseconds", fault.kind == FaultKind::Slow ? Json(fault.milliseconds) : Json(nullptr)}};
}

void setFault(const Fault& fault, const Context& context) {
  Faults(context.state()).set(fault);
  context.report(describe(fault), "fault set: " + describeFault(fault));
}

void addSetCommands(CLI::App& set, Context& context) {
  const std::array<const char*, 5> help = {
      "No controller, until cleared", "No adapter, until cleared", "The next call of an operation fails",
      "The next call of an operation throws", "Every call of an operation takes longer, until cleared"};
  for (std::size_t i = 0; i < KINDS.size(); ++i) {
    auto fault = std::make_shared<Fault>();
    fault->kind = KINDS[i];
    CLI::App* command = set.add_subcommand(faultKindName(KINDS[i]), help[i]);
    if (KINDS[i] != FaultKind::DriverAbsent && KINDS[i] != FaultKind::AdapterAbsent) {
      command->add_option("OPERATION", fault->operation, "One of the operations below")->required();
      command->footer(helpSection("Operations", Faults::operations()));
    }
    if (KINDS[i] == FaultKind::Fail) {
      command->add_option("--status", fault->status, "Status that the call returns (default 3)");
    } else if (KINDS[i] == FaultKind::Slow) {
      command->add_option("--milliseconds", fault->milliseconds, "How much longer each call takes")
          ->required();
    }
    command->callback([fault, &context] { setFault(*fault, context); });
  }
}

struct ClearOptions {
  std::string kind;
  std::string operation;
};

void clearFaults(const ClearOptions& options, const Context& context) {
  std::optional<FaultKind> kind;
  for (FaultKind candidate : KINDS) {
    if (options.kind == faultKindName(candidate)) {
      kind = candidate;
    }
  }
  if (!kind && !options.kind.empty()) {
    std::string known;
    for (const std::string& name : kindNames()) {
      known += (known.empty() ? "" : ", ") + name;
    }
    throw std::invalid_argument("there is no fault '" + options.kind + "'; use one of: " + known);
  }
  const std::size_t count = Faults(context.state()).clear(kind, options.operation);
  context.report(
      {{"cleared", count}},
      count == 0 ? "no such fault was set" : "faults cleared: " + std::to_string(count));
}

}  // namespace

void addFaultCommands(CLI::App& app, Context& context) {
  CLI::App* fault = app.add_subcommand("fault", "Make things go wrong, for tests and demonstrations");
  fault->require_subcommand(1);
  CLI::App* set = fault->add_subcommand("set", "Inject a fault");
  set->require_subcommand(1);
  addSetCommands(*set, context);

  auto options = std::make_shared<ClearOptions>();
  CLI::App* clear = fault->add_subcommand("clear", "Clear all faults, those of a kind, or one");
  clear->add_option("KIND", options->kind, "Only the faults of this kind");
  clear->add_option("OPERATION", options->operation, "Only the faults of this operation");
  clear->footer(helpSection("Kinds", kindNames()) + helpSection("Operations", Faults::operations()));
  clear->callback([options, &context] { clearFaults(*options, context); });

  fault->add_subcommand("list", "List the faults that are set")->callback([&context] {
    Json list = Json::array();
    for (const Fault& entry : Faults(context.state()).list()) {
      list.push_back(describe(entry));
    }
    context.output.writeList(
        list,
        {{"kind", "KIND"},
         {"operation", "OPERATION"},
         {"status", "STATUS", true},
         {"milliseconds", "MILLISECONDS", true}},
        "No faults.");
  });
}

}  // namespace voltvk::ctl
