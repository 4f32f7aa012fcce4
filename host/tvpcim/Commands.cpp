// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Commands.h"

namespace tvp::host::tvpcim {

CLI::App& addVerb(
    CLI::App& parent, Tool& tool, const std::string& name, const std::string& summary,
    const std::string& help, std::function<void()> action) {
  CLI::App* verb = parent.add_subcommand(name, summary);
  verb->footer(
      "\n" + help + (help.empty() ? "" : "\n") +
      "Every verb also takes the options of 'tvpcim --help', such as -o json.");
  const std::string fullName = parent.get_parent() == nullptr ? name : parent.get_name() + " " + name;
  verb->callback([&tool, verb, fullName, action = std::move(action)] {
    if (verb->get_subcommands().empty()) {
      tool.choose(fullName, action);
    }
  });
  return *verb;
}

CLI::App& addFamily(CLI::App& app, const std::string& name, const std::string& summary) {
  CLI::App* family = app.add_subcommand(name, summary);
  family->require_subcommand(1);
  return *family;
}

}  // namespace tvp::host::tvpcim
