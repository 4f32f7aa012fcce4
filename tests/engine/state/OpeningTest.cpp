// SPDX-License-Identifier: Apache-2.0
// Opening and reading the state beside processes that use it, were killed, or keep it on a read-only file
// system.
#include "engine/EngineFixture.h"
#include "support/Lines.h"

#include <sqlite3.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tvp::test;
namespace fs = std::filesystem;

namespace {

/** A process that runs statements on a database and is then stopped. Killed on destruction. */
class StoppedProcess {
public:
  StoppedProcess(const std::string& path, const char* statements) : m_id(fork()) {
    if (m_id == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      sqlite3* handle = nullptr;
      sqlite3_open(path.c_str(), &handle);
      const int code = sqlite3_exec(handle, statements, nullptr, nullptr, nullptr);
      raise(code == SQLITE_OK ? SIGSTOP : SIGKILL);
    }
    int status = 0;
    waitpid(m_id, &status, WUNTRACED);
    EXPECT_TRUE(WIFSTOPPED(status));
  }
  ~StoppedProcess() {
    kill(m_id, SIGKILL);
    waitpid(m_id, nullptr, 0);
  }
  StoppedProcess(const StoppedProcess&) = delete;
  StoppedProcess& operator=(const StoppedProcess&) = delete;

private:
  pid_t m_id;
};

class OpeningTest : public EngineTest {
protected:
  OpeningTest() {
    addDrive(TVK_DEVICE_HDD, 50 * MIB);
    createPool(poolSpec("pool", {0}, 50 * MIB));
    m_lib.reset();
  }
  std::string openError() {
    m_lib.reset();
    m_lib = std::make_unique<TvkLib>();
    return m_lib->getOpenError();
  }
  template <typename Function>
  static std::chrono::steady_clock::duration timeOf(const Function& function) {
    const auto start = std::chrono::steady_clock::now();
    function();
    return std::chrono::steady_clock::now() - start;
  }
  const std::string m_path = m_directory.file("state.db");
};

TEST_F(OpeningTest, NeitherOpeningNorReadingWaitsForAWriter) {
  for (const char* file : {"size", "queue/rotational"}) {
    m_directory.write(
        std::string("host/sys/block/sda/") + file, "204800\n");  // a drive that is still to be recorded
  }
  {
    const StoppedProcess writer(m_path, "BEGIN IMMEDIATE; UPDATE pool SET description = 'unfinished'");
    const auto opened = timeOf([&] { EXPECT_EQ(openError(), ""); });
    const auto read = timeOf([&] { EXPECT_EQ(pools().size() + drives().size(), 2U); });
    VirtualPoolSpec spec = poolSpec("other", {0}, 10 * MIB);
    std::atomic<bool> done{false};
    std::thread reader([&] {
      while (!done) {
        EXPECT_EQ(pools().size(), 1U) << "readers go on while a change waits";
      }
    });
    // What one wait takes here, where it may be under tools that make everything slow.
    const auto oneWait =
        timeOf([&] { EXPECT_THROW(state()->change([](voltvk::Connection&) {}), voltvk::Refusal); });
    Ret busy;
    const auto waited = timeOf([&] { busy = adapter().createVirtualPool(spec); });
    done = true;
    reader.join();
    EXPECT_EQ(busy.getReturn(), TVK_BUSY);
    EXPECT_EQ(
        busy.getDetail(),
        "the state file " + m_path +
            " is held by another process (database is locked); try again when that has ended");
    EXPECT_GE(oneWait, voltvk::BUSY_TIMEOUT / 2);
    EXPECT_LT(opened, oneWait / 2);
    EXPECT_LT(read, oneWait / 2);
    EXPECT_LT(waited, oneWait * 3 / 2) << "waited a second time, for the event";
  }
  EXPECT_EQ(adapter().modifyVirtualPool(1, poolSpec("other", {}, 0, 0)).getReturn(), TVK_OK);
  state()->scanDrives();
  EXPECT_EQ(drives().size(), 2U);
}

TEST_F(OpeningTest, OnlyAFileThatWasLeftOpenIsReadWhole) {
  std::string bytes = readFile(m_path);
  const std::size_t page = bytes.find("] was created") / 4096 * 4096;
  std::string damaged = bytes;
  damaged.replace(page, 4096, 4096, '\xA5');  // the page of the events, which listing does not read
  const auto write = [&](const std::string& content) { std::ofstream(m_path, std::ios::binary) << content; };
  write(damaged);
  EXPECT_EQ(openError(), "");
  EXPECT_EQ(pools().size(), 1U);
  m_lib.reset();
  const char* change = "UPDATE setting SET value = 0 WHERE name = 'policy_running'";
  {
    const StoppedProcess user(m_path, change);
    EXPECT_EQ(openError(), "") << "in use, and its user has found it sound";
    m_lib.reset();
  }
  const std::string error = openError();
  EXPECT_NE(
      error.find("is damaged; move it and the files beside it away, then restore a backup"),
      std::string::npos)
      << error;
  m_lib.reset();
  fs::remove(m_path + "-wal");
  write(bytes);
  { const StoppedProcess user(m_path, change); }
  ASSERT_GT(fs::file_size(m_path + "-wal"), 0U);
  EXPECT_EQ(openError(), "");
  EXPECT_EQ(fs::file_size(m_path + "-wal"), 0U) << "checked once";
  EXPECT_FALSE(m_lib->getRootObject()->isPolicyEngineRunning());
}

TEST_F(OpeningTest, AReadOnlyFileSystemCanBeListed) {
  const fs::path mounted = m_directory.path() / "mounted %?#";
  fs::create_directory(mounted);
  const pid_t child = fork();
  if (child == 0) {
    const auto mount = [&](unsigned long flags) {
      return ::mount(m_directory.path().c_str(), mounted.c_str(), "none", flags, nullptr) == 0;
    };
    if (unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
        !mount(MS_BIND) || !mount(MS_BIND | MS_REMOUNT | MS_RDONLY)) {
      _exit(77);
    }
    ::setenv("VOLTVK_STATE", (mounted / "state.db").c_str(), 1);
    const std::string error = openError();
    const std::string detail = adapter().deleteVirtualPool(1).getDetail();
    EXPECT_EQ(error, "");
    EXPECT_EQ(pools().size(), 1U);
    EXPECT_NE(detail.find("lies on a read-only file system"), std::string::npos) << detail;
    // It can still be changed where it is mounted with write access.
    { const StoppedProcess writer(m_path, "UPDATE pool SET name = 'renamed'"); }
    EXPECT_STREQ(pools()[0]->getName(), "renamed");
    _exit(HasFailure() ? 1 : 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) == 77) {
    GTEST_SKIP() << "this process may not mount";
  }
  EXPECT_EQ(status, 0);
}

TEST_F(OpeningTest, ARestoredCopyIsClosedToOthers) {
  chmod(m_path.c_str(), 0644);
  EXPECT_EQ(openError(), "");
  for (const char* suffix : {"", "-wal", "-shm"}) {
    struct stat status {};
    ASSERT_EQ(stat((m_path + suffix).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U) << suffix;
  }
}

}  // namespace
