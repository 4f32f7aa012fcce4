// SPDX-License-Identifier: Apache-2.0
// No test writes to a drive of the machine that runs it.
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace tvp::test {
namespace {

// A device that the kernel does not have: opening it fails, should the guard be absent.
constexpr unsigned int NO_MAJOR = 511;

TEST(DrivesOfThisMachine, AreNotOpenedForWriting) {
  const TemporaryDirectory directory;
  const std::string drive = directory.file("drive");
  ASSERT_EQ(::mknod(drive.c_str(), S_IFBLK | 0600, makedev(NO_MAJOR, 0)), 0);
  const char* const ENDED = "tried to write to the drive";
  EXPECT_DEATH(::open(drive.c_str(), O_RDWR | O_CLOEXEC), ENDED);
  EXPECT_DEATH(static_cast<void>(::openat(AT_FDCWD, drive.c_str(), O_WRONLY | O_CLOEXEC)), ENDED);
  EXPECT_DEATH(std::ofstream{drive}, ENDED);
  EXPECT_DEATH(std::system(("exec 3>" + drive).c_str()) == 0 ? void() : std::abort(), ENDED);
  EXPECT_EQ(::open(drive.c_str(), O_RDONLY | O_CLOEXEC), -1);
}

}  // namespace
}  // namespace tvp::test
