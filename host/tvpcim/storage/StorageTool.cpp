// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageTool.h"

#include "host/tvpcim/InstalledFiles.h"
#include "host/tvpcim/output/Text.h"
#include "text/Trim.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t MOST_OUTPUT = std::size_t{256} << 20U;  ///< bytes

/** @throws std::runtime_error unless the error number is 0 */
void require(int error, const std::string& what) {
  if (error != 0) {
    throw std::runtime_error(what + ": " + std::strerror(error));
  }
}

/** What the command writes to one of its outputs. */
class Output {
public:
  Output() { require(::pipe2(m_ends.data(), O_CLOEXEC) == 0 ? 0 : errno, "there is no pipe"); }
  ~Output() {
    closeEnd(0);
    closeEnd(1);
  }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  int writeEnd() const { return m_ends[1]; }
  void closeEnd(std::size_t end) {
    if (m_ends.at(end) >= 0) {
      ::close(std::exchange(m_ends.at(end), -1));
    }
  }
  pollfd polled() const { return {m_ends[0], POLLIN, 0}; }
  bool isOpen() const { return m_ends[0] >= 0; }
  const std::string& text() const { return m_text; }

  /** Takes what is there. */
  void take() {
    std::array<char, 65536> buffer{};
    const ssize_t count = ::read(m_ends[0], buffer.data(), buffer.size());
    if (count > 0) {
      m_text.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0 || errno != EINTR) {
      closeEnd(0);
    }
    if (m_text.size() > MOST_OUTPUT) {
      throw std::runtime_error("it writes more than can be read");
    }
  }

private:
  std::array<int, 2> m_ends{-1, -1};
  std::string m_text;
};

/** How the command is started: with the outputs, without input, unaffected by signals that are blocked here.
 */
class Preparation {
public:
  Preparation(const Output& out, const Output& errors) {
    ::posix_spawn_file_actions_init(&m_actions);
    ::posix_spawnattr_init(&m_attributes);
    ::posix_spawn_file_actions_addopen(&m_actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    ::posix_spawn_file_actions_adddup2(&m_actions, out.writeEnd(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&m_actions, errors.writeEnd(), STDERR_FILENO);
    sigset_t signals;
    sigemptyset(&signals);
    ::posix_spawnattr_setsigmask(&m_attributes, &signals);
    sigaddset(&signals, SIGPIPE);
    ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
    ::posix_spawnattr_setpgroup(&m_attributes, 0);
    ::posix_spawnattr_setflags(
        &m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~Preparation() {
    ::posix_spawnattr_destroy(&m_attributes);
    ::posix_spawn_file_actions_destroy(&m_actions);
  }
  Preparation(const Preparation&) = delete;
  Preparation& operator=(const Preparation&) = delete;

  pid_t start(const std::string& program, std::vector<std::string> words) const {
    std::vector<char*> line;
    line.reserve(words.size() + 1);
    std::transform(
        words.begin(), words.end(), std::back_inserter(line), [](std::string& word) { return word.data(); });
    line.push_back(nullptr);
    pid_t process = -1;
    require(
        ::posix_spawnp(&process, program.c_str(), &m_actions, &m_attributes, line.data(), environ),
        "it cannot be started");
    return process;
  }

private:
  posix_spawn_file_actions_t m_actions{};
  posix_spawnattr_t m_attributes{};
};

/** A process of ours, ended on destruction. */
class Child {
public:
  explicit Child(pid_t process) : m_process(process) {}
  ~Child() {
    if (::waitpid(m_process, nullptr, WNOHANG) == 0) {
      ::kill(m_process, SIGKILL);
      while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
      }
    }
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

private:
  const pid_t m_process;
};

/** Reads both outputs to their ends. @throws std::runtime_error when that takes too long */
void readAll(Output& out, Output& errors, Clock::time_point until) {
  while (out.isOpen() || errors.isOpen()) {
    std::array<pollfd, 2> files = {out.polled(), errors.polled()};  // a closed one is left out
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(until - Clock::now()).count();
    const int ready = left > 0 ? ::poll(files.data(), files.size(), static_cast<int>(left)) : 0;
    if (ready == 0) {
      throw std::runtime_error("it does not answer");
    }
    if (files[0].revents != 0) {
      out.take();
    }
    if (files[1].revents != 0) {
      errors.take();
    }
  }
}

/** What a failure wrote for people, on one line, without the command's own name. */
std::string complaintIn(const std::string& errors) {
  const std::string name = "voltvkctl: ";
  std::string line = printable(std::string(text::trimmed(errors)));
  return line.compare(0, name.size(), name) == 0 ? line.substr(name.size()) : line;
}

}  // namespace

StorageTool::StorageTool() : StorageTool(installedStorageTool(), LIMIT) {}

std::optional<StorageTool::Json> StorageTool::ask(const std::vector<std::string>& arguments) {
  m_reason.clear();
  std::vector<std::string> words = {"voltvkctl", "-o", "json"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  try {
    Output out;
    Output errors;
    const Child child(Preparation(out, errors).start(m_program, std::move(words)));
    out.closeEnd(1);
    errors.closeEnd(1);
    readAll(out, errors, Clock::now() + m_limit);
    Json document = Json::parse(out.text(), nullptr, false);
    if (!document.is_discarded()) {
      return document;
    }
    const std::string complaint = complaintIn(errors.text());
    m_reason = complaint.empty() ? "voltvkctl did not print a document" : complaint;
  } catch (const std::runtime_error& error) {
    m_reason = std::string("voltvkctl cannot be asked: ") + error.what();
  }
  return std::nullopt;
}

}  // namespace tvp::host::tvpcim
