// SPDX-License-Identifier: Apache-2.0
// Man pages and completions know every verb and option that the commands' own help has.
#include "docs/Page.h"
#include "support/Command.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <sstream>

using namespace tvp::test;

namespace {

const std::filesystem::path PACKAGING = TVP_SOURCE_DIR "/packaging";

struct Reference {
  const char* name;
  const char* program;
  const char* section;
};

/** What the help offers after some words: further verbs and options. */
struct Offer {
  std::vector<std::string> verbs;
  std::vector<std::string> options;
};

Offer offerOf(const Reference& reference, std::vector<std::string> words) {
  words.insert(words.begin(), reference.program);
  words.emplace_back("--help");
  const std::string help = Command(words).run().out;
  Offer offer;
  bool inVerbs = false;
  std::istringstream lines(help);
  static const std::regex VERB(R"(^  ([a-z][a-z-]*)(  .*|$))");
  static const std::regex OPTION(R"(^  (-\w,)?\s*(--[a-z-]+).*)");
  for (std::string line; std::getline(lines, line);) {
    std::smatch found;
    inVerbs = line == "Subcommands:" || (inVerbs && line.rfind("  ", 0) == 0);
    if (inVerbs && std::regex_match(line, found, VERB)) {
      offer.verbs.push_back(found[1]);
    } else if (!inVerbs && std::regex_match(line, found, OPTION)) {
      offer.options.push_back(found[2]);
    }
  }
  EXPECT_NE(help.find("--help"), std::string::npos) << help;
  return offer;
}

/** Whether the text has the word by itself, not as a part of another. */
bool hasWord(const std::string& text, const std::string& word) {
  return std::regex_search(text, std::regex("(^|[^a-z-])" + word + "($|[^a-z-])"));
}

class CommandReferenceTest : public testing::TestWithParam<Reference> {
protected:
  std::string file(const std::string& relative) const { return readFile(PACKAGING / relative); }
  std::string manPage() const {
    return (PACKAGING / "man" / (std::string(GetParam().name) + "." + GetParam().section)).string();
  }

  /** What bash would offer for a word that begins with prefix, after these words. */
  std::string completions(const std::vector<std::string>& words, const std::string& prefix) const {
    std::string line = GetParam().name;
    for (const std::string& word : words) {
      line += " " + word;
    }
    std::string function = std::string("_") + GetParam().name;
    std::replace(function.begin(), function.end(), '-', '_');
    const std::string script = ". " + (PACKAGING / "completion" / GetParam().name).string() + ".bash\n" +
                               "COMP_WORDS=(" + line + " '" + prefix +
                               "')\nCOMP_CWORD=" + std::to_string(words.size() + 1) + "\n" + function +
                               "\necho \"${COMPREPLY[*]}\"\n";
    const char* path = std::getenv("PATH");
    return Command({"/bin/bash", "-c", script})
        .with("PATH", TVP_BINARY_DIR "/bin:" + std::string(path == nullptr ? "" : path))
        .run()
        .out;
  }

  void check(const std::vector<std::string>& words) {
    const Offer offer = offerOf(GetParam(), words);
    const std::string man = std::regex_replace(
        file("man/" + std::filesystem::path(manPage()).filename().string()), std::regex(R"(\\)"), "");
    const std::string zsh = file(std::string("completion/") + GetParam().name + ".zsh");
    const std::string verbs = completions(words, "");
    for (const std::string& verb : offer.verbs) {
      EXPECT_TRUE(hasWord(man, verb)) << "man page: " << verb;
      EXPECT_TRUE(hasWord(zsh, verb)) << "zsh: " << verb;
      EXPECT_TRUE(hasWord(verbs, verb)) << "bash after " << testing::PrintToString(words) << ": " << verb;
    }
    const std::string options = completions(words, "-");
    for (const std::string& option : offer.options) {
      EXPECT_TRUE(hasWord(man, option)) << "man page: " << option;
      EXPECT_TRUE(hasWord(zsh, option)) << "zsh: " << option;
      EXPECT_TRUE(hasWord(options, option))
          << "bash after " << testing::PrintToString(words) << ": " << option;
    }
    EXPECT_FALSE(offer.options.empty());
    for (const std::string& verb : offer.verbs) {
      std::vector<std::string> deeper = words;
      deeper.push_back(verb);
      check(deeper);
    }
  }
};

TEST_P(CommandReferenceTest, EveryVerbAndOptionIsInTheManPageAndTheCompletions) {
  check({});
}

TEST_P(CommandReferenceTest, EveryOutputFormatIsInTheManPageAndTheCompletions) {
  const std::string help = Command({GetParam().program, "--help"}).run().out;
  std::smatch found;
  if (!std::regex_search(help, found, std::regex(R"(--output \S*\{([a-z,]+)\})"))) {
    EXPECT_EQ(help.find("--output"), std::string::npos) << help;
    return;
  }
  const std::string man = readFile(manPage());
  const std::string completed = completions({"-o"}, "");
  std::istringstream formats(found[1]);
  for (std::string format; std::getline(formats, format, ',');) {
    EXPECT_TRUE(hasWord(man, format)) << "man page: " << format;
    EXPECT_TRUE(hasWord(completed, format)) << "bash: " << format;
  }
}

TEST_P(CommandReferenceTest, TheManPageHasItsSectionsAndNoErrors) {
  const std::string text = readFile(manPage());
  std::size_t at = 0;
  for (const char* section :
       {"NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXAMPLES", "ENVIRONMENT", "FILES", "EXIT STATUS"}) {
    at = text.find("\n.SH " + std::string(section) + "\n", at);
    ASSERT_NE(at, std::string::npos) << section;
  }
  // Without man there is nothing that would format the page.
  const CommandResult formatted =
      Command({"/bin/sh", "-c",
               "! command -v man >/dev/null || LC_ALL=C.UTF-8 man --warnings -l -Tutf8 -Z \"$0\" "
               ">/dev/null",
               manPage()})
          .run();
  EXPECT_EQ(formatted.exitStatus, 0);
  EXPECT_EQ(formatted.err, "");
}

std::string nameOf(const testing::TestParamInfo<Reference>& info) {
  return std::regex_replace(info.param.name, std::regex("-"), "_");
}
INSTANTIATE_TEST_SUITE_P(
    Commands, CommandReferenceTest,
    testing::Values(
        Reference{"tvpcim", TVP_BINARY_DIR "/bin/tvpcim", "1"},
        Reference{"voltvkctl", TVP_BINARY_DIR "/bin/voltvkctl", "8"},
        Reference{"tvp-register", TVP_BINARY_DIR "/sbin/tvp-register", "8"}),
    nameOf);

}  // namespace
