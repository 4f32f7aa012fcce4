// SPDX-License-Identifier: Apache-2.0
#include "terminal/StandardStreams.h"

#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace tvp::terminal {

void takeClosedStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) == -1) {
      // It gets the lowest number that is free, which is this one, and the direction that does not work.
      static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
  }
}

}  // namespace tvp::terminal
