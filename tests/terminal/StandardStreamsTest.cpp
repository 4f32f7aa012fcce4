// SPDX-License-Identifier: Apache-2.0
#include "terminal/StandardStreams.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace tvp::terminal {
namespace {

/** In a process whose caller has closed the streams. */
[[noreturn]] void openAndPrint() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    ::close(stream);
  }
  takeClosedStreams();
  const int file = ::open("/dev/null", O_RDWR);
  char byte = 'x';
  const bool isSound = file > STDERR_FILENO && ::write(STDOUT_FILENO, &byte, 1) == -1 &&
                       ::write(STDERR_FILENO, &byte, 1) == -1 && ::read(STDIN_FILENO, &byte, 1) == -1;
  ::_exit(isSound ? 0 : 1);
}

TEST(StandardStreams, ThatAreClosedAreNotThoseOfFilesOpenedLater) {
  EXPECT_EXIT(openAndPrint(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tvp::terminal
