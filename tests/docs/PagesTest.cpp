// SPDX-License-Identifier: Apache-2.0
// The pages say what is so: each command in them is run, and prints what the page shows.
#include "docs/Page.h"
#include "support/Command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

using namespace tvp::test;
namespace fs = std::filesystem;

namespace {

const fs::path SOURCES = TVP_SOURCE_DIR;
const std::string END_MARK = "=== end of a command ===\n";

std::vector<std::string> pages() {
  std::vector<std::string> names = {"README.md", "CONTRIBUTING.md"};
  for (const auto& entry : fs::directory_iterator(SOURCES / "docs")) {
    if (entry.path().extension() == ".md") {
      names.push_back("docs/" + entry.path().filename().string());
    }
  }
  std::sort(names.begin(), names.end());
  return names;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

/** Runs the commands of a page one after the other in one shell, on a recorded machine with a state, log and
 *  catalogue of its own. */
class Reader {
public:
  Reader() {
    fs::create_directories(m_directory.path() / "playground");
    fs::create_directories(m_directory.path() / "root/var/log");
    m_directory.write(
        "root/usr/VolMan/TVPEvents.properties", readFile(SOURCES / "share/TVPEvents.properties"));
  }

  std::vector<std::string> outputsOf(const Page& page) const {
    std::string script = "exec 2>&1\ncd '" + m_directory.file("playground") +
                         "'\nend() { local status=$?; printf '" + END_MARK.substr(0, END_MARK.size() - 1) +
                         "\\n'; return $status; }\n";
    for (const PageCommand& command : page.commands()) {
      script += here(command.text) + "end\n";
    }
    const char* search = std::getenv("PATH");
    const CommandResult result =
        Command({"/bin/bash", m_directory.write("page.sh", script)})
            .with("PATH", TVP_BINARY_DIR "/bin:" + std::string(search == nullptr ? "/usr/bin:/bin" : search))
            .with("VOLTVK_HOST_ROOT", (SOURCES / "tests/docs/machine").string())
            .with("VOLTVK_STATE", m_directory.file("playground/state.db"))
            .with("TVP_TEST_ROOT", m_directory.file("root"))
            .with("TZ", "UTC")
            .with("LC_ALL", "C.UTF-8")
            .with("COLUMNS", "100")
            .limit(std::chrono::minutes(3))
            .run();
    return split(asOnThePage(result.out));
  }

private:
  /** The places that pages name, as they are here. */
  std::string here(std::string text) const {
    replaceAll(text, "build/release/", TVP_BINARY_DIR "/");
    replaceAll(text, "/tmp/playground", m_directory.file("playground"));
    replaceAll(text, "/var/log/", m_directory.file("root/var/log/"));
    replaceAll(text, "/usr/VolMan/", m_directory.file("root/usr/VolMan/"));
    return text;
  }
  std::string asOnThePage(std::string text) const {
    replaceAll(text, m_directory.file("playground"), "/tmp/playground");
    replaceAll(text, m_directory.file("root"), "");
    return text;
  }
  static std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> outputs;
    std::size_t at = 0;
    for (std::size_t end = text.find(END_MARK); end != std::string::npos; end = text.find(END_MARK, at)) {
      outputs.push_back(text.substr(at, end - at));
      at = end + END_MARK.size();
    }
    return outputs;
  }

  TemporaryDirectory m_directory;
};

class PagesTest : public testing::TestWithParam<std::string> {};

/** With TVP_DOCS_WRITE set, the outputs are put into the page as well; look at the difference then. */
TEST_P(PagesTest, EveryCommandPrintsWhatThePageShows) {
  const Page page(SOURCES / GetParam());
  const Reader reader;
  std::vector<std::string> outputs = reader.outputsOf(page);
  ASSERT_EQ(outputs.size(), page.commands().size()) << "a command ended the shell or hung";
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    const PageCommand& command = page.commands()[i];
    if (showsTheSame(command.output, outputs[i])) {
      outputs[i] = command.output;
    } else {
      ADD_FAILURE() << GetParam() << ":" << command.firstLine << ": $ " << command.text << "the page shows\n"
                    << command.output << "the command prints\n"
                    << outputs[i];
    }
  }
  if (HasFailure() && std::getenv("TVP_DOCS_WRITE") != nullptr) {
    page.write(outputs);
  }
}

TEST_P(PagesTest, EveryLinkLeadsSomewhere) {
  const fs::path path = SOURCES / GetParam();
  for (const std::string& target : Page(path).links()) {
    EXPECT_TRUE(fs::exists(path.parent_path() / target)) << target;
  }
}

std::string nameOf(const testing::TestParamInfo<std::string>& info) {
  return std::regex_replace(info.param, std::regex("[^A-Za-z0-9]"), "_");
}
INSTANTIATE_TEST_SUITE_P(Docs, PagesTest, testing::ValuesIn(pages()), nameOf);

TEST(DocumentationTest, TheIndexNamesEveryPage) {
  const std::string index = readFile(SOURCES / "docs/index.md");
  for (const auto& entry : fs::directory_iterator(SOURCES / "docs")) {
    const std::string name = entry.path().filename().string();
    EXPECT_TRUE(name == "index.md" || index.find(name) != std::string::npos) << name;
  }
}

TEST(DocumentationTest, TheModelPageHasEveryClassPropertyMethodAndParameter) {
  const std::string schema = readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  const std::string model = readFile(SOURCES / "docs/model.md");
  static const std::regex NAME(R"(\n *(class|string|boolean|uint\d+) (\w+))");
  std::size_t count = 0;
  for (std::sregex_iterator found(schema.begin(), schema.end(), NAME), none; found != none;
       ++found, ++count) {
    EXPECT_NE(model.find("`" + (*found)[2].str() + "`"), std::string::npos) << (*found)[2];
  }
  EXPECT_GT(count, 150U);
}

TEST(DocumentationTest, TheEventsPageListsEveryEvent) {
  const std::string events = readFile(SOURCES / "docs/events.md");
#define TVK_EVENT(name, code)                                                                                \
  EXPECT_NE(events.find("\n| " + std::string(#code).substr(2) + " | "), std::string::npos) << #name;
#include "voltvk/VolEvent.def"
}

TEST(DocumentationTest, TheModelPageListsEveryStatusAndNoOther) {
  const std::string model = readFile(SOURCES / "docs/model.md");
  std::vector<std::string> expected;
#define TVK_STATUS(name, number, clientName, text) expected.push_back("| " #number " | " clientName " |");
#include "voltvk/Status.def"
  std::vector<std::string> listed;
  static const std::regex ROW(R"(\n(\| \d+ \| [A-Z][A-Za-z ]+ \|)[^|]*\|(?=\n))");
  const std::string section = model.substr(model.find("\n## Status codes\n"));
  for (std::sregex_iterator found(section.begin(), section.end(), ROW), none; found != none; ++found) {
    listed.push_back((*found)[1]);
  }
  EXPECT_EQ(listed, expected);
}

}  // namespace
