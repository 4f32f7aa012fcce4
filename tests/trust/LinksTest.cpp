// SPDX-License-Identifier: Apache-2.0
// Neither the log nor the state is reached through links that other users may have put in its place.
#include "engine/EngineFixture.h"
#include "support/Lines.h"
#include "support/LogCapture.h"

#include <gtest/gtest.h>

#include <unistd.h>

namespace tvp::test {
namespace {

constexpr uid_t OTHER_USER = 65534;

TEST(Links, TheLogIsNotWrittenThroughTheLinkOfAnotherUser) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can give a link to another user";
  }
  const LogCapture log;
  const std::string path = log.root().file("var/log/TVP.txt");
  const std::string target = log.root().write("target", "precious");
  std::filesystem::remove(path);
  std::filesystem::create_symlink(target, path);
  ASSERT_EQ(::lchown(path.c_str(), OTHER_USER, OTHER_USER), 0);
  EXPECT_NE(KvsTrace("trace"), 0);
  EXPECT_NE(KvsLogMsg(KVS_LOG_ERROR, "message"), 0);
  EXPECT_EQ(readFile(target), "precious");
  // The administrator may keep the log elsewhere, and the failures above must have left no lock behind.
  ASSERT_EQ(::lchown(path.c_str(), 0, 0), 0);
  EXPECT_EQ(KvsLogMsg(KVS_LOG_ERROR, "message"), 0);
  EXPECT_NE(readFile(target).find("message"), std::string::npos);
}

TEST(Links, TheStateFilesAreNotReachedThroughLinks) {
  for (const char* name : {"state.db", "state.db-wal", "state.db-shm"}) {
    SCOPED_TRACE(name);
    const TemporaryDirectory directory;
    const std::string target = directory.write("target", "precious");
    std::filesystem::create_symlink(target, directory.file(name));
    ::setenv("VOLTVK_STATE", directory.file("state.db").c_str(), 1);
    EXPECT_ANY_THROW(Storage::addDrive(TVK_DEVICE_HDD, 100 * MIB));
    EXPECT_EQ(readFile(target), "precious");
  }
}

}  // namespace
}  // namespace tvp::test
