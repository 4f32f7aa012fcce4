// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Output.h"

#include <algorithm>
#include <iostream>

namespace voltvk::ctl {

namespace {

std::string cell(const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? "yes" : "no";
  }
  return value.is_null() ? "" : value.dump();
}

/** Columns that a text takes on a terminal, every character counted as one. */
std::size_t width(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

void writeRow(const std::vector<std::string>& cells, const std::vector<std::size_t>& widths) {
  std::string line;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    line += cells[i] + std::string(widths[i] - width(cells[i]) + 2, ' ');
  }
  line.erase(line.find_last_not_of(' ') + 1);
  std::cout << line << '\n';
}

}  // namespace

void Output::write(const Json& document, const std::string& text) const {
  if (isJson()) {
    std::cout << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
  } else {
    std::cout << text << '\n';
  }
}

void Output::writeList(
    const Json& list, const std::vector<std::pair<const char*, const char*>>& columns,
    const std::string& whenEmpty) const {
  if (isJson() || list.empty()) {
    write(list, whenEmpty);
    return;
  }
  std::vector<std::vector<std::string>> rows(1);
  for (const auto& [member, heading] : columns) {
    rows[0].emplace_back(heading);
  }
  for (const Json& object : list) {
    rows.emplace_back();
    for (const auto& [member, heading] : columns) {
      rows.back().push_back(cell(object.at(member)));
    }
  }
  std::vector<std::size_t> widths(columns.size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], width(row[i]));
    }
  }
  for (const auto& row : rows) {
    writeRow(row, widths);
  }
}

}  // namespace voltvk::ctl
