// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_TOOL_H
#define HOST_TVPCIM_TOOL_H

#include "host/tvpcim/Options.h"
#include "host/tvpcim/Session.h"
#include "host/tvpcim/output/Formatter.h"

#include <functional>
#include <memory>
#include <string>

namespace tvp::host::tvpcim {

/** What every verb works with: the options, the road to the provider and the two outputs. One thread. */
class Tool {
public:
  Tool();

  Options options;

  Session& session() { return m_session; }
  /** The formatter of the form that was asked for. */
  const Formatter& formatter();

  /** Writes machine output, or what stands for it, to standard output. @throws OperationError when it
   *  cannot be written. */
  void print(const std::string& text);
  /** Writes what was printed through. @throws OperationError */
  void flush();
  /** Tells people something beside the answer, on standard error. */
  void notice(const std::string& text);

  /** Remembers what the command line asks for. */
  void choose(const std::string& verb, std::function<void()> action);
  /** The verb that was chosen, "pool create"; empty before. */
  const std::string& verb() const { return m_verb; }
  /** Does what was chosen, if anything was. */
  void run();

private:
  Session m_session;
  std::unique_ptr<const Formatter> m_formatter;
  std::string m_verb;
  std::function<void()> m_action;
};

}  // namespace tvp::host::tvpcim

#endif
