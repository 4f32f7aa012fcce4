// SPDX-License-Identifier: Apache-2.0
#include "tvpcim/Tvpcim.h"

#include <gmock/gmock.h>

namespace tvp::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

/** tvpcim on a provider that breaks rules and says unpleasant things. */
class TvpcimFaultyProvider : public TvpcimTest {
protected:
  Command onFaulty(Words words) const {
    words.insert(words.end(), {"--provider", TVP_FAULTY_PROVIDER});
    return command("tvpcim", words);
  }
};

TEST_F(TvpcimFaultyProvider, ABrokenRuleIsAWarningAndAFailureWhenTestsAskForIt) {
  const CommandResult strict = onFaulty({"drives", "-o", "json"}).run();
  EXPECT_EQ(strict.exitStatus, 1);
  const CommandResult lenient = onFaulty({"drives", "-o", "json"}).without("TVPCIM_STRICT").run();
  EXPECT_EQ(lenient.exitStatus, 0);
  for (const CommandResult& result : {strict, lenient}) {
    EXPECT_EQ(result.out, "[]\n");
    EXPECT_THAT(result.err, StartsWith("tvpcim: warning: the provider broke a rule of the interface: "));
  }
}

TEST_F(TvpcimFaultyProvider, ItsMessagesStayOnOneLineAndHarmless) {
  const CommandResult result = onFaulty({"gi", "TVP_VirtualPool.Name=\"x\""}).run();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.err, "tvpcim: gi: CIM_ERR_FAILED: two\\x0Alines \\x1B[2J%s%n\n");
}

TEST_F(TvpcimFaultyProvider, ItsTextsAreEscapedInEveryForm) {
  const CommandResult json = onFaulty({"volumes", "-o", "json"}).run();
  EXPECT_EQ(Json::parse(json.out).at(0).at("VolumeName"), "v\x1b[2J\\xFF");
  EXPECT_THAT(onFaulty({"volumes"}).run().out, HasSubstr("v\\x1B[2J\\xFF"));
  EXPECT_THAT(onFaulty({"volumes", "-o", "mof"}).run().out, HasSubstr("\"v\\x001B[2J\\\\xFF\""));
}

TEST_F(TvpcimFaultyProvider, AStatusThatIsNotZeroIsAFailureWithItsName) {
  const CommandResult result = onFaulty({"volume", "flush", "1"}).run();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("tvpcim: volume flush: FlushVirtualVolume answered RetStat 22 ("));
  EXPECT_THAT(result.err, HasSubstr("\ntvpcim: hint: two\\x0Alines \\x1B[2J; and more\n"))
      << "what it logged";
}

TEST_F(TvpcimFaultyProvider, WhatItLacksIsNotSupported) {
  const CommandResult associators = onFaulty({"ai", "TVP_VirtualPool"}).run();
  EXPECT_EQ(associators.exitStatus, 1);
  EXPECT_THAT(associators.err, HasSubstr("tvpcim: ai: CIM_ERR_NOT_SUPPORTED"));
  EXPECT_THAT(
      onFaulty({"watch", "--seconds", "1"}).run().err, HasSubstr("tvpcim: watch: CIM_ERR_NOT_SUPPORTED"));
}

TEST_F(TvpcimFaultyProvider, ACleanUpThatFailsDecidesTheExitStatus) {
  const CommandResult result =
      command("tvpcim", {"watch", "--seconds", "1", "--provider", TVP_FAILING_CLEANUP_PROVIDER}).run();
  EXPECT_EQ(result.exitStatus, 1);
  EXPECT_THAT(result.err, HasSubstr("tvpcim: watch: CIM_ERR_FAILED: cannot stop\n"));
}

}  // namespace
}  // namespace tvp::test
