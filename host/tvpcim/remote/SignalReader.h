// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_SIGNALREADER_H
#define HOST_TVPCIM_REMOTE_SIGNALREADER_H

#include "host/tvpcim/Failure.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include <sys/signalfd.h>
#include <unistd.h>

namespace tvp::host::tvpcim {

/**
 * Lets SIGINT and SIGTERM be read from a file instead of ending the process, while the object lives. Made
 * before other threads, which inherit what is blocked.
 */
class SignalReader {
public:
  SignalReader() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGPIPE);  // a reader that went away is an error of the output, not the end
    pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    sigdelset(&signals, SIGPIPE);
    m_file = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_file < 0) {
      throw OperationError(std::string("signals cannot be waited for: ") + std::strerror(errno));
    }
  }
  ~SignalReader() {
    signalfd_siginfo taken{};
    while (::read(m_file, &taken, sizeof taken) > 0) {
    }
    ::close(m_file);
    // A second Ctrl-C ends the process at once, should the provider's clean-up take too long.
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }
  SignalReader(const SignalReader&) = delete;
  SignalReader& operator=(const SignalReader&) = delete;

  int file() const { return m_file; }

private:
  sigset_t m_before{};
  int m_file = -1;
};

}  // namespace tvp::host::tvpcim

#endif
