// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_COMMANDS_H
#define VOLTVK_CTL_COMMANDS_H

#include "voltvk/ctl/Output.h"

#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace voltvk {
class State;
}

namespace voltvk::ctl {

/**
 * What the commands share: the state that they work on, opened when a command needs it, and the output.
 */
struct Context {
  Output output;
  /** Set by the option -n: nothing changes but a copy, of which this process alone knows. */
  bool isDryRun = false;

  /** @throws Refusal when the state cannot be used */
  std::shared_ptr<State> state() const;
  /** The same, for what also has to do with a state that cannot be used. */
  std::shared_ptr<State> anyState() const;

  /** Writes what was changed, as Output::write; in a dry run with what would have been done for it. */
  void report(Json document, const std::string& text) const;
};

/**
 * Each adds a group of commands to the command line. A command runs while the line is parsed; what it
 * cannot do it throws: std::invalid_argument for wrong usage, other exceptions for failures.
 * The context must outlive the command line.
 */
void addStatusCommand(CLI::App& app, Context& context);
void addDriveCommands(CLI::App& app, Context& context);
void addFaultCommands(CLI::App& app, Context& context);
void addIoCommand(CLI::App& app, Context& context);
void addPolicyCommands(CLI::App& app, Context& context);
void addPoolCommands(CLI::App& app, Context& context);
void addVolumeCommands(CLI::App& app, Context& context);
void addHeatCommand(CLI::App& app, Context& context);
void addEventsCommand(CLI::App& app, Context& context);
void addBackingCommands(CLI::App& app, Context& context);
void addBackupCommands(CLI::App& app, Context& context);

/**
 * Prints the names that a shell may offer for the last of some words: volumes, pools, drives. Commands and
 * options are left to the shell, which takes them from the help. @throws Refusal when the state cannot be
 * used
 */
void printCompletions(const Context& context, const std::vector<std::string>& words);

}  // namespace voltvk::ctl

#endif
