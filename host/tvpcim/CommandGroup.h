// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_COMMANDGROUP_H
#define HOST_TVPCIM_COMMANDGROUP_H

#include "host/tvpcim/Tool.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace tvp::host::tvpcim {

/**
 * Some verbs that belong together. The group holds what their options were set to, so it must live until
 * the tool has run.
 */
class CommandGroup {
public:
  explicit CommandGroup(Tool& tool) : m_tool(tool) {}
  virtual ~CommandGroup() = default;
  CommandGroup(const CommandGroup&) = delete;
  CommandGroup& operator=(const CommandGroup&) = delete;

  /** Adds the verbs to the command line. */
  virtual void addTo(CLI::App& app) = 0;

protected:
  /** Adds a verb. @param help what stands at the end of its --help, or empty */
  CLI::App& addVerb(
      CLI::App& parent, const std::string& name, const std::string& summary, const std::string& help,
      std::function<void()> action);
  /** Adds a word that has verbs under it. */
  static CLI::App& addFamily(CLI::App& app, const std::string& name, const std::string& summary);

  Tool& tool() { return m_tool; }
  Session& session() { return m_tool.session(); }
  const Formatter& formatter() { return m_tool.formatter(); }

  /** A method's answer as one object: "ReturnValue" and the output arguments. */
  static Instance answerOf(const std::string& operation, const MethodOutcome& outcome);

private:
  Tool& m_tool;
};

}  // namespace tvp::host::tvpcim

#endif
