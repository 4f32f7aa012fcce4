// SPDX-License-Identifier: Apache-2.0
#include "SourceTree.h"

#include "support/Lines.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <set>

namespace tvp::test {

namespace fs = std::filesystem;

namespace {

const fs::path TOP = TVP_SOURCE_DIR;

bool isSource(const fs::path& path) {
  static const std::set<std::string> EXTENSIONS = {".c", ".cpp", ".h", ".cmake", ".sh"};
  const std::string name = path.filename();
  return EXTENSIONS.count(path.extension()) != 0 || name == "CMakeLists.txt" || path == TOP / "dev";
}

std::vector<SourceFile> readTree() {
  std::vector<SourceFile> files;
  for (auto entry = fs::recursive_directory_iterator(TOP); entry != fs::recursive_directory_iterator();
       ++entry) {
    const fs::path path = entry->path();
    if (entry->is_directory() && (path.filename() == "build" || path.filename().string().front() == '.')) {
      entry.disable_recursion_pending();
    } else if (entry->is_regular_file() && isSource(path)) {
      files.push_back({path.lexically_relative(TOP), linesOf(readFile(path))});
    }
  }
  std::sort(files.begin(), files.end(), [](const SourceFile& left, const SourceFile& right) {
    return left.path < right.path;
  });
  return files;
}

/** Where the compiler finds an included header, from the top of the project; empty for headers of others. */
std::string resolved(const std::string& from, const Include& include) {
  const std::array<fs::path, 5> places = {
      include.isQuoted ? fs::path(from).parent_path() : fs::path(), "", "standard/cmpi", "voltvk/include",
      "tests"};
  const auto* found = std::find_if(places.begin(), places.end(), [&include](const fs::path& place) {
    return fs::exists(TOP / place / include.name);
  });
  return found == places.end() ? "" : (*found / include.name).lexically_normal().string();
}

}  // namespace

bool SourceFile::isHeader() const {
  return fs::path(path).extension() == ".h";
}

bool SourceFile::isBelow(const std::string& directory) const {
  return path == directory || path.compare(0, directory.size() + 1, directory + "/") == 0;
}

const std::vector<SourceFile>& sourceFiles() {
  static const std::vector<SourceFile> files = readTree();
  return files;
}

std::vector<Include> includesOf(const SourceFile& file) {
  const std::string extension = fs::path(file.path).extension();
  std::vector<Include> includes;
  for (std::size_t index = 0; index < file.lines.size(); ++index) {
    const std::string& line = file.lines[index];
    const std::size_t start = line.find_first_of("\"<");
    const std::size_t hash = line.find_first_not_of(" \t");
    if (hash == std::string::npos || line[hash] != '#' || line.find("include") == std::string::npos ||
        start == std::string::npos || (extension != ".h" && extension != ".cpp" && extension != ".c")) {
      continue;
    }
    Include include;
    include.line = index + 1;
    include.isQuoted = line[start] == '"';
    include.name = line.substr(start + 1, line.find_first_of("\">", start + 1) - start - 1);
    include.path = resolved(file.path, include);
    includes.push_back(include);
  }
  return includes;
}

}  // namespace tvp::test
