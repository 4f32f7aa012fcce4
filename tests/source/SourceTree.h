// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SOURCE_SOURCETREE_H
#define TESTS_SOURCE_SOURCETREE_H

#include <string>
#include <vector>

namespace tvp::test {

/** A file of this project. */
struct SourceFile {
  std::string path;  ///< from the top of the project
  std::vector<std::string> lines;

  bool isHeader() const;
  /** Whether the path is the directory or file itself or lies below it. */
  bool isBelow(const std::string& directory) const;
};

/** Every source in C and C++, CMake file and shell script of the project, sorted by path. Build trees are
 * left out. */
const std::vector<SourceFile>& sourceFiles();

/** A header that a source includes. */
struct Include {
  std::size_t line = 0;  ///< counted from 1
  std::string name;      ///< as it is written
  std::string path;      ///< from the top of the project; empty when it is not a header of the project
  bool isQuoted = false;
};

std::vector<Include> includesOf(const SourceFile& file);

}  // namespace tvp::test

#endif
