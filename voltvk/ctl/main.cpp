// SPDX-License-Identifier: Apache-2.0
#include "terminal/StandardStreams.h"
#include "text/Utf8.h"
#include "voltvk/ctl/Commands.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <stdexcept>

namespace {

constexpr int FAILED = 1;
constexpr int WRONG_USAGE = 2;

/** One line on standard error. */
int complain(std::string text, int status) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::cout.flush();
  std::cerr << "voltvkctl: " << tvp::text::printable(text) << '\n';
  return status;
}

int run(int count, char** arguments) {
  voltvk::ctl::Context context;
  if (count > 1 && std::string(arguments[1]) == "__complete") {
    voltvk::ctl::printCompletions(context, {arguments + 2, arguments + count});
    return 0;
  }
  CLI::App app(
      "Control the embedded storage library: drives, volumes, faults, I/O, heat, policy engine, events.\n"
      "The state is $VOLTVK_STATE, else /var/lib/voltvk/state.db.",
      "voltvkctl");
  app.set_version_flag("--version", "voltvkctl " TVP_VERSION);
  app.require_subcommand(1);
  app.fallthrough();  // -o is understood behind every command
  app.add_option("-o,--output", context.output.format, "Output format (default table)")
      ->check(CLI::IsMember({"table", "json"}));
  app.add_flag(
      "-n,--dry-run", context.isDryRun, "Change nothing: show what a command would do, or why it is refused");
  addStatusCommand(app, context);
  addDriveCommands(app, context);
  addFaultCommands(app, context);
  addIoCommand(app, context);
  addPolicyCommands(app, context);
  addPoolCommands(app, context);
  addVolumeCommands(app, context);
  addHeatCommand(app, context);
  addEventsCommand(app, context);
  addBackingCommands(app, context);
  addBackupCommands(app, context);
  try {
    app.parse(count, arguments);
  } catch (const CLI::Success& success) {
    app.exit(success);  // help and version
  } catch (const CLI::ParseError& error) {
    const std::vector<std::string> unknown = app.remaining(true);
    if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr && !unknown.empty()) {
      return complain("there is no command '" + unknown.front() + "'; see voltvkctl --help", WRONG_USAGE);
    }
    return complain(std::string(error.what()) + "; see voltvkctl --help", WRONG_USAGE);
  }
  if (!std::cout.flush()) {
    return complain("the output could not be written; check where it goes", FAILED);
  }
  return 0;
}

}  // namespace

int main(int count, char** arguments) {
  tvp::terminal::takeClosedStreams();
  try {
    return run(count, arguments);
  } catch (const std::invalid_argument& error) {
    return complain(error.what(), WRONG_USAGE);
  } catch (const std::exception& error) {
    return complain(error.what(), FAILED);
  }
}
