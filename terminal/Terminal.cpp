// SPDX-License-Identifier: Apache-2.0
#include "terminal/Terminal.h"

#include <cstdlib>
#include <cstring>
#include <string>

#include <sys/ioctl.h>
#include <unistd.h>

namespace tvp::terminal {
namespace {

constexpr std::size_t USUAL_COLUMNS = 80;

std::size_t columnsOf(const winsize& size) {
  if (size.ws_col > 0) {
    return size.ws_col;
  }
  const char* columns = std::getenv("COLUMNS");
  const unsigned long number = columns == nullptr ? 0 : std::strtoul(columns, nullptr, 10);
  return number == 0 ? USUAL_COLUMNS : number;
}

/** Of the environment; empty if it is not set. */
std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

}  // namespace

Terminal Terminal::ofStandardOutput() {
  Terminal terminal;
  if (::isatty(STDOUT_FILENO) == 1) {
    winsize size{};
    ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size);  // nothing is known where it fails
    terminal.columns = columnsOf(size);
    terminal.rows = size.ws_row;
    terminal.colour = variable("NO_COLOR").empty() && variable("TERM") != "dumb";
  }
  return terminal;
}

bool isUtf8Wanted() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    const std::string value = variable(name);
    if (!value.empty()) {
      return ::strcasestr(value.c_str(), "UTF-8") != nullptr ||
             ::strcasestr(value.c_str(), "UTF8") != nullptr;
    }
  }
  return false;
}

}  // namespace tvp::terminal
