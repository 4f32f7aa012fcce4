// SPDX-License-Identifier: Apache-2.0
// Times as texts, facts about the host, files at fixed paths, and dynamic libraries.
#include "oslib/KVSPaths.h"
#include "oslib/KVSSystem.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <regex>
#include <string>

#include <dlfcn.h>
#include <sys/utsname.h>
#include <unistd.h>

namespace {

using tvp::test::TemporaryDirectory;

void setZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

TEST(Time, LocalTimeStampsPadOnlySomeFields) {
  char expected[32] = "";
  char stamp[KVS_LOCAL_TIME_SIZE] = "";
  char fileName[KVS_LOCAL_TIME_SIZE] = "";
  // The second may change between the readings: repeat until both belong to the same one.
  for (std::time_t now = 0; now != std::time(nullptr);) {
    now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::strftime(expected, sizeof expected, local.tm_mday < 10 ? "%m/%e/%Y %T:" : "%m/%d/%Y %T:", &local);
    EXPECT_EQ(KvsGetLocalTime(stamp, 1), 0);
    EXPECT_EQ(KvsGetLocalTime(fileName, 2), 0);
  }
  std::string start = expected;
  start.erase(std::remove(start.begin() + 3, start.begin() + 5, ' '), start.begin() + 5);
  EXPECT_EQ(std::string(stamp).substr(0, start.size()), start);
  EXPECT_TRUE(std::regex_match(stamp + start.size(), std::regex(R"(0|[1-9]\d{0,2})"))) << stamp;
  EXPECT_TRUE(std::regex_match(fileName, std::regex(R"(\d\d_\d{1,2}_\d{4} \d\d\.\d\d\.\d\d\.\d{1,3})")))
      << fileName;
  EXPECT_EQ(KvsGetLocalTime(stamp, 7), 0);
  EXPECT_NE(std::strchr(stamp, '/'), nullptr);
  EXPECT_EQ(KvsGetLocalTime(nullptr, 1), 3);
}

TEST(Time, ZoneIsShownInMinutes) {
  const std::pair<const char*, const char*> cases[] = {
      {"UTC0", "+000"},
      {"LOC-5:30", "+330"},
      {"LOC5", "-300"},
      {"LOC-14", "+840"},
      {"LOC12", "-720"},
      {"LOC0:45", "-045"},
      {"LOC0YYY,0/0,J365/25", "-060"},  // daylight saving all year
      {"LOC-1YYY,0/0,J365/25", "+000"}};
  for (const auto& [zone, expected] : cases) {
    setZone(zone);
    char text[KVS_TIME_ZONE_SIZE] = "";
    EXPECT_EQ(KvsGetTimeZone(text), 0);
    EXPECT_STREQ(text, expected) << zone;
  }
  EXPECT_EQ(KvsGetTimeZone(nullptr), 1);
}

TEST(Time, BreakdownAndTextAreValidFrom1970To3000) {
  setZone("UTC0");
  constexpr std::uint64_t TIME = 1717595112999;
  constexpr std::uint64_t LAST = 32535215999999;  // the last millisecond of the year 3000
  std::tm parts{};
  EXPECT_EQ(KvsGetTimeInTM(0, &parts), 0);
  EXPECT_EQ(KvsGetTimeInTM(LAST, &parts), 0);
  EXPECT_EQ(KvsGetTimeInTM(LAST + 1, &parts), 1);
  EXPECT_EQ(KvsGetTimeInTM(UINT64_MAX, &parts), 1);
  EXPECT_EQ(KvsGetTimeInTM(TIME, nullptr), 1);

  char text[32] = "untouched";
  EXPECT_EQ(KvsGetFormatedTime(TIME, text, 24), 1);
  EXPECT_EQ(KvsGetFormatedTime(0, text, 25), 1);
  EXPECT_EQ(KvsGetFormatedTime(LAST + 1, text, 25), 1);
  EXPECT_EQ(KvsGetFormatedTime(TIME, nullptr, 25), 1);
  EXPECT_STREQ(text, "untouched");
  EXPECT_EQ(KvsGetFormatedTime(TIME, text, 25), 0);
  EXPECT_STREQ(text, "06/05/2024 13:45:12");
  setZone("LOC5");
  EXPECT_EQ(KvsGetTimeInTM(1000, &parts), 1) << "still 1969 there";
}

TEST(Time, AChangedTimeZoneCountsAtOnce) {
  const auto hourIn = [](const char* zone) {
    setenv("TZ", zone, 1);
    _SysTime time{};
    EXPECT_EQ(KvsGetSystemTime(&time), 0);
    return time.hours;
  };
  // The hour may change between the readings: take a pair of one hour.
  std::uint32_t before = 0;
  std::uint32_t elsewhere = 0;
  do {
    before = hourIn("UTC0");
    elsewhere = hourIn("LOC-5");
  } while (hourIn("UTC0") != before);
  EXPECT_EQ(elsewhere, (before + 5) % 24);
}

TEST(System, HostAndEnvironmentAreReadAsTexts) {
  utsname system{};
  uname(&system);
  const std::string info = std::string(system.sysname) + " " + system.release + " " + system.machine + " ";
  char text[512];
  EXPECT_EQ(KvsGetOSInfo(text, sizeof text), 0);
  EXPECT_EQ(text, info);
  char shortText[6] = "#####";
  EXPECT_EQ(KvsGetOSInfo(shortText, 4), 0);
  EXPECT_EQ(std::string(shortText), info.substr(0, 4) + "#");
  EXPECT_EQ(KvsGetHostName(text, sizeof text), 0);
  EXPECT_STREQ(text, system.nodename);
  EXPECT_EQ(KvsGetHostName(nullptr, 0), 0);

  setenv("TVP_TEST_VALUE", "longer than the size", 1);
  EXPECT_EQ(KvsGetenv("TVP_TEST_VALUE", 1, text), 0);
  EXPECT_STREQ(text, "longer than the size");
  unsetenv("TVP_TEST_VALUE");
  EXPECT_EQ(KvsGetenv("TVP_TEST_VALUE", sizeof text, text), 1);
  EXPECT_EQ(KvsGetenv(nullptr, sizeof text, text), 3);
  EXPECT_EQ(KvsGetenv("PATH", 0, nullptr), 3);
}

/** A root directory with a configuration file, for this process. */
class Configuration : public ::testing::Test {
protected:
  Configuration() { kvsSetPathRoot(m_root.path().string()); }
  ~Configuration() override { kvsSetPathRoot(""); }

  void write(const std::string& content) { m_root.write("etc/Kelvora/hexRAID.conf", content); }

  TemporaryDirectory m_root;
};

TEST_F(Configuration, ProductVersionIsTheFourthLine) {
  struct Case {
    std::string content;
    std::uint32_t length;
    std::string expected;
  };
  const std::string nulls(8, '\0');
  const Case cases[] = {
      {"a\nb\nc\n7.31.0-4\ne\n", 8, "7.31.0-4"},
      {"a\nb\nc\n7.31.0-4\n", 3, "7.3"},
      {"a\nb\nc\n7.3", 8, std::string("7.3") + nulls.substr(0, 5)},
      {"a\nb\nc\n7.3\nsecret\n", 8, std::string("7.3") + nulls.substr(0, 5)},
      {"a\nb\nc\n", 8, nulls},
      {"", 8, nulls},
      {"a\nb\nc\n\nfifth\n", 8, nulls},
      {"a\nb\nc\n7.3\n", 0, ""},
      {"a\nb\nc\n7.3\n", 65536 + 2, "7."},                  // lengths count 16 bits
      {std::string(79, 'x') + "b\nc\n7.3\n5\n", 3, "7.3"},  // a line of over 79 characters counts as two
  };
  for (const Case& item : cases) {
    SCOPED_TRACE(item.content);
    write(item.content);
    std::string buffer(12, '#');
    EXPECT_EQ(KvsGetProductVersion(buffer.data(), item.length), 0);
    EXPECT_EQ(buffer, item.expected + std::string(12 - item.expected.size(), '#'));
  }
  EXPECT_EQ(KvsGetProductVersion(nullptr, 8), 1);
  std::filesystem::remove(m_root.file("etc/Kelvora/hexRAID.conf"));
  char untouched[] = "#";
  EXPECT_EQ(KvsGetProductVersion(untouched, 1), 1);
  EXPECT_STREQ(untouched, "#");
}

TEST(Paths, TheEnvironmentRootIsNotPrefixedToTheUserList) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // a new process: the variable is read once
  EXPECT_EXIT(
      {
        setenv("TVP_TEST_ROOT", "/elsewhere", 1);
        const bool rooted = kvsLogDirectory() == "/elsewhere/var/log" &&
                            kvsEventCatalogueDirectory() == "/elsewhere/usr/VolMan/" &&
                            kvsProductConfigurationFile() == "/elsewhere/etc/Kelvora/hexRAID.conf";
        _exit(rooted && kvsPasswdFile() == "/etc/passwd" ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(Library, NamesAlwaysGetTheLibrarySuffix) {
  Dl_info mathLibrary{};
  ASSERT_NE(dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(&::cbrt)), &mathLibrary), 0);
  const TemporaryDirectory directory;
  std::filesystem::create_symlink(mathLibrary.dli_fname, directory.file("libprobe.so"));
  const std::string name = directory.file("libprobe");

  std::uint32_t error = 9;
  EXPECT_EQ(KvsLoadLibrary(nullptr, &error), nullptr);
  EXPECT_EQ(KvsLoadLibrary(name.c_str(), nullptr), nullptr);
  EXPECT_EQ(error, 9U);
  EXPECT_EQ(KvsLoadLibrary((name + ".so").c_str(), &error), nullptr);
  EXPECT_EQ(error, 1U);

  void* library = KvsLoadLibrary(name.c_str(), &error);
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(error, 0U);
  EXPECT_NE(KvsGetFuncAddress(library, "cbrt", &error), nullptr);
  EXPECT_EQ(error, 0U);
  EXPECT_EQ(KvsGetFuncAddress(library, "no_such_symbol", &error), nullptr);
  EXPECT_EQ(error, 1U);
  EXPECT_EQ(KvsGetFuncAddress(library, nullptr, &error), nullptr);
  void* const handle = library;
  EXPECT_EQ(KvsUnloadLibrary(&library), 0);
  EXPECT_EQ(library, handle);
  EXPECT_EQ(KvsUnloadLibrary(nullptr), 1);
}

}  // namespace
