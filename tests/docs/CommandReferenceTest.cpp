// SPDX-License-Identifier: Apache-2.0
// Man pages and completions know every verb, option and operation that the commands' own help has.
#include "support/Command.h"
#include "support/Lines.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>

using namespace tvp::test;

namespace {

const std::filesystem::path PACKAGING = TVP_SOURCE_DIR "/packaging";

struct Reference {
  const char* name;
  const char* program;
  const char* section;
  const char* completions;  ///< directory of its completions
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
  static const std::regex VERB(R"(^  ([a-z][a-z-]*)(  .*|$))");
  static const std::regex OPTION(R"(^  (-\w,)?\s*(--[a-z-]+).*)");
  for (const std::string& line : linesOf(help)) {
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

const Reference TVPCIM = {"tvpcim", TVP_BINARY_DIR "/bin/tvpcim", "1", TVP_BINARY_DIR "/completion"};
const Reference VOLTVKCTL = {"voltvkctl", TVP_BINARY_DIR "/bin/voltvkctl", "8", TVP_BINARY_DIR "/completion"};
const Reference TVP_REGISTER = {
    "tvp-register", TVP_BINARY_DIR "/sbin/tvp-register", "8", TVP_SOURCE_DIR "/packaging/completion"};

/** What bash would offer for a word that begins with prefix, after these words. */
std::string completionsOfBash(
    const Reference& reference, const std::vector<std::string>& words, const std::string& prefix) {
  std::string line = reference.name;
  for (const std::string& word : words) {
    line += " " + word;
  }
  std::string function = std::string("_") + reference.name;
  std::replace(function.begin(), function.end(), '-', '_');
  const std::string script = std::string(". ") + reference.completions + "/" + reference.name + ".bash\n" +
                             "COMP_WORDS=(" + line + " '" + prefix +
                             "')\nCOMP_CWORD=" + std::to_string(words.size() + 1) + "\n" + function + " " +
                             reference.program + "\necho \"${COMPREPLY[*]}\"\n";
  return Command({"/bin/bash", "-c", script}).run().out;
}

/** What zsh lists for the word after these, on a terminal; "no zsh" where it is not installed. */
std::string completionsOfZsh(const Reference& reference, const std::vector<std::string>& words) {
  std::string line = reference.program;
  for (const std::string& word : words) {
    line += " " + word;
  }
  const TemporaryDirectory directory;
  std::filesystem::copy_file(
      std::string(reference.completions) + "/" + reference.name + ".zsh",
      directory.path() / (std::string("_") + reference.name));
  // Nothing is typed before the prompt, since zsh reads lines without completions until then.
  const std::string script = directory.write("list.zsh", R"(zmodload zsh/zpty
zpty terminal zsh -f -i
zpty -w terminal "TERM=dumb; PS1='ready> '; PS2=; RPS1=; fpath=($1 \$fpath); autoload -Uz compinit; compinit -u -d $1/dump"
zpty -w terminal "bindkey ^I list-choices; bindkey ^X accept-line; LISTMAX=9999; print -r -- READ''Y"
zpty -r -m terminal text '*READY*ready> *'
zpty -n -w terminal "$2 "$'\t'
zpty -n -w terminal $'\x15print DO\'\'NE\x18'
zpty -r -m terminal text '*DONE*'
print -r -- $text
)");
  return Command({"/bin/sh", "-c", "if command -v zsh >/dev/null; then zsh -f \"$@\"; else echo no zsh; fi",
                  "sh", script, directory.path().string(), line})
      .run()
      .out;
}

/** A storage state of the test's own, which has a process of its own: completions read the names in it. */
class OwnState {
public:
  OwnState() {
    ::setenv("VOLTVK_STATE", m_directory.file("state.db").c_str(), 1);
    ::setenv("VOLTVK_HOST_ROOT", "/nonexistent", 1);
  }

private:
  TemporaryDirectory m_directory;
};

class CommandReferenceTest : public testing::TestWithParam<Reference> {
protected:
  std::string manPage() const {
    return (PACKAGING / "man" / (std::string(GetParam().name) + "." + GetParam().section)).string();
  }

  void check(const std::vector<std::string>& words) {
    const Offer offer = offerOf(GetParam(), words);
    const std::string man = std::regex_replace(readFile(manPage()), std::regex(R"(\\)"), "");
    const std::size_t start = man.find("\n.SH OPTIONS\n");
    const std::string explained = man.substr(start, man.find("\n.SH ", start + 1) - start);
    const std::string verbs = completionsOfBash(GetParam(), words, "");
    const std::string listed = offer.verbs.empty() ? "" : completionsOfZsh(GetParam(), words);
    for (const std::string& verb : offer.verbs) {
      EXPECT_TRUE(hasWord(man, verb)) << "man page: " << verb;
      EXPECT_TRUE(listed == "no zsh\n" || hasWord(listed, verb)) << "zsh: " << listed;
      EXPECT_TRUE(hasWord(verbs, verb)) << "bash after " << testing::PrintToString(words) << ": " << verb;
    }
    const std::string options = completionsOfBash(GetParam(), words, "-");
    for (const std::string& option : offer.options) {
      EXPECT_TRUE(hasWord(explained, option)) << "OPTIONS of the man page: " << option;
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

private:
  OwnState m_state;
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
  const std::string completed = completionsOfBash(GetParam(), {"-o"}, "");
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
    Commands, CommandReferenceTest, testing::Values(TVPCIM, VOLTVKCTL, TVP_REGISTER), nameOf);

class CommandCompletions : public testing::Test {
  OwnState m_state;
};

TEST_F(CommandCompletions, EveryOperationIsInTheHelpAndTheCompletions) {
  const std::vector<std::string> words = {"fault", "set", "fail"};
  const std::string help = Command({VOLTVKCTL.program, "fault", "set", "fail", "--help"}).run().out;
  const std::string offered = completionsOfBash(VOLTVKCTL, words, "");
#define TVK_OPERATION(name)                                                                                  \
  EXPECT_TRUE(hasWord(help, #name)) << #name;                                                                \
  EXPECT_TRUE(hasWord(offered, #name)) << #name;
#include "voltvk/engine/contract/Operations.def"
}

TEST_F(CommandCompletions, ValuesOfOptionsAndClassesAreCompleted) {
  const auto offered = [](const Reference& reference, const std::vector<std::string>& words) {
    return completionsOfBash(reference, words, "");
  };
  EXPECT_EQ(offered(VOLTVKCTL, {"drive", "add", "--type"}), "hdd ssd\n");
  EXPECT_EQ(offered(TVPCIM, {"-o", "json", "pool", "create", "x", "--tier"}), "ssd hdd\n");
  EXPECT_EQ(offered(TVPCIM, {"pool", "create", "--size"}), "\n");
  const auto done = [](const Reference& reference, std::vector<std::string> words) {
    words.insert(words.begin(), reference.program);
    const CommandResult result = Command(words).run();
    EXPECT_EQ(result.exitStatus, 0) << result.err;
  };
  done(VOLTVKCTL, {"drive", "add", "--type", "hdd", "--size", "2G"});
  done(TVPCIM, {"pool", "create", "my pool", "--drives", "0", "--size", "1G"});
  done(TVPCIM, {"volume", "create", "data", "--pool", "my pool:1M"});
  const struct {
    const Reference& reference;
    std::vector<std::string> words;
    const char* prefix;
    const char* name;
  } cases[] = {
      {TVPCIM, {"ei"}, "TVP_VirtualPoolM", "TVP_VirtualPoolMember"},
      {TVPCIM, {"pool", "delete"}, "my", "my\\ pool"},
      {TVPCIM, {"volume", "create", "v", "--pool"}, "", "my\\ pool:"},
      {TVPCIM, {"-o", "json", "volume", "stats"}, "", "data"},
      {TVPCIM, {"pool", "create", "x", "--drives"}, "", "/dev/tvk0"},
      {TVPCIM, {"pool", "create", "x", "--drives"}, "7,", "7\\,/dev/tvk0"},
      {TVPCIM, {"volume", "cache", "x", "--drive"}, "", "/dev/tvk0"},
      {TVPCIM, {"mi", "TVP_VirtualPool"}, "Desc", "Description="},
      {TVPCIM, {"im", "TVP_TierService"}, "DeleteVirtualP", "DeleteVirtualPool"},
      {TVPCIM, {"im", "TVP_TierService", "DeleteVirtualPool"}, "", "VirtualPoolId="},
      {TVPCIM, {"ei", "TVP_LogicalDevice", "--property"}, "Mo", "Model"},
      {VOLTVKCTL, {"io"}, "d", "data"},
      {VOLTVKCTL, {"heat"}, "d", "data"},
      {VOLTVKCTL, {"drive", "remove"}, "", "0"},
  };
  for (const auto& [reference, words, prefix, name] : cases) {
    EXPECT_EQ(completionsOfBash(reference, words, prefix), std::string(name) + "\n");
  }
}

}  // namespace
