// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/Password.h"

#include "host/tvpcim/Failure.h"
#include "text/Quote.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>

namespace tvp::host::tvpcim {
namespace {

constexpr std::size_t LONGEST_PASSWORD = 1024;

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/** Reads a line, which does not stay in the buffer. @param where for the message of a failure */
std::string firstLine(std::FILE* file, const std::string& where) {
  std::array<char, LONGEST_PASSWORD + 2> buffer{};
  std::string line =
      std::fgets(buffer.data(), static_cast<int>(buffer.size()), file) == nullptr ? "" : buffer.data();
  ::explicit_bzero(buffer.data(), buffer.size());
  if (!line.empty() && line.back() == '\n') {
    line.pop_back();
  }
  if (line.empty() || line.size() > LONGEST_PASSWORD) {
    throw OperationError(
        "there is no password " + where + ": it is one line of 1 to " + std::to_string(LONGEST_PASSWORD) +
        " bytes");
  }
  return line;
}

/** A terminal that does not show what is typed, and takes no key for a signal, until destruction. */
class QuietTerminal {
public:
  explicit QuietTerminal(int terminal) : m_terminal(terminal) {
    ::tcgetattr(m_terminal, &m_before);
    termios quiet = m_before;
    quiet.c_lflag = (quiet.c_lflag & ~static_cast<tcflag_t>(ECHO | ISIG)) | ICANON;
    ::tcsetattr(m_terminal, TCSAFLUSH, &quiet);
  }
  ~QuietTerminal() { ::tcsetattr(m_terminal, TCSAFLUSH, &m_before); }
  QuietTerminal(const QuietTerminal&) = delete;
  QuietTerminal& operator=(const QuietTerminal&) = delete;

private:
  const int m_terminal;
  termios m_before{};
};

}  // namespace

std::string passwordOf(const std::string& file) {
  const File stream(std::fopen(file.c_str(), "re"));
  struct stat status {};
  if (stream == nullptr || ::fstat(::fileno(stream.get()), &status) != 0) {
    throw OperationError(
        "the password file " + text::quoted(file) + " cannot be read: " + std::strerror(errno));
  }
  if (S_ISREG(status.st_mode) && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
    throw OperationError(
        "the password file " + text::quoted(file) + " is open to others than its owner; chmod 600 closes it");
  }
  return firstLine(stream.get(), "in the file " + text::quoted(file));
}

std::string askPassword(const std::string& prompt) {
  const File terminal(std::fopen("/dev/tty", "r+e"));
  if (terminal == nullptr) {
    throw OperationError("there is no terminal to ask for the password on; name a file of it with "
                         "--password-file");
  }
  std::setvbuf(terminal.get(), nullptr, _IONBF, 0);
  const QuietTerminal quiet(::fileno(terminal.get()));
  std::fputs(prompt.c_str(), terminal.get());
  std::string password = firstLine(terminal.get(), "on the terminal");
  std::fputs("\n", terminal.get());
  return password;
}

}  // namespace tvp::host::tvpcim
