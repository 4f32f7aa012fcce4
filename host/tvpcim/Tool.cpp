// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Tool.h"

#include "host/tvpcim/Failure.h"
#include "text/Utf8.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <pwd.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

/** The login name of the effective user, or the number of one who has none. */
std::string effectiveUser() {
  const passwd* entry = ::getpwuid(::geteuid());
  return entry == nullptr ? std::to_string(::geteuid()) : entry->pw_name;
}

[[noreturn]] void refuseOutput() {
  throw OperationError(std::string("standard output cannot be written: ") + std::strerror(errno));
}

}  // namespace

Tool::Tool() : m_session(options), m_inventory(m_session) {
  options.output = outputFormats().front().name;
  options.user = effectiveUser();
}

const Formatter& Tool::formatter() {
  if (m_formatter == nullptr) {
    m_formatter = makeFormatter(options.output, {terminal::Terminal::ofStandardOutput(), options.wide});
  }
  return *m_formatter;
}

void Tool::print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
    refuseOutput();
  }
}

void Tool::flush() {
  if (std::fflush(stdout) != 0) {
    refuseOutput();
  }
}

void Tool::complain(const std::string& text) {
  std::fprintf(stderr, "tvpcim: %s\n", text::printable(text).c_str());
}

void Tool::choose(const std::string& verb, std::function<void()> action) {
  m_verb = verb;
  m_action = std::move(action);
}

void Tool::run() {
  if (m_action) {
    m_action();
  }
}

}  // namespace tvp::host::tvpcim
