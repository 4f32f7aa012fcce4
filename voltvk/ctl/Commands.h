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

  /** @throws Refusal when the state cannot be used */
  std::shared_ptr<State> state() const;
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
void addVolumeCommands(CLI::App& app, Context& context);
void addHeatCommand(CLI::App& app, Context& context);
void addEventsCommand(CLI::App& app, Context& context);
void addBackingCommands(CLI::App& app, Context& context);

/**
 * Prints the names that a shell may offer for the last of some words: volumes, virtual drives. Commands and
 * options are left to the shell, which takes them from the help. @throws Refusal when the state cannot be
 * used
 */
void printCompletions(const Context& context, const std::vector<std::string>& words);

}  // namespace voltvk::ctl

#endif
