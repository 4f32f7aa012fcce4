// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_COMMANDLINE_H
#define HOST_TVPCIM_COMMANDLINE_H

#include "host/tvpcim/Commands.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** The words and options of the command line, and what they choose. One thread; the tool must outlive it. */
class CommandLine {
public:
  explicit CommandLine(Tool& tool);

  /**
   * Reads the arguments (without the command's own name) and makes the tool choose the verb.
   * @return a text to print instead, for --help and --version; else empty
   * @throws UsageError that says what was wrong and what to do
   */
  std::string parse(const std::vector<std::string>& arguments);

private:
  void addGlobalOptions();
  void addHelp();
  /** Refuses a wrong URL, and options of the provider of this machine beside one. */
  void checkUrl();
  /** Refuses a dry run of what is not a change of this machine, and prepares the others. */
  void prepareDryRun();
  /** Finds a word that is not a verb in the place of one; CLI11 would call it an extra argument. */
  void checkVerbs(const std::vector<std::string>& arguments);

  Tool& m_tool;
  CLI::App m_app;
};

/** Runs the command and ends the process with its exit status: 0 done, 1 failed, 2 wrong usage. */
[[noreturn]] void runAndExit(int argumentCount, char** arguments);

}  // namespace tvp::host::tvpcim

#endif
