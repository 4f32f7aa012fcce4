// SPDX-License-Identifier: Apache-2.0
// The pages for developers name files that exist, and what is kept for compatibility is listed completely.
#include "docs/Page.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

using namespace tvp::test;
namespace fs = std::filesystem;

namespace {

const fs::path SOURCES = TVP_SOURCE_DIR;

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
