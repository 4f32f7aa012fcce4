// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_TOOL_H
#define HOST_TVPCIM_TOOL_H

#include "host/tvpcim/Inventory.h"
#include "host/tvpcim/Options.h"
#include "host/tvpcim/Session.h"
#include "host/tvpcim/output/Formatter.h"

#include <functional>
#include <memory>
#include <string>

namespace tvp::host::tvpcim {

/** What every verb works with: the options, the way to the provider, the storage and the two outputs. One
 * thread. */
class Tool {
public:
  Tool();

  Options options;

  Session& session() { return m_session; }
  Inventory& inventory() { return m_inventory; }
  /** The formatter of the output format that was asked for. */
  const Formatter& formatter();

  /** Writes the answer to standard output. @throws OperationError when it cannot be written. */
  void print(const std::string& text);
  /** Makes sure that all that was printed is written. @throws OperationError */
  void flush();
  /** Writes something for people beside the answer, to standard error. */
  void notice(const std::string& text) const { complain("note: " + text); }
  /** Writes a line to standard error; whatever bytes the text has, it stays one line and harmless. */
  static void complain(const std::string& text);

  /** How the process ends if the verb succeeds, where that says more than 0. */
  void endWith(int exitStatus) { m_exitStatus = exitStatus; }
  int exitStatus() const { return m_exitStatus; }

  /** Remembers what the command line asks for. */
  void choose(const std::string& verb, std::function<void()> action);
  /** The verb that was chosen, "pool create"; empty before. */
  const std::string& verb() const { return m_verb; }
  /** Does what was chosen, if anything was. */
  void run();

private:
  Session m_session;
  Inventory m_inventory;
  std::unique_ptr<const Formatter> m_formatter;
  std::string m_verb;
  std::function<void()> m_action;
  int m_exitStatus = 0;
};

}  // namespace tvp::host::tvpcim

#endif
