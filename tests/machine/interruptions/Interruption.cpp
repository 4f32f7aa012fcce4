// SPDX-License-Identifier: Apache-2.0
#include "Interruption.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fcntl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const std::string PLAN = "/run/interruption";

unsigned int s_syncs = 0;
unsigned int s_lastSync = 0;  ///< the one before which it ends; 0: none
bool s_cutsPower = false;

/** Counts what SQLite does, which is the only one in a changing process that syncs files. */
int sync(long call, int descriptor) {
  if (++s_syncs == s_lastSync) {
    if (s_cutsPower) {
      const int trigger = ::open("/proc/sysrq-trigger", O_WRONLY | O_CLOEXEC);
      [[maybe_unused]] const ssize_t written = ::write(trigger, "b", 1);
      ::pause();
    }
    ::kill(::getpid(), SIGKILL);
  }
  return static_cast<int>(::syscall(call, descriptor));
}

}  // namespace

// In front of those of the C library, also for its shared libraries.
extern "C" __attribute__((visibility("default"))) int fdatasync(int descriptor) {
  return sync(SYS_fdatasync, descriptor);
}
extern "C" __attribute__((visibility("default"))) int fsync(int descriptor) {
  return sync(SYS_fsync, descriptor);
}

namespace tvp::test {

namespace {

void write(const char* name, const std::string& text) {
  std::ofstream(PLAN + "/" + name) << text << "\n";
}

std::string read(const char* name) {
  std::ifstream file(PLAN + "/" + name);
  return {std::istreambuf_iterator<char>(file), {}};
}

[[noreturn]] void runChild(const std::function<void()>& change, const Interruption& interruption) {
  s_syncs = 0;
  const bool atSync = interruption.kind == "kill-sync" || interruption.kind == "power-sync";
  s_lastSync = atSync ? interruption.step : 0;
  s_cutsPower = interruption.cutsPower();
  write(
      "what", interruption.kind + " " + (atSync ? "0" : std::to_string(interruption.step)) + " " +
                  std::to_string(::getpid()));
  ::setenv("VOLTVK_LVM", TVP_SOURCE_DIR "/tests/machine/interruptions/lvm", 1);
  if (interruption.kind == "hanging") {
    ::setenv("VOLTVK_LVM_TIMEOUT", "60", 1);
  }
  try {
    change();
  } catch (const std::exception& refusal) {
    write("refusal", refusal.what());
  }
  write("syncs", std::to_string(s_syncs));
  ::_exit(0);
}

}  // namespace

const std::vector<std::string>& Interruption::stepsOf(const Steps& steps) const {
  if (kind == "kill-sync" || kind == "power-sync") {
    return steps.syncs;
  }
  return kind == "no-report" ? steps.reports : kills() || cutsPower() ? steps.changes : steps.calls;
}

Ending runInterrupted(const std::function<void()>& change, const Interruption& interruption) {
  std::filesystem::remove_all(PLAN);
  std::filesystem::create_directory(PLAN);
  write("calls", interruption.kind == "count" ? "" : "0");
  const pid_t child = ::fork();
  if (child == 0) {
    runChild(change, interruption);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  std::filesystem::remove(PLAN + "/what");
  Ending ending;
  ending.wasKilled = WIFSIGNALED(status);
  ending.wasReached = ending.wasKilled || std::filesystem::exists(PLAN + "/done");
  ending.refusal = read("refusal");
  return ending;
}

Steps findSteps(const std::function<void()>& change) {
  const Ending ending = runInterrupted(change, {"count", 0});
  if (!ending.refusal.empty()) {
    throw std::runtime_error("a change that nobody interrupts was refused: " + ending.refusal);
  }
  Steps steps;
  std::ifstream calls(PLAN + "/calls");
  std::string kind;
  for (std::string verb; calls >> kind >> verb;) {
    steps.calls.push_back(verb);
    (kind == "report" ? steps.reports : steps.changes).push_back(verb);
  }
  steps.syncs.resize(std::stoul(read("syncs")), "sync");
  return steps;
}

}  // namespace tvp::test
