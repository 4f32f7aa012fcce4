// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProEventManager.h"
#include "support/Lines.h"
#include "support/LogCapture.h"
#include "voltvk/Specs.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include <sys/stat.h>
#include <unistd.h>

namespace tvp::test {
namespace {

using namespace tvp::cim::fwf;
using Strings = std::vector<std::string>;

class EventCatalogue : public ::testing::Test {
protected:
  struct Outcome {
    bool applied;
    bool skip;
    std::string description;
  };

  void install(const std::string& catalogue) {
    log.root().write("usr/VolMan/TVPEvents.properties", catalogue);
  }

  Outcome describe(std::uint32_t code, const std::string& description) {
    VolEvent event;
    event.code = code;
    tvkSetText(event.description, TVK_EVENT_DESCRIPTION_SIZE, description.c_str());
    Outcome outcome = {};
    outcome.applied = manager.getEventdescription(&event, outcome.skip);
    outcome.description = event.description;
    return outcome;
  }

  LogCapture log;
  TvproEventManager manager{false};
};

TEST_F(EventCatalogue, TextsReplaceTheDriversDescription) {
  const std::string driver = "x [P1] y [P2]";
  const struct {
    const char* catalogue;
    std::uint32_t code;
    const char* expected;
  } cases[] = {
      {"701=Pool {0} created\n", 0x701, "Pool P1 created"},
      {"701 \t=  {1}, {0}  \r\n", 0x701, "P2, P1"},
      {"701\t=first\n701=second\n", 0x701, "first"},
      {"40a=lower\n1034=decimal\n40A=right", 0x40A, "right"},
      {"7011=longer key\n 701=indented\n701=right", 0x701, "right"},
      {"# 701=a remark\n\n701=right", 0x701, "right"},
      {"701=a=b", 0x701, "a=b"},
      {"701=a {12} b {0}", 0x701, "a } b P1"},
      {"701={7}{0}", 0x701, "{0}"},
      {"701={9}-{x}-{", 0x701, "-P1-P1"},
      {"701=", 0x701, ""},
      {"701 no sign\n701=late\n", 0x701, nullptr},
      {"702=other\n", 0x701, nullptr},
      {"701", 0x701, nullptr},
      {"", 0x701, nullptr},
  };
  for (const auto& sample : cases) {
    SCOPED_TRACE(sample.catalogue);
    install(sample.catalogue);
    const Outcome outcome = describe(sample.code, driver);
    EXPECT_EQ(outcome.applied, sample.expected != nullptr);
    EXPECT_EQ(outcome.description, sample.expected == nullptr ? driver : sample.expected);
    EXPECT_FALSE(outcome.skip);
  }
  EXPECT_TRUE(log.has(LogCapture::message(5, "evtDescPath = /usr/VolMan/")));
}

TEST_F(EventCatalogue, WithoutAFileTheDriversDescriptionStays) {
  EXPECT_FALSE(describe(0x701, "as it was").applied);
  const std::string path = log.root().file("usr/VolMan/TVPEvents.properties");
  std::filesystem::create_directories(path);
  const Outcome outcome = describe(0x701, "as it was");
  EXPECT_FALSE(outcome.applied);
  EXPECT_EQ(outcome.description, "as it was");
  std::filesystem::remove(path);
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_FALSE(describe(0x701, "as it was").applied) << "and the listener does not wait for a writer";
}

TEST_F(EventCatalogue, TextsAreCutToTheDescriptionField) {
  install(
      "701=" + std::string(254, 'a') + "\u00e4\n702=" + std::string(100000, '{') + "\n703={0}\n704={0}{1}\n" +
      std::string("705=a\0b\n", 8));
  EXPECT_EQ(describe(0x701, "").description, std::string(254, 'a')) << "cut between characters";
  EXPECT_LT(describe(0x702, "[{]").description.size(), TVK_EVENT_DESCRIPTION_SIZE);
  EXPECT_LT(describe(0x703, "[{0}]").description.size(), TVK_EVENT_DESCRIPTION_SIZE)
      << "an argument that names itself";
  EXPECT_LT(describe(0x704, "[{0}{1}{0}] [{0}{0}]").description.size(), TVK_EVENT_DESCRIPTION_SIZE);
  EXPECT_EQ(describe(0x705, "").description, "a");
}

/** The parts of a text between "|". */
Strings parts(const std::string& joined) {
  Strings result;
  std::istringstream stream(joined);
  for (std::string part; std::getline(stream, part, '|');) {
    result.push_back(part);
  }
  return result;
}

TEST_F(EventCatalogue, ArgumentsAreRewrittenByEventCode) {
  const char* tooFew = " \t\t\t\t\t\t\t\t    Not enough event arguments from the driver ";
  const struct {
    unsigned int code;
    const char* given;
    const char* expected;
    unsigned int level;
    std::string line;
    bool skip = false;
  } cases[] = {
      {513, "P|1|2097152", "P|0|1.00 GB", 4, "SVS_EVENT_POOL_DEV_CREATED : Size in GB = 1.00 GB "},
      {513, "P|2|1|0", "P|2|0.00 GB|0", 4, "SVS_EVENT_POOL_DEV_CREATED : Tier Level = 2 "},
      {514, "P|3|1048576|16", "P|1|0.50 GB|16", 2, "SVS_EVENT_POOL_DEV_CREATED : Pool Type = 16 ", true},
      {515, "P|16", "P|16", 4, "SVS_EVENT_POOL_DEV_CREATION_FAILED : Pool Type = 16 ", true},
      {518, "P|0", "P|0", 4, "SVS_EVENT_POOL_DEV_DELETED : Pool Type = 0 "},
      {522, "P|3", "P|1", 4, "SVS_EVENT_POOL_MOD_LEVEL_CHANGED : Tier Level = 1 "},
      {1025, "V|1|18446744073709551615", "V|Tiered|8796093022208.00 GB", 4,
       "SVS_EVENT_VV_DEV_CREATED : Volume Type = Tiered "},
      {1026, "V|2|x", "V|Cached|0.00 GB", 4, "SVS_EVENT_VV_DEV_CREATED : Volume Type = Cached "},
      {1034, "V|1|3", "V|Aggressive|Passive", 4,
       "SVS_EVENT_VV_MOD_PROP_KNOB_CHANGED : Current FFMode = Passive "},
      {1034, "V|2|9", "V|Normal|Unknown", 4,
       "SVS_EVENT_VV_MOD_PROP_KNOB_CHANGED : Previous FFMode = Normal "},
      // Missing arguments are logged, and then empty and rewritten like the others.
      {514, "P|3", "P|1|0.00 GB", 4, "SVS_EVENT_POOL_DEV_CREATED : Size in GB = 0.00 GB "},
      {516, "", "||", 4, "SVS_EVENT_POOL_DEV_CREATION_FAILED : Pool Type =  "},
      {517, "P|16|x", "P|16|x", 2, std::string("SVS_EVENT_POOL_DEV_DELETED") + tooFew, true},
      {522, "P", "P||", 4, "SVS_EVENT_POOL_MOD_LEVEL_CHANGED : Tier Level =  "},
      {1026, "", "|Unknown|0.00 GB", 4, "SVS_EVENT_VV_DEV_CREATED : Volume Type = Unknown "},
      {1034, "V|3", "V|Passive|Unknown", 4, "SVS_EVENT_VV_MOD_PROP_KNOB_CHANGED : Current FFMode = Unknown "},
  };
  for (const auto& sample : cases) {
    SCOPED_TRACE(sample.line);
    log.clear();
    Strings args = parts(sample.given);
    bool skip = true;
    manager.rephraseEventDescription(args, sample.code, skip);
    EXPECT_EQ(args, parts(sample.expected));
    EXPECT_EQ(skip, sample.skip);
    EXPECT_TRUE(log.has(
        LogCapture::message(sample.level, "TvproEventManager::rephraseEventDescription: " + sample.line)));
    EXPECT_TRUE(
        args.size() == parts(sample.given).size() ||
        log.has(LogCapture::message(
            2, "TvproEventManager::rephraseEventDescription: " +
                   sample.line.substr(0, sample.line.find(' ')) + tooFew)));
  }
  Strings others = {"D", "16"};
  bool skip = true;
  manager.rephraseEventDescription(others, 1537, skip);
  EXPECT_EQ(others, (Strings{"D", "16"}));
  EXPECT_FALSE(skip);
}

// The listener may word an event until it is stopped, which happens late while the process ends.
TEST_F(EventCatalogue, ArgumentsCanBeRewrittenUntilTheProcessEnds) {
  static const auto rewrites = [] {
    Strings args = {"P", "3"};
    bool skip = false;
    TvproEventManager(false).rephraseEventDescription(args, 522, skip);
    return args == Strings{"P", "1"};
  };
  EXPECT_EXIT(
      {
        std::atexit([] { _exit(rewrites() ? 0 : 1); });  // runs after what the first use created is destroyed
        rewrites();
        std::exit(2);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST_F(EventCatalogue, BlanksAndTabsAreTrimmedInTheDocumentedOrder) {
  const struct {
    const char* given;
    const char* expected;
  } cases[] = {{"", ""},       {" \t \t", ""}, {"  a b  ", "a b"}, {"\ta\t", "a"},
               {" \t a", "a"}, {"a \t", "a "}, {"a\r", "a\r"},     {"\t\t \t", ""}};
  for (const auto& sample : cases) {
    EXPECT_EQ(TvproEventManager::trim(sample.given), sample.expected) << '"' << sample.given << '"';
  }
  std::string alternating;
  for (int count = 0; count < 200000; ++count) {
    alternating += " \t";
  }
  EXPECT_EQ(TvproEventManager::trim(alternating + "x"), "x") << "deep nesting does not recurse";
}

TEST_F(EventCatalogue, TheShippedCatalogueHasATextForEveryEvent) {
  install(readFile(TVP_SOURCE_DIR "/share/TVPEvents.properties"));
  std::vector<std::uint32_t> codes = {0x202, 0x204, 0x206, 0x402, 0x701, 0x702};  // of other sources
#define TVK_EVENT(name, code) codes.push_back(code);
#include "voltvk/VolEvent.def"
  for (const std::uint32_t code : codes) {
    SCOPED_TRACE(code);
    const Outcome outcome = describe(code, "[Name] [1] [2097152]");
    EXPECT_TRUE(outcome.applied);
    EXPECT_EQ(outcome.description.find_first_of("{}"), std::string::npos) << outcome.description;
    const bool isPolicyEngine = (code & 0xF00U) == 0x700U;
    EXPECT_EQ(outcome.description.find("Name") == std::string::npos, isPolicyEngine) << outcome.description;
  }
  EXPECT_EQ(
      describe(0x401, "[Data] [2] [2097152]").description,
      "Virtual volume Data was created: type Cached, 1.00 GB");
}

}  // namespace
}  // namespace tvp::test
