// SPDX-License-Identifier: Apache-2.0
#include "docs/Page.h"

#include <fstream>
#include <regex>

namespace tvp::test {

namespace {

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

}  // namespace

bool showsTheSame(const std::string& shown, const std::string& printed) {
  return matches(linesOf(withoutTimes(shown)), 0, linesOf(withoutTimes(printed)), 0);
}

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

}  // namespace tvp::test
