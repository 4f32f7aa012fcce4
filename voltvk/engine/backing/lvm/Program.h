// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_BACKING_LVM_PROGRAM_H
#define VOLTVK_ENGINE_BACKING_LVM_PROGRAM_H

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace voltvk {

/** Two minutes, or so many seconds as VOLTVK_LVM_TIMEOUT says, which is for tests. */
std::chrono::milliseconds usualTimeout();

/** How long a program may take, and how much it may write. */
struct ProgramLimits {
  std::chrono::milliseconds timeout = usualTimeout();
  /** What the program may take to end by itself after SIGTERM; then it is killed. */
  std::chrono::milliseconds grace{std::chrono::seconds(20)};
  /** Bytes kept of each of its outputs. */
  std::size_t output = std::size_t{64} << 20U;
};

/** How a program ended. */
struct ProgramOutcome {
  enum class End {
    Exited,      ///< by itself; code is its status
    Killed,      ///< by a signal; code is its number
    TimedOut,    ///< it was ended because it took too long
    NotStarted,  ///< code is the errno
    Lost         ///< nobody knows: the process that waited for it was ended
  };
  End end = End::Lost;
  int code = 0;
  std::string output;
  std::string errors;
  bool isCut = false;  ///< there was more output than allowed

  bool isSuccess() const { return end == End::Exited && code == 0 && !isCut; }
};

/** The directories in which programs are looked for, whatever the environment of the process says. */
constexpr const char* PROGRAM_PATH = "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";

/** Where a program is in PROGRAM_PATH; a name with a slash is itself. @return empty if it is nowhere */
std::string pathOfProgram(const std::string& name);

/**
 * While this exists, the programs that its thread runs keep a file open until they have ended, also if this
 * process ends before them: a lock on the file then outlives the process. One at a time in a thread.
 */
class KeptOpen {
public:
  /** @param descriptor belongs to the caller and stays open */
  explicit KeptOpen(int descriptor);
  ~KeptOpen();
  KeptOpen(const KeptOpen&) = delete;
  KeptOpen& operator=(const KeptOpen&) = delete;
};

/**
 * Runs a program and waits for it. No shell takes part. Its input is empty, its directory "/", its
 * environment has nothing of this process's. It is in a session of its own, so that keys pressed for this
 * process do not interrupt it, and goes on if this process ends.
 *
 * Can be called from any thread of any process: whatever the process does with signals, its descriptors or
 * its children, it neither notices the program nor disturbs it.
 * @param path as pathOfProgram returned it
 * @param arguments without the name of the program
 * @throws std::system_error if there are no descriptors or processes left
 */
ProgramOutcome
runProgram(const std::string& path, const std::vector<std::string>& arguments, const ProgramLimits& limits);

}  // namespace voltvk

#endif
