// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_DOCS_PAGE_H
#define TESTS_DOCS_PAGE_H

#include "support/Lines.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace tvp::test {

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

/** Whether the output is what the page shows, with what differs from run to run set aside. */
bool showsTheSame(const std::string& shown, const std::string& printed);

}  // namespace tvp::test

#endif
