// SPDX-License-Identifier: Apache-2.0
// Programs are run from whatever process an object manager is, and what they do is told exactly.
#include "support/TemporaryDirectory.h"
#include "voltvk/engine/backing/lvm/LvmCommand.h"
#include "voltvk/engine/state/FileDescriptor.h"
#include "voltvk/engine/state/Refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace voltvk {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using End = ProgramOutcome::End;

ProgramOutcome
sh(const std::string& script, std::chrono::milliseconds timeout = 20s, std::size_t output = 1000) {
  return runProgram("/bin/sh", {"-c", script}, {timeout, 200ms, output});
}

TEST(Program, HowItEndsIsTold) {
  struct Case {
    const char* script;
    End end;
    int code;
    const char* output;
    const char* errors;
  };
  for (const Case& one : std::vector<Case>{
           {"echo out; echo err >&2", End::Exited, 0, "out\n", "err\n"},
           {"exec >&- 2>&-; exit 7", End::Exited, 7, "", ""},
           {"kill -9 $$", End::Killed, SIGKILL, "", ""},
           {"read line || echo none", End::Exited, 0, "none\n", ""},
           {"echo $0-$#; pwd", End::Exited, 0, "/bin/sh-0\n/\n", ""},
           {"sleep 60 & echo left one behind", End::Exited, 0, "left one behind\n", ""},
           {"env | grep -v ^PWD= | sort | cut -c1-9", End::Exited, 0, "LC_ALL=C\nLVM_SUPPR\nPATH=/usr\n",
            ""}}) {
    SCOPED_TRACE(one.script);
    const ProgramOutcome outcome = sh(one.script);
    EXPECT_EQ(outcome.end, one.end);
    EXPECT_EQ(outcome.code, one.code);
    EXPECT_EQ(outcome.output, one.output);
    EXPECT_EQ(outcome.errors, one.errors);
  }
  const ProgramOutcome notStarted = runProgram("/dev/null", {}, {});
  EXPECT_EQ(notStarted.end, End::NotStarted);
  EXPECT_EQ(notStarted.code, EACCES);
}

TEST(Program, IsBoundedInTimeAndOutput) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(sh("sleep 60", 50ms).end, End::TimedOut);
  EXPECT_EQ(sh("trap '' TERM; while :; do sleep 1; done", 50ms).end, End::TimedOut);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
  const ProgramOutcome much = sh("yes | head -c 500000; echo end >&2");
  EXPECT_EQ(much.output.size(), 1000U);
  EXPECT_EQ(much.errors, "end\n");
  EXPECT_TRUE(much.isCut);
  EXPECT_FALSE(much.isSuccess());
}

TEST(Program, DoesNotDependOnTheProcessAroundIt) {
  // An object manager may ignore the end of its children, and wait for any of them in a thread of its own; it
  // has descriptors and blocked signals.
  const pid_t host = fork();
  if (host == 0) {
    signal(SIGCHLD, SIG_IGN);
    signal(SIGTERM, SIG_IGN);
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    dup2(2, 77);
    std::atomic<bool> goesOn{true};
    std::atomic<int> stolen{0};
    std::thread reaper([&] {
      while (goesOn) {
        stolen += waitpid(-1, nullptr, WNOHANG) > 0 ? 1 : 0;
        std::this_thread::yield();
      }
    });
    std::atomic<int> failures{0};
    std::array<std::thread, 4> callers;
    for (std::thread& caller : callers) {
      caller = std::thread([&] {
        for (int i = 0; i < 10; ++i) {
          const ProgramOutcome outcome = sh("grep -E '^Sig(Blk|Ign)' /proc/self/status | grep -cv "
                                            "0000000000000000; ls /proc/$$/fd; exit 5");
          // In the middle of a pipe or not, a shell has the descriptors 0 to 2 alone.
          failures += outcome.output == "0\n0\n1\n2\n" && outcome.code == 5 ? 0 : 1;
        }
      });
    }
    for (std::thread& caller : callers) {
      caller.join();
    }
    goesOn = false;
    reaper.join();
    _exit(failures + stolen);
  }
  int status = 0;
  ASSERT_EQ(waitpid(host, &status, 0), host);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(Program, KeepsALockWhenTheProcessAroundItIsKilled) {
  const tvp::test::TemporaryDirectory directory;
  const std::string lock = directory.write("lock", "");
  const std::string started = directory.file("started");
  const std::string goOn = directory.file("goOn");
  ASSERT_EQ(mkfifo(started.c_str(), 0600) + mkfifo(goOn.c_str(), 0600), 0);
  const pid_t host = fork();
  if (host == 0) {
    const FileDescriptor held(open(lock.c_str(), O_RDWR | O_CLOEXEC));
    flock(held.get(), LOCK_EX);
    const KeptOpen kept(held.get());
    sh(": > " + started + "; : < " + goOn);
    _exit(0);
  }
  close(open(started.c_str(), O_RDONLY));
  kill(host, SIGKILL);
  waitpid(host, nullptr, 0);
  const FileDescriptor other(open(lock.c_str(), O_RDWR | O_CLOEXEC));
  EXPECT_EQ(flock(other.get(), LOCK_EX | LOCK_NB), -1);
  close(open(goOn.c_str(), O_WRONLY));
  EXPECT_EQ(flock(other.get(), LOCK_EX), 0);
}

class LvmCommands : public testing::Test {
protected:
  /** A volume manager that does what a script says. */
  LvmCommand command(const std::string& script) {
    const std::string path = m_directory.write("lvm", "#!/bin/sh\n" + script + "\n");
    chmod(path.c_str(), 0700);
    return LvmCommand(path, {300ms, 100ms, 100000});
  }

  template <typename Step>
  void expectRefused(TvkStatus status, const std::string& sentence, const Step& step) {
    try {
      step();
      ADD_FAILURE() << "not refused: " << sentence;
    } catch (const Refusal& refusal) {
      EXPECT_EQ(refusal.status(), status) << refusal.what();
      EXPECT_THAT(refusal.what(), HasSubstr(sentence));
    }
  }

  tvp::test::TemporaryDirectory m_directory;
};

TEST_F(LvmCommands, RefuseWithTheMessageOfTheVolumeManager) {
  struct Case {
    const char* script;
    const char* sentence;
  };
  for (const Case& one : std::vector<Case>{
           {"echo '  WARNING: nothing to see.' >&2; echo '  No room.' >&2; echo '  Stop.' >&2; exit 5",
            "could not try it: lvs failed with status 5: No room; Stop; correct that and try again"},
           {"echo '  WARNING: only this' >&2; exit 3", "lvs failed with status 3: WARNING: only this; "},
           {"exit 5", "lvs failed with status 5; correct"},
           {"kill -9 $$", "lvs was ended by signal 9; try again"},
           {"sleep 60", "lvs did not end within 0 s and was ended; look for other commands"},
           {"yes", "lvs did not end within 0 s"},
           {"yes | head -c 200000", "lvs writes more than can be read"},
           {"echo no report", "lvs did not print a report in JSON; see what"},
           {"echo '{\"report\": 1}'", "lvs did not print a report in JSON; see what"},
           {"", "lvs did not print a report in JSON"}}) {
    SCOPED_TRACE(one.script);
    const LvmCommand failing = command(one.script);
    expectRefused(TVK_BACKING_FAILED, one.sentence, [&] { failing.report("try it", {"lvs", "-a"}); });
  }
  expectRefused(TVK_BACKING_UNAVAILABLE, "'/none/lvm' of the volume manager is missing; install it", [] {
    LvmCommand("/none/lvm").run("try it", {"lvs"});
  });
  const LvmCommand echo = command("echo '{\"report\": [\"'$*'\"]}'; echo '  WARNING: noise' >&2");
  EXPECT_EQ(echo.report("try it", {"lvs", "-a"}).at(0), "lvs --reportformat json -a");
  EXPECT_EQ(messageOf(std::string(1000, 'x')).size(), 300U);
}

}  // namespace
}  // namespace voltvk
