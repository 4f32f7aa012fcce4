// SPDX-License-Identifier: Apache-2.0
// The pages say what is so: each command in them is run, and prints what the page shows; the files that they
// name exist, and what is kept for compatibility is listed completely.
#include "support/Command.h"
#include "support/Lines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <set>

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

/** A command of a page, and what the page says that it prints. */
struct PageCommand {
  std::size_t firstLine;  ///< of the output, counted from 0
  std::size_t lineCount;  ///< of the output
  std::string text;       ///< with its continuation lines
  std::string output;     ///< standard output and error, as on a terminal
};

/**
 * A page in Markdown. Its blocks fenced as "console" hold commands after "$ ", continued after "> ", each
 * followed by what it prints. A line "..." stands for any number of lines.
 */
class Page {
public:
  explicit Page(const std::filesystem::path& path);

  const std::vector<PageCommand>& commands() const { return m_commands; }
  /** Targets of the links to other files, without what follows "#". */
  std::vector<std::string> links() const;
  /** Writes the page anew with these outputs. */
  void write(const std::vector<std::string>& outputs) const;

private:
  void readBlock(std::size_t& line);

  std::filesystem::path m_path;
  std::vector<std::string> m_lines;
  std::vector<PageCommand> m_commands;
};

Page::Page(const std::filesystem::path& path) : m_path(path), m_lines(linesOf(readFile(path))) {
  for (std::size_t line = 0; line < m_lines.size(); ++line) {
    if (m_lines[line] == "```console") {
      readBlock(++line);
    }
  }
}

void Page::readBlock(std::size_t& line) {
  for (; line < m_lines.size() && m_lines[line] != "```"; ++line) {
    const std::string& text = m_lines[line];
    const bool continues =
        text.rfind("> ", 0) == 0 && !m_commands.empty() && m_commands.back().lineCount == 0;
    if (text.rfind("$ ", 0) == 0) {
      m_commands.push_back({line + 1, 0, text.substr(2) + "\n", ""});
    } else if (continues) {
      m_commands.back().firstLine = line + 1;
      m_commands.back().text += text.substr(2) + "\n";
    } else {
      ++m_commands.back().lineCount;
      m_commands.back().output += text + "\n";
    }
  }
}

std::vector<std::string> Page::links() const {
  static const std::regex LINK(R"(\]\(([^)#: ]+)(#[^)]*)?\))");
  std::vector<std::string> targets;
  for (const std::string& line : m_lines) {
    for (std::sregex_iterator found(line.begin(), line.end(), LINK), none; found != none; ++found) {
      targets.push_back((*found)[1]);
    }
  }
  return targets;
}

void Page::write(const std::vector<std::string>& outputs) const {
  std::ofstream stream(m_path, std::ios::binary);
  std::size_t line = 0;
  for (std::size_t i = 0; i < outputs.size(); ++i) {
    for (; line < m_commands[i].firstLine; ++line) {
      stream << m_lines[line] << '\n';
    }
    stream << outputs[i];
    line += m_commands[i].lineCount;
  }
  for (; line < m_lines.size(); ++line) {
    stream << m_lines[line] << '\n';
  }
}

/** Times and the numbers of threads differ from run to run; everything else has to be the same. */
std::string withoutTimes(const std::string& text) {
  static const std::regex ISO(R"(\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d(\.\d+)?(Z|[+-]\d\d:\d\d)?)");
  static const std::regex PLAIN(R"(\d{1,2}/\d{1,2}/\d{4} \d\d:\d\d:\d\d(:\d{1,3})?)");
  static const std::regex THREAD(R"(\[TVP-------[0-9A-F ]{8}\])");
  std::string result = std::regex_replace(text, ISO, "<time>");
  result = std::regex_replace(result, PLAIN, "<time>");
  return std::regex_replace(result, THREAD, "[TVP-------<thread>]");
}

bool matches(
    const std::vector<std::string>& shown, std::size_t at, const std::vector<std::string>& printed,
    std::size_t from) {
  for (; at < shown.size() && shown[at] != "..."; ++at, ++from) {
    if (from >= printed.size() || shown[at] != printed[from]) {
      return false;
    }
  }
  if (at == shown.size()) {
    return from == printed.size();
  }
  for (std::size_t next = from; next <= printed.size(); ++next) {
    if (matches(shown, at + 1, printed, next)) {
      return true;
    }
  }
  return false;
}

/** Whether the output is what the page shows, with what differs from run to run set aside. */
bool showsTheSame(const std::string& shown, const std::string& printed) {
  return matches(linesOf(withoutTimes(shown)), 0, linesOf(withoutTimes(printed)), 0);
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

/** Where the sources of the product are. */
const char* const PLACES[] = {"CIM",       "backend", "cmpi",     "host",  "oslib",
                              "providers", "text",    "terminal", "voltvk"};

/** Texts between single backquotes that begin with a directory of the project and name a file, not a pattern.
 */
std::set<std::string> filesNamedIn(const std::string& page) {
  static const std::regex FILE(
      "`((CIM|backend|bench|cmake|cmpi|docs|fuzz|host|oslib|packaging|providers|schema|share|"
      "standard|terminal|tests|text|voltvk)/[A-Za-z0-9_./-]+)`");
  std::set<std::string> files;
  for (std::sregex_iterator found(page.begin(), page.end(), FILE), none; found != none; ++found) {
    files.insert((*found)[1]);
  }
  return files;
}

/** A file or directory of the project, a header named without its ending, or a generated file. */
bool exists(const std::string& file) {
  return fs::exists(SOURCES / file) || fs::exists(SOURCES / (file + ".h")) ||
         fs::exists(fs::path(TVP_BINARY_DIR) / file);
}

TEST(DocumentationTest, FilesAndDirectoriesThatPagesNameExist) {
  std::size_t count = 0;
  for (const fs::path& directory : {SOURCES, SOURCES / "docs"}) {
    for (const auto& entry : fs::directory_iterator(directory)) {
      if (entry.path().extension() != ".md") {
        continue;
      }
      for (const std::string& file : filesNamedIn(readFile(entry.path()))) {
        EXPECT_TRUE(exists(file)) << entry.path().filename() << " names " << file;
        ++count;
      }
    }
  }
  EXPECT_GT(count, 100U);
}

TEST(DocumentationTest, TheCompatibilityPageNamesExactlyTheFilesThatAreMarked) {
  std::set<std::string> marked;
  for (const char* place : PLACES) {
    for (const auto& entry : fs::recursive_directory_iterator(SOURCES / place)) {
      if (entry.is_regular_file() && readFile(entry.path()).find("COMPAT:") != std::string::npos) {
        marked.insert(fs::relative(entry.path(), SOURCES).string());
      }
    }
  }
  std::string page = readFile(SOURCES / "docs/compatibility.md");
  const std::size_t tables = page.find("\n## Log texts\n");
  ASSERT_NE(tables, std::string::npos);
  page.erase(0, tables);
  const std::set<std::string> named = filesNamedIn(page);
  EXPECT_FALSE(marked.empty());
  for (const std::string& file : marked) {
    EXPECT_EQ(named.count(file), 1U) << file << " has a COMPAT comment and is not on docs/compatibility.md";
  }
  for (const std::string& file : named) {
    EXPECT_EQ(marked.count(file), 1U)
        << "docs/compatibility.md names " << file << ", which has no COMPAT comment";
  }
}

}  // namespace
