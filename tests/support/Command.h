// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_COMMAND_H
#define TESTS_SUPPORT_COMMAND_H

#include "support/TemporaryDirectory.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace tvp::test {

/** How a command ended and what it wrote. */
struct CommandResult {
  int exitStatus = -1;    ///< -1 when the command was killed
  int signal = 0;         ///< the signal that ended it, or 0
  bool timedOut = false;  ///< the time limit ran out and the command was killed
  std::string out;
  std::string err;
};

/** A command that runs beside the test. Killed by the destructor if it is still running. Not thread-safe. */
class RunningCommand {
public:
  using Clock = std::chrono::steady_clock;

  RunningCommand(pid_t child, int out, int err, std::chrono::milliseconds limit)
      : m_child(child), m_out(out), m_err(err), m_deadline(Clock::now() + limit) {}
  RunningCommand(RunningCommand&& other) noexcept
      : m_child(std::exchange(other.m_child, -1)), m_out(std::exchange(other.m_out, -1)),
        m_err(std::exchange(other.m_err, -1)), m_deadline(other.m_deadline),
        m_result(std::move(other.m_result)) {}
  RunningCommand(const RunningCommand&) = delete;
  RunningCommand& operator=(const RunningCommand&) = delete;
  ~RunningCommand() {
    if (m_child > 0) {
      ::kill(m_child, SIGKILL);
      ::waitpid(m_child, nullptr, 0);
    }
    closeEnd(m_out);
    closeEnd(m_err);
  }

  /** Reads until the text appears on standard output or error. @return false when the command ended without
   * it or the time limit was reached */
  bool waitFor(const std::string& text) {
    while (m_result.out.find(text) == std::string::npos && m_result.err.find(text) == std::string::npos) {
      if (!readMore()) {
        return false;
      }
    }
    return true;
  }

  void signal(int number) const { ::kill(m_child, number); }
  pid_t id() const { return m_child; }
  /** What has been read so far. */
  const CommandResult& soFar() const { return m_result; }

  /** Waits for the end; a command that reaches its time limit is killed. */
  CommandResult finish() {
    while (readMore()) {
    }
    int status = 0;
    bool ended = ::waitpid(m_child, &status, WNOHANG) == m_child;
    while (!ended && !m_result.timedOut) {
      ::poll(nullptr, 0, 2);
      ended = ::waitpid(m_child, &status, WNOHANG) == m_child;
      m_result.timedOut = !ended && Clock::now() >= m_deadline;
    }
    if (!ended) {
      ::kill(m_child, SIGKILL);
      ::waitpid(m_child, &status, 0);
    }
    m_child = -1;
    m_result.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    m_result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return m_result;
  }

private:
  static void closeEnd(int& end) {
    if (end >= 0) {
      ::close(end);
      end = -1;
    }
  }

  static void take(int& end, short events, std::string& text) {
    if (events == 0) {
      return;
    }
    char buffer[65536];
    const ssize_t count = ::read(end, buffer, sizeof buffer);
    if (count > 0) {
      text.append(buffer, static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      closeEnd(end);  // also EIO, which a terminal reports once its other end is closed
    }
  }

  bool readMore() {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(m_deadline - Clock::now());
    if (m_out < 0 && m_err < 0) {
      return false;
    }
    pollfd ends[2] = {{m_out, POLLIN, 0}, {m_err, POLLIN, 0}};
    if (left.count() <= 0 || ::poll(ends, 2, static_cast<int>(left.count())) == 0) {
      m_result.timedOut = true;
      return false;
    }
    take(m_out, ends[0].revents, m_result.out);
    take(m_err, ends[1].revents, m_result.err);
    return true;
  }

  pid_t m_child;
  int m_out;
  int m_err;
  Clock::time_point m_deadline;
  CommandResult m_result;
};

/**
 * A command line with its environment. The environment is the test's own with the changes asked for.
 *
 *   CommandResult result = Command({TVP_BINARY_DIR "/bin/tvpcim", "drives"}).with("VOLTVK_STATE",
 * file).run();
 */
class Command {
public:
  explicit Command(std::vector<std::string> arguments) : m_arguments(std::move(arguments)) {}

  Command& with(const std::string& name, const std::string& value) {
    m_environment[name] = value;
    return *this;
  }
  Command& without(const std::string& name) {
    m_environment[name].reset();
    return *this;
  }
  /** The time after which the command is killed; three minutes when not given, as a machine may be busy. */
  Command& limit(std::chrono::milliseconds time) {
    m_limit = time;
    return *this;
  }
  /** Standard output becomes a terminal of the given size. */
  Command& terminal(unsigned short columns, unsigned short rows = 25) {
    m_columns = columns;
    m_rows = rows;
    return *this;
  }

  /** Starts the command; standard input is empty. @throws std::runtime_error when no process can be
   * created */
  RunningCommand start() const {
    int out[2] = {-1, -1};
    int err[2] = {-1, -1};
    winsize size{};
    size.ws_row = m_rows;
    size.ws_col = m_columns;
    const bool opened = m_columns == 0 ? ::pipe2(out, O_CLOEXEC) == 0
                                       : ::openpty(&out[0], &out[1], nullptr, nullptr, &size) == 0 &&
                                             ::fcntl(out[0], F_SETFD, FD_CLOEXEC) == 0;
    if (!opened || ::pipe2(err, O_CLOEXEC) != 0) {
      throw std::runtime_error("cannot create a pipe or a terminal");
    }
    // Everything that allocates is done before the fork: the test may have other threads.
    std::vector<std::string> line = {"/usr/bin/env"};
    for (const auto& [name, value] : m_environment) {
      line.insert(value ? line.end() : line.begin() + 1, value ? name + "=" + *value : "--unset=" + name);
    }
    line.insert(line.end(), m_arguments.begin(), m_arguments.end());
    std::vector<char*> words;
    std::transform(
        line.begin(), line.end(), std::back_inserter(words), [](auto& word) { return word.data(); });
    words.push_back(nullptr);
    const pid_t child = ::fork();
    if (child < 0) {
      throw std::runtime_error("cannot create a process");
    }
    if (child == 0) {
      const int null = ::open("/dev/null", O_RDONLY);
      ::dup2(null, STDIN_FILENO);
      ::dup2(out[1], STDOUT_FILENO);
      ::dup2(err[1], STDERR_FILENO);
      ::execv(words[0], words.data());
      ::_exit(127);
    }
    ::close(out[1]);
    ::close(err[1]);
    return RunningCommand(child, out[0], err[0], m_limit);
  }

  /** Starts the command and waits for its end. */
  CommandResult run() const { return start().finish(); }

private:
  std::vector<std::string> m_arguments;
  std::map<std::string, std::optional<std::string>> m_environment;  ///< changes; nothing: taken out
  std::chrono::milliseconds m_limit{180000};
  unsigned short m_columns = 0;  ///< 0: no terminal
  unsigned short m_rows = 0;
};

}  // namespace tvp::test

#endif
