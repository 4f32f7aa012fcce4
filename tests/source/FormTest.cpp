// SPDX-License-Identifier: Apache-2.0
// What every source has in common, beyond what clang-format and the compiler see.
#include "SourceTree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace tvp::test {
namespace {

constexpr std::size_t MOST_LINES = 600;

/** The macro that guards a header: its path in capitals. Headers of tests and of CMPI start below their
 * directory. */
std::string guardOf(const std::string& path) {
  std::string guard = path;
  std::transform(guard.begin(), guard.end(), guard.begin(), [](char letter) {
    return letter == '/' || letter == '.' || letter == '-' ? '_' : static_cast<char>(std::toupper(letter));
  });
  return guard;
}

std::string lineAt(const SourceFile& file, std::size_t index) {
  return index < file.lines.size() ? file.lines[index] : "";
}

/** What is wrong with the form of a file, one sentence each. */
std::vector<std::string> faultsOf(const SourceFile& file) {
  std::vector<std::string> faults;
  const bool isScript = lineAt(file, 0).compare(0, 2, "#!") == 0;
  const std::string license = lineAt(file, isScript ? 1 : 0);
  if (license != "// SPDX-License-Identifier: Apache-2.0" &&
      license != "# SPDX-License-Identifier: Apache-2.0") {
    faults.push_back("the first line is not the license, '// SPDX-License-Identifier: Apache-2.0'");
  }
  if (file.lines.size() > MOST_LINES) {
    faults.push_back("has " + std::to_string(file.lines.size()) + " lines; split it below 600");
  }
  if (!file.isHeader()) {
    return faults;
  }
  const std::string guard = guardOf(file.path);
  const auto ifndef = std::find(file.lines.begin(), file.lines.end(), "#ifndef " + guard);
  if (ifndef == file.lines.end() || std::next(ifndef) == file.lines.end() ||
      *std::next(ifndef) != "#define " + guard || file.lines.back() != "#endif") {
    faults.push_back("the header is not guarded by " + guard);
  }
  // Function bodies are indented; there, the names reach nobody else.
  if (std::any_of(file.lines.begin(), file.lines.end(), [](const std::string& line) {
        return line.compare(0, 15, "using namespace") == 0;
      })) {
    faults.push_back("'using namespace' in a header reaches everyone who includes it");
  }
  return faults;
}

TEST(Form, OfEverySourceIsTheSame) {
  EXPECT_GT(sourceFiles().size(), 100U);
  for (const SourceFile& file : sourceFiles()) {
    for (const std::string& fault : faultsOf(file)) {
      ADD_FAILURE() << file.path << ": " << fault;
    }
  }
}

TEST(Form, FaultsAreNoticed) {
  const SourceFile sound = {
      "text/X.h",
      {"// SPDX-License-Identifier: Apache-2.0", "#ifndef TEXT_X_H", "#define TEXT_X_H", "", "#endif"}};
  EXPECT_TRUE(faultsOf(sound).empty());
  const std::vector<std::function<void(SourceFile&)>> mistakes = {
      [](SourceFile& file) { file.lines.front() = "// A header."; },
      [](SourceFile& file) { file.path = "oslib/X.h"; },
      [](SourceFile& file) { file.lines[3] = "using namespace std;"; },
      [](SourceFile& file) { file.lines.insert(file.lines.begin() + 3, MOST_LINES, ""); }};
  for (std::size_t i = 0; i < mistakes.size(); ++i) {
    SourceFile file = sound;
    mistakes[i](file);
    EXPECT_EQ(faultsOf(file).size(), 1U) << "mistake " << i;
  }
}

}  // namespace
}  // namespace tvp::test
