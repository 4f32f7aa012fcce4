// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/LvmCommand.h"

#include "text/Quote.h"
#include "text/Trim.h"
#include "text/Utf8.h"
#include "voltvk/engine/state/Refusal.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <system_error>
#include <utility>

namespace voltvk {

namespace {

/** Leaves room for the rest of the sentence in the detail of a refusal. */
constexpr std::size_t LONGEST_MESSAGE = 300;

std::string programFromEnvironment() {
  const char* program = secure_getenv("VOLTVK_LVM");
  return program != nullptr && *program != '\0' ? program : "lvm";
}

[[noreturn]] void refuse(const std::string& task, const std::string& what, const std::string& advice) {
  throw Refusal(TVK_BACKING_FAILED, "could not " + task + ": " + what + "; " + advice);
}

std::string quotedMessage(const ProgramOutcome& outcome) {
  const std::string message = messageOf(outcome.errors);
  return message.empty() ? "" : ": " + message;
}

/** Why a command did not succeed, and what to do about it. */
[[noreturn]] void refuse(
    const std::string& task, const std::string& verb, const ProgramOutcome& outcome,
    std::chrono::milliseconds timeout) {
  switch (outcome.end) {
  case ProgramOutcome::End::Exited:
    if (outcome.code == 0) {
      refuse(task, verb + " writes more than can be read", "see what `lvm " + verb + "` prints");
    }
    refuse(
        task, verb + " failed with status " + std::to_string(outcome.code) + quotedMessage(outcome),
        "correct that and try again");
  case ProgramOutcome::End::Killed:
    refuse(task, verb + " was ended by signal " + std::to_string(outcome.code), "try again");
  case ProgramOutcome::End::TimedOut:
    refuse(
        task,
        verb + " did not end within " + std::to_string(timeout.count() / 1000) + " s and was ended" +
            quotedMessage(outcome),
        "look for other commands of the volume manager that are running, and for drives that do not respond");
  case ProgramOutcome::End::NotStarted:
    refuse(task, verb + " cannot be started: " + std::strerror(outcome.code), "correct that and try again");
  case ProgramOutcome::End::Lost:
    break;
  }
  refuse(task, "the process that waited for " + verb + " was ended", "try again");
}

}  // namespace

std::string messageOf(const std::string& errors) {
  std::string message;
  std::string warnings;
  std::istringstream lines(errors);
  for (std::string line; std::getline(lines, line);) {
    const std::string_view text = tvp::text::trimmed(line, " \t\r.");
    std::string& kind = text.substr(0, 8) == "WARNING:" ? warnings : message;
    if (!text.empty()) {
      kind += (kind.empty() ? "" : "; ") + std::string(text);
    }
  }
  const std::string all = tvp::text::toUtf8(message.empty() ? warnings : message);
  return std::string(tvp::text::cutToSize(all, LONGEST_MESSAGE));
}

LvmCommand::LvmCommand() : LvmCommand(programFromEnvironment()) {}

LvmCommand::LvmCommand(std::string program, const ProgramLimits& limits)
    : m_program(std::move(program)), m_limits(limits) {}

void LvmCommand::requireProgram() const {
  require(!pathOfProgram(m_program).empty(), TVK_BACKING_UNAVAILABLE, [&] {
    return "the program " + tvp::text::quoted(m_program) +
           " of the volume manager is missing; install it (on Debian: apt-get install lvm2)";
  });
}

ProgramOutcome
LvmCommand::start(const std::string& task, const Words& command, const ProgramLimits& limits) const {
  requireProgram();
  try {
    return runProgram(pathOfProgram(m_program), command, limits);
  } catch (const std::system_error& error) {
    refuse(task, error.what(), "try again when the machine has more to spare");
  }
}

void LvmCommand::run(const std::string& task, const Words& command, const ProgramLimits& limits) const {
  const ProgramOutcome outcome = start(task, command, limits);
  if (!outcome.isSuccess()) {
    refuse(task, command.front(), outcome, limits.timeout);
  }
}

std::string LvmCommand::attempt(const Words& command) const {
  return messageOf(start("use the volume manager", command, m_limits).errors);
}

std::string LvmCommand::output(const std::string& task, const Words& command) const {
  ProgramOutcome outcome = start(task, command, m_limits);
  if (!outcome.isSuccess()) {
    refuse(task, command.front(), outcome, m_limits.timeout);
  }
  return std::move(outcome.output);
}

nlohmann::json LvmCommand::report(const std::string& task, const Words& command) const {
  Words words = command;
  words.insert(words.begin() + 1, {"--reportformat", "json"});
  nlohmann::json parsed = nlohmann::json::parse(output(task, words), nullptr, false);
  if (!parsed.is_object() || !parsed.contains("report") || !parsed["report"].is_array()) {
    refuse(
        task, command.front() + " did not print a report in JSON",
        "see what `lvm " + command.front() + " --reportformat json` prints");
  }
  return std::move(parsed["report"]);
}

}  // namespace voltvk
