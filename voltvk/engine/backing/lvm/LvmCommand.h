// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_LVMCOMMAND_H
#define VOLTVK_ENGINE_BACKING_LVM_LVMCOMMAND_H

#include "voltvk/engine/backing/lvm/Program.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace voltvk {

/**
 * Runs the program lvm; its verbs do everything that changes drives. May be used from any thread. What does
 * not succeed is a Refusal: TVK_BACKING_UNAVAILABLE if the program is missing, TVK_BACKING_FAILED with the
 * volume manager's own message otherwise.
 */
class LvmCommand {
public:
  using Words = std::vector<std::string>;

  /** Uses the program that VOLTVK_LVM names, or else lvm. */
  LvmCommand();
  /** @param program a name or a path; limits are for every run that has none of its own */
  explicit LvmCommand(std::string program, const ProgramLimits& limits = {});

  /** @throws Refusal TVK_BACKING_UNAVAILABLE if the program is missing */
  void requireProgram() const;

  /**
   * Runs a verb.
   * @param task what it is for, as the end of "could not": "make volume 3"
   * @param command the verb and its arguments
   */
  void run(const std::string& task, const Words& command) const { run(task, command, m_limits); }
  void run(const std::string& task, const Words& command, const ProgramLimits& limits) const;

  /** Runs a verb, whatever its status is: what matters is what is found afterwards. @return its message */
  std::string attempt(const Words& command) const;

  /** Runs a verb. @return what it prints */
  std::string output(const std::string& task, const Words& command) const;

  /** Runs a verb that reports, with "--reportformat json" added. @return the array "report" */
  nlohmann::json report(const std::string& task, const Words& command) const;

private:
  ProgramOutcome start(const std::string& task, const Words& command, const ProgramLimits& limits) const;

  std::string m_program;
  ProgramLimits m_limits;
};

/**
 * What the volume manager had to say: its lines in one, without their indentation. Warnings are left out, if
 * there is anything else.
 */
std::string messageOf(const std::string& errors);

}  // namespace voltvk

#endif
