// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/CommandLine.h"

#include "host/tvpcim/Failure.h"

#include <gmock/gmock.h>

#include <random>

namespace tvp::host::tvpcim {
namespace {

using testing::HasSubstr;

TEST(CommandLine, ChoosesAVerbAndTakesOptionsAnywhere) {
  const struct {
    std::vector<std::string> arguments;
    const char* verb;
  } cases[] = {
      {{"-o", "mof", "ei", "TVP_LogicalDevice", "-o", "json"}, "ei"},
      {{"-o", "json", "--user", "ei", "drives"}, "drives"},
      {{"volume", "-o", "json", "create", "v", "--pool", "a:1G", "--pool=b:2G"}, "volume create"},
      {{"pool", "create", "gold", "--drives", "3,4", "--tier", "ssd", "--size", "1G", "-o", "json"},
       "pool create"},
      {{"im", "C", "M", "A=1", "B=-2", "--output=json"}, "im"},
  };
  for (const auto& [arguments, verb] : cases) {
    SCOPED_TRACE(verb);
    Tool tool;
    CommandLine commandLine(tool);
    EXPECT_EQ(commandLine.parse(arguments), "");
    EXPECT_EQ(tool.verb(), verb);
    EXPECT_EQ(tool.options.output, "json");
  }
}

TEST(CommandLine, SaysWhatIsWrongAndWhatToDo) {
  const struct {
    std::vector<std::string> arguments;
    const char* problem;
    const char* advice;
  } cases[] = {
      {{}, "subcommand is required", "see 'tvpcim --help'"},
      {{"drivs"}, "there is no verb 'drivs'", "did you mean 'drives'?"},
      {{"-o", "json", "frobnicate"}, "there is no verb 'frobnicate'", "see 'tvpcim --help'"},
      {{"pool", "creat"}, "there is no verb 'pool creat'", "did you mean 'create'?"},
      {{"volume"}, "volume: A subcommand is required", "see 'tvpcim volume --help'"},
      {{"drives", "--bogus"}, "--bogus", "see 'tvpcim drives --help'"},
      {{"drives", "-o", "xml"}, "xml not in {", "see 'tvpcim drives --help'"},
      {{"ei"}, "CLASS is required", "see 'tvpcim ei --help'"},
      {{"pool", "create", "gold"}, "--drives is required", "see 'tvpcim pool create --help'"},
      {{"volume", "create", "v", "--pool", "a:1G", "--knob", "wild"}, "wild not in", "volume create"},
      {{"watch", "--count", "many"}, "--count", "see 'tvpcim watch --help'"},
      {{"watch", "--seconds", "-3"}, "--seconds", "see 'tvpcim watch --help'"},
      {{"no\x1b[2Jverb"}, "'no\\x1B[2Jverb'", "--help"},
  };
  for (const auto& [arguments, problem, advice] : cases) {
    SCOPED_TRACE(problem);
    Tool tool;
    CommandLine commandLine(tool);
    try {
      commandLine.parse(arguments);
      ADD_FAILURE() << "was taken";
    } catch (const UsageError& error) {
      EXPECT_THAT(error.what(), HasSubstr(problem));
      EXPECT_THAT(error.what(), HasSubstr(advice));
      EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos) << "an error is one line";
    }
  }
}

TEST(CommandLine, TakesNoHarmFromRandomArguments) {
  const std::vector<std::string> words = {
      "pool", "create", "ei",   "-o",      "json",   "--pool", "--",     "-",  "--size",
      "=",    "[",      "[1,2", "x:y:z",   "--help", "-h",     "\xff",   "",   "--drives",
      "im",   "watch",  "%s%n", "--count", "-1",     "volume", "--user", "{}", "NAME=[\"a\""};
  std::mt19937 random(4711);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::string> arguments;
    for (auto count = random() % 7; count > 0; --count) {
      arguments.push_back(words[random() % words.size()]);
    }
    Tool tool;
    CommandLine commandLine(tool);
    try {
      const bool printed = !commandLine.parse(arguments).empty();
      EXPECT_TRUE(printed || !tool.verb().empty()) << "nothing was chosen and nothing said";
    } catch (const UsageError& error) {
      EXPECT_STRNE(error.what(), "");
    }
  }
}

}  // namespace
}  // namespace tvp::host::tvpcim
