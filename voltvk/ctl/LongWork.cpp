// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/LongWork.h"

#include "text/Utf8.h"

#include <csignal>
#include <iostream>

#include <unistd.h>

namespace voltvk::ctl {

namespace {

/** Set by the signal that ends the work early. */
volatile std::sig_atomic_t interrupted = 0;

void remember(int /*signal*/) {
  interrupted = 1;
}

}  // namespace

LongWork::LongWork() : m_showsProgress(::isatty(STDERR_FILENO) == 1) {
  interrupted = 0;
  m_before = {std::signal(SIGINT, remember), std::signal(SIGTERM, remember)};
}

LongWork::~LongWork() {
  std::signal(SIGINT, m_before[0]);
  std::signal(SIGTERM, m_before[1]);
  if (m_showsProgress) {
    std::cerr << "\r\033[K" << std::flush;
  }
}

bool LongWork::goesOn(const std::string& progress) const {
  if (m_showsProgress) {
    std::cerr << '\r' << tvp::text::printable(progress) << " \033[K" << std::flush;
  }
  return !isInterrupted();
}

bool LongWork::isInterrupted() const {
  return interrupted != 0;
}

}  // namespace voltvk::ctl
