// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_COMMANDS_H
#define HOST_TVPCIM_COMMANDS_H

#include "host/tvpcim/Tool.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace tvp::host::tvpcim {

/**
 * Each adds verbs to the command line. A verb runs in Tool::run, after the whole line was read; it throws
 * UsageError for wrong usage, OperationError for failures. The tool must outlive the command line.
 */
void addIdentityCommand(CLI::App& app, Tool& tool);
void addStatusCommand(CLI::App& app, Tool& tool);
void addDriveCommands(CLI::App& app, Tool& tool);
void addPoolCommands(CLI::App& app, Tool& tool);
void addVolumeCommands(CLI::App& app, Tool& tool);
/** Adds "volume stats", after the other verbs of volumes. */
void addStatisticsCommand(CLI::App& app, Tool& tool);
void addTreeCommand(CLI::App& app, Tool& tool);
void addMetricsCommand(CLI::App& app, Tool& tool);
void addWatchCommand(CLI::App& app, Tool& tool);
void addInstanceCommands(CLI::App& app, Tool& tool);
void addMethodCommand(CLI::App& app, Tool& tool);
void addAssociationCommands(CLI::App& app, Tool& tool);
void addSchemaCommands(CLI::App& app, Tool& tool);
void addServeCommand(CLI::App& app, Tool& tool);
void addListenCommand(CLI::App& app, Tool& tool);
void addSubscriptionCommands(CLI::App& app, Tool& tool);

/** Adds a verb; it may get verbs below it, and runs when none of them is given. @param help the end of its
 * --help, may be empty */
CLI::App& addVerb(
    CLI::App& parent, Tool& tool, const std::string& name, const std::string& summary,
    const std::string& help, std::function<void()> action);
/** Adds a word that has verbs below it. */
CLI::App& addFamily(CLI::App& app, const std::string& name, const std::string& summary);

/** The part of a verb's help that says how object paths are written. */
constexpr const char* PATH_HELP = "A path is written CLASS.Key=\"text\",Number=3,Flag=TRUE.";

}  // namespace tvp::host::tvpcim

#endif
