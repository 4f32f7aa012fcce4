// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/IsoTime.h"
#include "voltvk/engine/contract/StateBackups.h"

#include <CLI/CLI.hpp>

#include <stdexcept>

namespace voltvk::ctl {

namespace {

struct BackupOptions {
  std::string file;
  bool force = false;
};

Json describe(const BackupOptions& options, const BackupOutcome& outcome) {
  const BackupLabel& label = outcome.label;
  const bool isLabelled = !label.product.empty();
  return {
      {"file", options.file},
      {"product", isLabelled ? Json(label.product) : Json(nullptr)},
      {"time", isLabelled ? Json(isoTime(label.time)) : Json(nullptr)},
      {"layout", label.layout},
      {"backing", nameOf(label.backing.kind)},
      {"group", label.backing.isReal() ? Json(label.backing.group) : Json(nullptr)},
      {"pools", outcome.pools},
      {"volumes", outcome.volumes}};
}

/** "2 pools and 3 volumes, backing lvm (volume group tvp)". */
std::string contentsOf(const BackupOutcome& outcome) {
  const BackingChoice& backing = outcome.label.backing;
  return counted(outcome.pools, "pool") + " and " + counted(outcome.volumes, "volume") + ", backing " +
         nameOf(backing.kind) + (backing.isReal() ? " (volume group " + backing.group + ")" : "");
}

void backUp(const BackupOptions& options, const Context& context) {
  const std::shared_ptr<State> state = context.anyState();
  if (state->isDryRun()) {
    throw std::invalid_argument("backup writes nothing but its own file, so there is no dry run of it; leave "
                                "out -n, and unset VOLTVK_DRY_RUN");
  }
  const BackupOutcome outcome = StateBackups(*state).make(options.file, TVP_VERSION, options.force);
  context.output.write(
      describe(options, outcome), "backed up to " + options.file + ": " + contentsOf(outcome));
}

void restore(const BackupOptions& options, const Context& context) {
  const std::shared_ptr<State> state = context.anyState();
  const BackupOutcome outcome = StateBackups(*state).restore(options.file, state->isDryRun());
  const BackupLabel& label = outcome.label;
  std::string text =
      std::string(state->isDryRun() ? "would restore" : "restored") + " what " +
      (label.product.empty() ? "is in a copy of a state (layout " + std::to_string(label.layout) + ")"
                             : "version " + label.product + " backed up at " + isoTime(label.time)) +
      ": " + contentsOf(outcome);
  for (const std::string& note : outcome.notes) {
    text += "\n" + note;
  }
  Json document = describe(options, outcome);
  document["notes"] = outcome.notes;
  document["restored"] = !state->isDryRun();
  context.output.write(document, text);
}

}  // namespace

void addBackupCommands(CLI::App& app, Context& context) {
  auto options = std::make_shared<BackupOptions>();
  CLI::App* backup =
      app.add_subcommand("backup", "Copy the state into a file, from which it can be restored");
  backup->add_option("FILE", options->file, "The new file")->required();
  backup->add_flag("--force", options->force, "Replace a file that exists");
  backup->callback([options, &context] { backUp(*options, context); });

  CLI::App* restoring = app.add_subcommand("restore", "Replace the state by what a backup has");
  restoring->add_option("FILE", options->file, "The file that backup has written")->required();
  restoring->callback([options, &context] { restore(*options, context); });
}

}  // namespace voltvk::ctl
