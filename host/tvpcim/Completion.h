// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_COMPLETION_H
#define HOST_TVPCIM_COMPLETION_H

#include "host/tvpcim/Commands.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/**
 * The names that a shell may offer for the last of some words: of drives, pools and volumes, classes, methods
 * and their arguments, properties. Verbs and options are left to the shell, which takes them from the help.
 * @param words what was typed after the command, the word to complete included; it may be empty
 * @return whole words, none where no name belongs
 * @throws OperationError, UsageError when the names cannot be had
 */
std::vector<std::string> completionsOf(Tool& tool, CLI::App& app, const std::vector<std::string>& words);

}  // namespace tvp::host::tvpcim

#endif
