// SPDX-License-Identifier: Apache-2.0
#include "support/Lines.h"
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <csignal>
#include <ctime>

namespace tvp::test {
namespace {

using testing::HasSubstr;
using testing::MatchesRegex;

class TvpcimWatch : public TvpcimTest {
protected:
  /** Lets a pool come and go, which are two events. */
  void causeEvents(const std::string& drive) const {
    answer({"pool", "create", "gold", "--drives", drive, "--size", "1GiB"});
    answer({"pool", "delete", "gold"});
  }

  /** Starts a command and waits until it watches. */
  static RunningCommand watching(const Command& command) {
    RunningCommand running = command.start();
    EXPECT_TRUE(running.waitFor("watching TVP_CIMIndication")) << running.soFar().err;
    return running;
  }

  static std::vector<Json> eventsOf(const CommandResult& result) {
    std::vector<Json> events;
    for (const std::string& line : linesOf(result.out)) {
      events.push_back(Json::parse(line));
    }
    return events;
  }
};

TEST_F(TvpcimWatch, PrintsEachIndicationOnALineAndNoMoreThanWereAskedFor) {
  const std::string drive = addDrive("ssd", "10GiB");
  RunningCommand both = watching(command("tvpcim", {"watch", "--count", "2", "-o", "json"}));
  // Where summer time applies all year, two hours ahead.
  RunningCommand single =
      watching(command("tvpcim", {"watch", "--count", "1", "-o", "json"}).with("TZ", "AAA-1BBB,0/0,365/25"));
  const std::time_t before = std::time(nullptr);
  causeEvents(drive);
  const CommandResult result = both.finish();
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  const std::vector<Json> events = eventsOf(result);
  ASSERT_EQ(events.size(), 2U) << result.out;
  EXPECT_EQ(events[0].at("eventCode"), 201);
  EXPECT_EQ(events[1].at("eventCode"), 205);
  EXPECT_THAT(events[0].at("eventDesc"), HasSubstr("[gold]"));
  EXPECT_THAT(
      events[0].at("eventTime").get<std::string>(),
      MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[+-][0-9]{2}:[0-9]{2}"));

  const CommandResult summer = single.finish();
  EXPECT_EQ(summer.exitStatus, 0) << summer.err;
  const std::vector<Json> first = eventsOf(summer);
  ASSERT_EQ(first.size(), 1U) << "the provider fetches both events with one look: " << summer.out;
  EXPECT_EQ(first[0].at("eventCode"), 201);
  const std::string time = first[0].at("eventTime");
  std::tm parts{};
  const char* offset = ::strptime(time.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  ASSERT_NE(offset, nullptr) << time;
  EXPECT_STREQ(offset, "+02:00");
  constexpr std::time_t OFFSET = 7200;  // seconds
  const std::time_t shown = ::timegm(&parts) - OFFSET;
  EXPECT_GE(shown, before) << time;
  EXPECT_LE(shown, std::time(nullptr)) << time;
}

TEST_F(TvpcimWatch, EndsCleanlyOnASignalAndKeepsWhatItPrinted) {
  const std::string drive = addDrive("ssd", "10GiB");
  RunningCommand interrupted = watching(command("tvpcim", {"watch"}));
  RunningCommand terminated = watching(command("tvpcim", {"watch"}));
  causeEvents(drive);
  for (RunningCommand* watch : {&interrupted, &terminated}) {
    EXPECT_TRUE(watch->waitFor("was deleted")) << "lines come as they happen, not at the end";
    watch->signal(watch == &interrupted ? SIGINT : SIGTERM);
  }
  for (RunningCommand* watch : {&interrupted, &terminated}) {
    const CommandResult result = watch->finish();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.signal, 0);
  }
}

TEST_F(TvpcimWatch, EndsWithAFailureWhenItsOutputCannotBeWritten) {
  const std::string drive = addDrive("ssd", "10GiB");
  RunningCommand watch =
      watching(Command({"/bin/sh", "-c", "exec " TVP_BINARY_DIR "/bin/tvpcim watch > /dev/full"})
                   .with("VOLTVK_STATE", directory().file("state.db")));
  causeEvents(drive);
  const CommandResult result = watch.finish();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, HasSubstr("standard output cannot be written any more"));
}

TEST_F(TvpcimWatch, EndsAfterTheTimeOrASignalWithoutWaitingForTheListener) {
  // The listener sleeps five seconds between two looks; the clean-up alone may take as long.
  Command watch = command("tvpcim", {"watch", "--seconds", "1"});
  RunningCommand timed = watch.without("TVPCIM_STRICT").start();
  RunningCommand interrupted = command("tvpcim", {"watch"}).without("TVPCIM_STRICT").start();
  for (RunningCommand* running : {&timed, &interrupted}) {
    ASSERT_TRUE(running->waitFor("watching TVP_CIMIndication")) << running->soFar().err;
  }
  const auto start = std::chrono::steady_clock::now();
  interrupted.signal(SIGINT);
  for (RunningCommand* running : {&interrupted, &timed}) {
    const CommandResult result = running->finish();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.out, "");
  }
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4000));
}

}  // namespace
}  // namespace tvp::test
