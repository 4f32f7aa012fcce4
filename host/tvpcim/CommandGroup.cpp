// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/CommandGroup.h"

namespace tvp::host::tvpcim {

CLI::App& CommandGroup::addVerb(
    CLI::App& parent, const std::string& name, const std::string& summary, const std::string& help,
    std::function<void()> action) {
  CLI::App* verb = parent.add_subcommand(name, summary);
  verb->footer(
      "\n" + help + (help.empty() ? "" : "\n") +
      "Options of every verb, such as -o json, are those of 'tvpcim --help'.");
  const std::string fullName = parent.get_parent() == nullptr ? name : parent.get_name() + " " + name;
  verb->callback([this, fullName, action = std::move(action)] { m_tool.choose(fullName, action); });
  return *verb;
}

CLI::App& CommandGroup::addFamily(CLI::App& app, const std::string& name, const std::string& summary) {
  CLI::App* family = app.add_subcommand(name, summary);
  family->require_subcommand(1);
  return *family;
}

Instance CommandGroup::answerOf(const std::string& operation, const MethodOutcome& outcome) {
  Instance answer;
  answer.path.className = operation;
  answer.properties.push_back({"ReturnValue", outcome.returnValue});
  for (const NamedValue& argument : outcome.output.values) {
    answer.properties.push_back(argument);
  }
  return answer;
}

}  // namespace tvp::host::tvpcim
