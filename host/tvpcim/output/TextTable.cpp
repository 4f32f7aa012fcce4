// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/TextTable.h"

#include "host/tvpcim/output/Text.h"

#include <algorithm>

namespace tvp::host::tvpcim {
namespace {

constexpr std::size_t GAP = 2;
constexpr const char* BOLD = "\033[1m";
constexpr const char* PLAIN = "\033[0m";

}  // namespace

void TextTable::addColumn(const std::string& title, bool numbers) {
  m_columns.push_back({title, numbers, displayWidth(title)});
}

void TextTable::addRow(const std::vector<std::string>& cells) {
  std::vector<std::string> row(m_columns.size());
  for (std::size_t index = 0; index < std::min(cells.size(), row.size()); ++index) {
    row[index] = printable(cells[index]);
    m_columns[index].width = std::max(m_columns[index].width, displayWidth(row[index]));
  }
  m_rows.push_back(std::move(row));
}

std::size_t TextTable::fitting(const Terminal& terminal) const {
  std::size_t used = 0;
  std::size_t count = 0;
  for (const Column& column : m_columns) {
    used += column.width + (count == 0 ? 0 : GAP);
    if (count > 0 && used > terminal.columns) {
      break;
    }
    ++count;
  }
  return count;
}

std::string
TextTable::line(const std::vector<std::string>& cells, std::size_t count, const Terminal& terminal) const {
  std::string result;
  for (std::size_t index = 0; index < count; ++index) {
    const std::string cell = cutToWidth(cells[index], terminal.columns);
    const std::size_t width = std::min(m_columns[index].width, terminal.columns);
    const std::string padding(width - std::min(width, displayWidth(cell)), ' ');
    result += index == 0 ? "" : std::string(GAP, ' ');
    result += m_columns[index].numbers ? padding + cell : cell + padding;
  }
  return result.substr(0, result.find_last_not_of(' ') + 1);
}

std::string TextTable::text(const Terminal& terminal) const {
  const std::size_t count = fitting(terminal);
  std::vector<std::string> titles;
  for (const Column& column : m_columns) {
    titles.push_back(column.title);
  }
  const std::string head = line(titles, count, terminal);
  std::string result = terminal.colour ? BOLD + head + PLAIN + "\n" : head + "\n";
  for (const std::vector<std::string>& row : m_rows) {
    result += line(row, count, terminal) + "\n";
  }
  return result;
}

}  // namespace tvp::host::tvpcim
