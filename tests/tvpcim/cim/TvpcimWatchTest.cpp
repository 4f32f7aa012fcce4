// SPDX-License-Identifier: Apache-2.0
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

#include <csignal>

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
};

TEST_F(TvpcimWatch, PrintsEachIndicationOnALineAndEndsAfterTheLast) {
  const std::string drive = addDrive("ssd", "10GiB");
  RunningCommand watch = command("tvpcim", {"watch", "--count", "2", "-o", "json"}).start();
  ASSERT_TRUE(watch.waitFor("watching TVP_CIMIndication")) << watch.soFar().err;
  causeEvents(drive);
  const CommandResult result = watch.finish();
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  std::istringstream lines(result.out);
  std::vector<Json> events;
  for (std::string line; std::getline(lines, line);) {
    events.push_back(Json::parse(line));
  }
  ASSERT_EQ(events.size(), 2U) << result.out;
  EXPECT_EQ(events[0].at("eventCode"), 201);
  EXPECT_EQ(events[1].at("eventCode"), 205);
  EXPECT_THAT(events[0].at("eventDesc"), HasSubstr("[gold]"));
  EXPECT_THAT(
      events[0].at("eventTime").get<std::string>(),
      MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}[+-][0-9]{2}:[0-9]{2}"));
}

TEST_F(TvpcimWatch, EndsCleanlyOnASignalAndKeepsWhatItPrinted) {
  const std::string drive = addDrive("ssd", "10GiB");
  RunningCommand interrupted = command("tvpcim", {"watch"}).start();
  RunningCommand terminated = command("tvpcim", {"watch"}).start();
  ASSERT_TRUE(interrupted.waitFor("watching TVP_CIMIndication")) << interrupted.soFar().err;
  ASSERT_TRUE(terminated.waitFor("watching TVP_CIMIndication")) << terminated.soFar().err;
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
  RunningCommand watch = Command({"/bin/sh", "-c", "exec " TVP_BINARY_DIR "/bin/tvpcim watch > /dev/full"})
                             .with("VOLTVK_STATE", folder().file("state.db"))
                             .start();
  ASSERT_TRUE(watch.waitFor("watching TVP_CIMIndication")) << watch.soFar().err;
  causeEvents(drive);
  const CommandResult result = watch.finish();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, HasSubstr("standard output cannot be written any more"));
}

TEST_F(TvpcimWatch, EndsAfterTheTimeWithoutEvents) {
  const CommandResult result = tvpcim({"watch", "--seconds", "1"});
  EXPECT_EQ(result.exitStatus, 0) << result.err;
  EXPECT_EQ(result.out, "");
}

}  // namespace
}  // namespace tvp::test
