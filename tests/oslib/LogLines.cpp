// SPDX-License-Identifier: Apache-2.0
// What the log writes, when, and what its functions return.
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"
#include "oslib/KVSPaths.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <future>
#include <regex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <pthread.h>
#include <unistd.h>

namespace {

using tvp::test::LogCapture;
using tvp::test::TemporaryDirectory;

constexpr std::uintmax_t LARGEST = 10485759;
const std::string STAMP = R"(\d\d/\d{1,2}/\d{4} \d\d:\d\d:\d\d:\d{1,3})";

std::string threadColumn() {
  char text[16];
  std::snprintf(text, sizeof text, "%8X", static_cast<unsigned int>(pthread_self()));
  return text;
}

/** A root directory of its own for the log, which the test initialises. */
class Log : public ::testing::Test {
protected:
  Log() { kvsSetPathRoot(m_root.path().string()); }
  ~Log() override {
    KvsLogUninit();
    kvsSetPathRoot("");
  }

  std::string path(const std::string& module = "TVP") const {
    return m_root.file("var/log/" + module + ".txt");
  }
  void create(const std::string& module = "TVP") const { m_root.write("var/log/" + module + ".txt", ""); }
  bool exists(const std::string& module = "TVP") const { return std::filesystem::exists(path(module)); }

  std::vector<std::string> lines(const std::string& module = "TVP") const {
    return tvp::test::linesOf(tvp::test::readFile(path(module)));
  }

  TemporaryDirectory m_root;
};

TEST_F(Log, TracesAndMessagesHaveTheirOwnLineFormats) {
  const std::pair<std::string, std::string> cases[] = {
      {"TVP", "-------"}, {"tvpIf", "-----"}, {"TenLetters", ""}};
  for (const auto& [module, dashes] : cases) {
    SCOPED_TRACE(module);
    create(module);
    ASSERT_EQ(KvsLogInit(module.c_str()), 0);
    EXPECT_EQ(KvsLogMsg(KVS_LOG_DEBUG, "Ref count = %d", 1), 0);
    EXPECT_EQ(KvsTrace("Entering %s %n"), 0);
    const std::vector<std::string> written = lines(module);
    ASSERT_EQ(written.size(), 3U);
    std::string header = STAMP;
    for (const std::string& part :
         {std::string(R"(\[)"), module, dashes, threadColumn(), std::string(R"(\])")}) {
      header += part;
    }
    EXPECT_TRUE(
        std::regex_match(written[0], std::regex(header + "  :LOG_INFO :: ######OSLIB Init Suucesazful#####")))
        << written[0];
    EXPECT_TRUE(std::regex_match(written[1], std::regex(header + "\t:LOG_DEBUG::Ref count = 1")))
        << written[1];
    EXPECT_TRUE(std::regex_match(written[2], std::regex(header + "  :LOG_INFO :: Entering %s %n")))
        << written[2];
    EXPECT_EQ(KvsLogUninit(), 0);
  }
}

TEST_F(Log, EveryLevelHasItsTag) {
  const LogCapture log;
  const std::vector<std::pair<int, std::string>> tags = {
      {1, ":LOG_FATAL::"}, {2, ":LOG_ERROR::"}, {3, ":LOG_WARN::"}, {4, ":LOG_DEBUG::"}, {5, ":LOG_INFO::"},
      {0, ":LOG_INFO::"},  {6, ":LOG_INFO::"},  {9, ":LOG_INFO::"}, {-1, ":LOG_INFO::"}};
  for (const auto& [level, tag] : tags) {
    log.clear();
    EXPECT_EQ(KvsLogMsg(level, "text"), 0);
    EXPECT_EQ(log.lines(), std::vector<std::string>{tag + "text"}) << level;
  }
}

TEST_F(Log, IsSwitchedOnByTheFileAndNeverCreatesIt) {
  EXPECT_EQ(KvsTrace("before initialisation"), 1);
  std::filesystem::create_directories(m_root.file("var/log"));
  ASSERT_EQ(KvsLogInit("TVP"), 0);
  EXPECT_EQ(KvsTrace("absent"), 1);
  EXPECT_EQ(KvsLogMsg(KVS_LOG_ERROR, "absent"), 1);
  EXPECT_FALSE(exists());

  create();
  EXPECT_EQ(KvsTrace("present"), 0);
  EXPECT_EQ(KvsLogMsg(KVS_LOG_ERROR, "present"), 0);
  EXPECT_EQ(lines().size(), 2U);

  std::filesystem::remove(path());
  EXPECT_EQ(KvsTrace("removed"), 1);
  EXPECT_FALSE(exists());
}

TEST_F(Log, StopsAtTenMebibytesAndRestartsWhenEmptied) {
  create();
  ASSERT_EQ(KvsLogInit("TVP"), 0);
  for (const auto& write :
       {+[] { return KvsTrace("line"); }, +[] { return KvsLogMsg(KVS_LOG_DEBUG, "line"); }}) {
    std::filesystem::resize_file(path(), LARGEST);
    EXPECT_EQ(write(), 0);
    EXPECT_GT(std::filesystem::file_size(path()), LARGEST);
    std::filesystem::resize_file(path(), LARGEST + 1);
    EXPECT_EQ(write(), 5);
    EXPECT_EQ(std::filesystem::file_size(path()), LARGEST + 1);
    std::filesystem::resize_file(path(), 0);
    EXPECT_EQ(write(), 0);
    EXPECT_EQ(lines().size(), 1U);
  }
}

TEST_F(Log, FirstSuccessfulInitialisationWins) {
  create("TVP");
  create("tvpIf");
  EXPECT_EQ(KvsLogUninit(), 1);
  EXPECT_EQ(KvsLogInit(nullptr), 3);
  EXPECT_EQ(KvsTrace("not yet"), 1);
  EXPECT_EQ(KvsLogInit("TVP"), 0);
  EXPECT_EQ(KvsLogInit("tvpIf"), 0);
  EXPECT_EQ(KvsTrace("line"), 0);
  EXPECT_EQ(lines("TVP").size(), 2U);
  EXPECT_TRUE(lines("tvpIf").empty());

  EXPECT_EQ(KvsLogUninit(), 0);
  EXPECT_EQ(KvsLogMsg(KVS_LOG_DEBUG, "ended"), 1);
  EXPECT_EQ(KvsLogInit("tvpIf"), 0);
  EXPECT_EQ(lines("tvpIf").size(), 1U);
}

TEST_F(Log, LongMessagesAreCutAndLongTracesAreNot) {
  create();
  ASSERT_EQ(KvsLogInit("TVP"), 0);
  const std::string text(700, 'x');
  EXPECT_EQ(KvsLogMsg(KVS_LOG_DEBUG, "%s", text.c_str()), 0);
  EXPECT_EQ(KvsTrace(text.c_str()), 0);
  const std::vector<std::string> written = lines();
  ASSERT_EQ(written.size(), 3U);
  EXPECT_EQ(written[1].size(), 511U);
  EXPECT_NE(written[2].find(text), std::string::npos);
}

TEST_F(Log, LinesOfThreadsDoNotMix) {
  create();
  ASSERT_EQ(KvsLogInit("TVP"), 0);
  constexpr int THREADS = 4;
  constexpr int PAIRS = 100;
  std::vector<std::future<void>> writers;
  writers.reserve(THREADS);
  for (int thread = 0; thread < THREADS; ++thread) {
    writers.push_back(std::async(std::launch::async, [] {
      for (int pair = 0; pair < PAIRS; ++pair) {
        KvsTrace("a trace line of some length");
        KvsLogMsg(KVS_LOG_DEBUG, "%s number %03d", "a message", pair);
      }
    }));
  }
  writers.clear();  // waits for them
  const std::regex shape(
      STAMP + R"(\[TVP-------[ 0-9A-F]{8}\](\t:LOG_DEBUG::a message number \d{3}|)" +
      R"(  :LOG_INFO :: (a trace line of some length|######OSLIB Init Suucesazful#####)))");
  const std::vector<std::string> written = lines();
  EXPECT_EQ(written.size(), 1U + 2 * THREADS * PAIRS);
  for (const std::string& line : written) {
    EXPECT_TRUE(std::regex_match(line, shape)) << line;
  }
}

/** Ends this process with 0 when another thread can (or, as expected, cannot) write to the log. */
[[noreturn]] void exitByLock(bool expectedHeld, int result) {
  std::promise<void> through;
  std::future<void> done = through.get_future();
  std::thread([&through] {
    KvsTrace("from another thread");
    through.set_value();
  }).detach();
  const auto bound = expectedHeld ? std::chrono::milliseconds(200) : std::chrono::minutes(2);
  const bool held = done.wait_for(bound) == std::future_status::timeout;
  _exit(result == 1 && held == expectedHeld ? 0 : 1);
}

TEST_F(Log, EndsInTheMiddleOfLinesWithoutLeavingALock) {
  ASSERT_EQ(KvsLogInit("TVP"), 0);
  std::atomic<bool> stop{false};
  std::vector<std::future<void>> writers;
  writers.reserve(2);
  for (int writer = 0; writer < 2; ++writer) {
    writers.push_back(std::async(std::launch::async, [&stop] {
      while (!stop) {
        KvsLogMsg(KVS_LOG_DEBUG, "line");
      }
    }));
  }
  for (int round = 0; round < 2000; ++round) {
    create();
    std::filesystem::remove(path());
  }
  stop = true;
  for (std::future<void>& writer : writers) {
    ASSERT_EQ(writer.wait_for(std::chrono::minutes(2)), std::future_status::ready)
        << "a lock was left behind";
  }
}

// A directory in place of the log file exists but cannot be opened, not even by root.
TEST_F(Log, FailedOpenKeepsTheLockAfterAMessageButNotAfterATrace) {
  std::filesystem::create_directories(path());
  EXPECT_EXIT(
      (KvsLogInit("TVP"), exitByLock(true, KvsLogMsg(KVS_LOG_DEBUG, "text"))), ::testing::ExitedWithCode(0),
      "");
  EXPECT_EXIT((KvsLogInit("TVP"), exitByLock(false, KvsTrace("text"))), ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        KvsLogInit("TVP");
        const int result = KvsLogMsg(KVS_LOG_DEBUG, "text");
        std::filesystem::remove(path());
        KvsTrace("from the holder, which sees that the log is gone");
        exitByLock(true, result);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_EXIT(
      {
        KvsLogInit("TVP");
        const int result = KvsLogMsg(KVS_LOG_DEBUG, "text");
        KvsLogUninit();
        KvsLogInit("TVP");  // with a lock of its own
        exitByLock(false, result);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(Log, LongModuleNamesKeepTheLockAfterATraceButNotAfterAMessage) {
  const char* module = "ElevenChars";
  ASSERT_EQ(KvsLogInit(module), 0);
  EXPECT_EXIT((create(module), exitByLock(true, KvsTrace("text"))), ::testing::ExitedWithCode(0), "");
  std::filesystem::remove(path(module));
  EXPECT_EXIT(
      {
        create(module);
        const int result = KvsLogMsg(KVS_LOG_DEBUG, "text");
        std::filesystem::remove(path(module));
        exitByLock(false, result);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(Log, MethodTraceBracketsItsScope) {
  const LogCapture log;
  const std::string longName(300, 'n');
  try {
    const tvp::cim::fwf::tvpMethodTrace outer("TVPInterface");
    const tvp::cim::fwf::tvpMethodTrace inner(longName.c_str());
    throw std::runtime_error("leave");
  } catch (const std::runtime_error&) {
    KvsTrace("caught");
  }
  const std::string cut = longName.substr(0, 255 - std::string("ENTER : ").size());
  EXPECT_EQ(
      log.lines(), (std::vector<std::string>{
                       LogCapture::trace("ENTER : TVPInterface"), LogCapture::trace("ENTER : " + cut),
                       LogCapture::trace("EXIT  : " + cut), LogCapture::trace("EXIT  : TVPInterface"),
                       LogCapture::trace("caught")}));
}

}  // namespace
