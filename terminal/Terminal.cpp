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

std::size_t columnsOfTerminal() {
  winsize size{};
  if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    return size.ws_col;
  }
  const char* columns = std::getenv("COLUMNS");
  const unsigned long number = columns == nullptr ? 0 : std::strtoul(columns, nullptr, 10);
  return number == 0 ? USUAL_COLUMNS : number;
}

bool isSet(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0';
}

}  // namespace

Terminal Terminal::ofStandardOutput() {
  Terminal terminal;
  if (::isatty(STDOUT_FILENO) == 1) {
    const char* kind = std::getenv("TERM");
    terminal.columns = columnsOfTerminal();
    terminal.colour = !isSet("NO_COLOR") && (kind == nullptr || std::string(kind) != "dumb");
  }
  return terminal;
}

bool isUtf8Wanted() {
  for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
    if (isSet(name)) {
      const char* value = std::getenv(name);
      return ::strcasestr(value, "UTF-8") != nullptr || ::strcasestr(value, "UTF8") != nullptr;
    }
  }
  return false;
}

}  // namespace tvp::terminal
