// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/Program.h"

#include "voltvk/engine/state/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <sstream>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace voltvk {

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

/** How long to wait for a program that was killed; one that the kernel keeps waiting does not end. */
constexpr milliseconds PATIENCE_AFTER_KILL{5000};

/** What the children report. */
struct Report {
  enum Kind : int { NotStarted = 1, Ended = 2, TimedOut = 3 };
  int kind = 0;
  int value = 0;  ///< an errno, or what wait returns
};

/** What the children need. They share memory with nobody, but may not allocate any. */
struct Plan {
  const char* path = nullptr;
  char* const* arguments = nullptr;
  char* const* environment = nullptr;
  int input = -1;
  int output = -1;
  int errors = -1;
  int report = -1;
  int kept = -1;  ///< stays open while the program runs; -1: nothing
  milliseconds timeout{};
  milliseconds grace{};
};

// The process may have many threads, any of which may hold the locks of the C library and of the sanitizers
// at the time of the clone. Below, the children therefore make system calls and nothing else.

template <typename Pointer>
long word(Pointer* pointer) {
  return reinterpret_cast<long>(pointer);
}
long word(std::nullptr_t) {
  return 0;
}
long word(long number) {
  return number;
}

/** A system call. What is left out of its arguments is 0. */
template <typename... Arguments>
long kernel(long number, Arguments... arguments) {
  return syscall(number, word(arguments)...);
}

[[noreturn]] void leave(int status) {
  for (;;) {
    kernel(SYS_exit_group, status);
  }
}

/** Descriptors of a child: those of a program, the pipe for reports, and what is kept open. */
enum ChildDescriptor : int { INPUT = 0, OUTPUT = 1, ERRORS = 2, REPORT = 3, KEPT = 4 };

/** What the programs of this thread keep open; -1: nothing. */
thread_local int t_kept = -1;

void report(Report::Kind kind, int value) {
  const Report record{kind, value};
  kernel(SYS_write, REPORT, &record, static_cast<long>(sizeof record));
}

void keepOnlyOwnDescriptors(const Plan& plan) {
  kernel(SYS_dup3, plan.input, INPUT, 0);
  kernel(SYS_dup3, plan.output, OUTPUT, 0);
  kernel(SYS_dup3, plan.errors, ERRORS, 0);
  kernel(SYS_dup3, plan.report, REPORT, O_CLOEXEC);
  if (plan.kept < 0) {
    kernel(SYS_close, KEPT);
  } else {
    kernel(SYS_dup3, plan.kept, KEPT, O_CLOEXEC);
  }
  if (kernel(SYS_close_range, KEPT + 1, 0xFFFFFFFFL, 0) == 0) {
    return;
  }
  // Kernels before 5.9.
  rlimit limit{};
  kernel(SYS_prlimit64, 0, RLIMIT_NOFILE, nullptr, &limit);
  for (rlim_t descriptor = KEPT + 1; descriptor < limit.rlim_cur; ++descriptor) {
    kernel(SYS_close, static_cast<long>(descriptor));
  }
}

/** Bytes of a set of signals, as the kernel counts them. */
constexpr long KERNEL_SIGNALS = 8;

void resetSignalHandling() {
  const std::array<std::uint64_t, 4> defaultAction{};
  for (int number = 1; number <= 64; ++number) {
    kernel(SYS_rt_sigaction, number, defaultAction.data(), nullptr, KERNEL_SIGNALS);
  }
}

void setSignalMask(std::uint64_t mask) {
  kernel(SYS_rt_sigprocmask, SIG_SETMASK, &mask, nullptr, KERNEL_SIGNALS);
}

[[noreturn]] void becomeProgram(const Plan& plan) {
  kernel(SYS_setsid);
  kernel(SYS_chdir, "/");
  setSignalMask(0);
  kernel(SYS_execve, plan.path, plan.arguments, plan.environment);
  report(Report::NotStarted, errno);
  leave(127);
}

/** Waits for the only child, whose end makes SIGCHLD pending. @return what wait returns, or nothing */
std::optional<int> waitFor(long child, milliseconds time) {
  const auto until = Clock::now() + time;
  for (;;) {
    int status = 0;
    if (kernel(SYS_wait4, child, &status, WNOHANG, nullptr) == child) {
      return status;
    }
    const auto left = std::chrono::duration_cast<milliseconds>(until - Clock::now()).count();
    if (left <= 0) {
      return std::nullopt;
    }
    const timespec limit{left / 1000, (left % 1000) * 1000000};
    const std::uint64_t childEnded = std::uint64_t{1} << (SIGCHLD - 1U);
    kernel(SYS_rt_sigtimedwait, &childEnded, nullptr, &limit, KERNEL_SIGNALS);
  }
}

/**
 * The process between this one and the program. Since it is the program's parent, it does not matter whether
 * this process ignores the end of its children, or waits for any of them: execve makes every program a child
 * like all others, but this one never executes anything.
 */
[[noreturn]] void guardProgram(const Plan& plan) {
  keepOnlyOwnDescriptors(plan);
  resetSignalHandling();
  const long child = kernel(SYS_clone, SIGCHLD, nullptr, nullptr, nullptr, nullptr);
  if (child == 0) {
    becomeProgram(plan);
  }
  if (child < 0) {
    report(Report::NotStarted, errno);
    leave(1);
  }
  std::optional<int> status = waitFor(child, plan.timeout);
  if (status) {
    report(Report::Ended, *status);
    leave(0);
  }
  kernel(SYS_kill, child, SIGTERM);
  status = waitFor(child, plan.grace);
  if (!status) {
    kernel(SYS_kill, child, SIGKILL);
    status = waitFor(child, PATIENCE_AFTER_KILL);
  }
  report(Report::TimedOut, status.value_or(0));
  leave(0);
}

[[noreturn]] void throwSystemError(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

/** A copy of a descriptor beyond those that a child needs for itself. */
int raised(int descriptor) {
  const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, KEPT + 1);
  if (copy < 0) {
    throwSystemError("no descriptor for a program");
  }
  return copy;
}

class Pipe {
public:
  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
      throwSystemError("no pipe for a program");
    }
    const FileDescriptor readEnd(ends[0]);
    const FileDescriptor writeEnd(ends[1]);
    m_read.emplace(raised(readEnd.get()));
    m_write.emplace(raised(writeEnd.get()));
    fcntl(m_read->get(), F_SETFL, O_NONBLOCK);
  }

  int writeEnd() const { return m_write->get(); }
  void closeWriteEnd() { m_write.reset(); }

  /** What to wait for; nothing after the end of the pipe. */
  pollfd readiness() const { return {m_read ? m_read->get() : -1, POLLIN, 0}; }

  /** Reads what there is, and forgets what goes beyond the limit. */
  void drain(std::string& into, std::size_t limit, bool& isCut) {
    std::array<char, 65536> buffer{};
    while (m_read) {
      const ssize_t length = read(m_read->get(), buffer.data(), buffer.size());
      if (length == 0) {
        m_read.reset();
      } else if (length > 0) {
        const std::size_t kept = std::min(static_cast<std::size_t>(length), limit - into.size());
        into.append(buffer.data(), kept);
        isCut = isCut || kept < static_cast<std::size_t>(length);
      } else if (errno != EINTR) {
        return;
      }
    }
  }

  bool isAtEnd() const { return !m_read; }

private:
  std::optional<FileDescriptor> m_read;
  std::optional<FileDescriptor> m_write;
};

/** No signal handler of the process runs in its children, which have a copy of them at first. */
class SignalBlock {
public:
  SignalBlock() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &m_before);
  }
  ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
  SignalBlock(const SignalBlock&) = delete;
  SignalBlock& operator=(const SignalBlock&) = delete;

private:
  sigset_t m_before{};
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

pid_t startGuard(const Plan& plan) {
  const SignalBlock block;
  // Without a signal at its end, only those who ask for such children find it.
  const long guard = kernel(SYS_clone, 0, nullptr, nullptr, nullptr, nullptr);
  if (guard == 0) {
    guardProgram(plan);
  }
  if (guard < 0) {
    throwSystemError("no process for a program");
  }
  return static_cast<pid_t>(guard);
}

void interpret(const std::string& reports, ProgramOutcome& outcome) {
  Report record;
  if (reports.size() < sizeof record) {
    return;
  }
  // The first report decides: a program that was not started ends as well.
  std::copy_n(reports.data(), sizeof record, reinterpret_cast<char*>(&record));
  outcome.code = record.value;
  switch (record.kind) {
  case Report::NotStarted:
    outcome.end = ProgramOutcome::End::NotStarted;
    break;
  case Report::TimedOut:
    outcome.end = ProgramOutcome::End::TimedOut;
    break;
  default:
    outcome.end = WIFEXITED(record.value) ? ProgramOutcome::End::Exited : ProgramOutcome::End::Killed;
    outcome.code = WIFEXITED(record.value) ? WEXITSTATUS(record.value) : WTERMSIG(record.value);
  }
}

}  // namespace

std::string pathOfProgram(const std::string& name) {
  if (name.find('/') != std::string::npos) {
    return access(name.c_str(), X_OK) == 0 ? name : std::string();
  }
  std::istringstream directories(PROGRAM_PATH);
  for (std::string directory; std::getline(directories, directory, ':');) {
    std::string path = directory;
    path += '/';
    path += name;
    if (access(path.c_str(), X_OK) == 0) {
      return path;
    }
  }
  return {};
}

milliseconds usualTimeout() {
  const char* seconds = secure_getenv("VOLTVK_LVM_TIMEOUT");
  const long asked = seconds == nullptr ? 0 : std::strtol(seconds, nullptr, 10);
  return asked > 0 ? std::chrono::seconds(asked) : std::chrono::minutes(2);
}

KeptOpen::KeptOpen(int descriptor) {
  t_kept = descriptor;
}

KeptOpen::~KeptOpen() {
  t_kept = -1;
}

ProgramOutcome
runProgram(const std::string& path, const std::vector<std::string>& arguments, const ProgramLimits& limits) {
  std::vector<std::string> words = {path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = {
      std::string("PATH=") + PROGRAM_PATH, "LC_ALL=C", "LVM_SUPPRESS_FD_WARNINGS=1"};
  const std::vector<char*> wordPointers = pointersTo(words);
  const std::vector<char*> variablePointers = pointersTo(variables);
  const FileDescriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
  const FileDescriptor input(raised(nothing.get()));
  const FileDescriptor kept(t_kept < 0 ? -1 : raised(t_kept));
  Pipe output;
  Pipe errors;
  Pipe reports;
  const pid_t guard = startGuard(
      {path.c_str(), wordPointers.data(), variablePointers.data(), input.get(), output.writeEnd(),
       errors.writeEnd(), reports.writeEnd(), kept.get(), limits.timeout, limits.grace});
  output.closeWriteEnd();
  errors.closeWriteEnd();
  reports.closeWriteEnd();

  ProgramOutcome outcome;
  std::string reported;
  bool tooManyReports = false;
  bool hasEnded = false;
  while (!hasEnded) {
    std::array<pollfd, 3> waiting{reports.readiness(), output.readiness(), errors.readiness()};
    poll(waiting.data(), waiting.size(), -1);
    // The end is looked for first: what the program has written is in the pipes by then. Whom it left behind
    // in the background may keep them open.
    reports.drain(reported, 2 * sizeof(Report), tooManyReports);
    hasEnded = reports.isAtEnd() || reported.size() >= sizeof(Report);
    output.drain(outcome.output, limits.output, outcome.isCut);
    errors.drain(outcome.errors, limits.output, outcome.isCut);
  }
  while (waitpid(guard, nullptr, __WALL) < 0 && errno == EINTR) {
  }
  interpret(reported, outcome);
  return outcome;
}

}  // namespace voltvk
