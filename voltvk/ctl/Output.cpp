// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Output.h"

#include "terminal/Table.h"
#include "text/Utf8.h"

#include <algorithm>
#include <iostream>

namespace voltvk::ctl {

namespace {

using tvp::terminal::Terminal;

/** A list is shown with commas. */
std::string cell(const Json& value) {
  if (value.is_string()) {
    return value.get<std::string>();
  }
  if (value.is_boolean()) {
    return value.get<bool>() ? "yes" : "no";
  }
  if (value.is_array()) {
    std::string list;
    for (const Json& element : value) {
      list += (list.empty() ? "" : ", ") + cell(element);
    }
    return list;
  }
  return value.is_null() ? "" : value.dump();
}

}  // namespace

void Output::write(const Json& document, const std::string& text) const {
  if (isJson()) {
    std::cout << tvp::text::printableJson(document.dump(2, ' ', false, Json::error_handler_t::replace))
              << '\n';
  } else {
    std::cout << tvp::text::printableLines(text) << '\n';
  }
}

void Output::writeList(
    const Json& list, const std::vector<Column>& columns, const std::string& whenEmpty) const {
  if (isJson() || list.empty()) {
    write(list, whenEmpty);
    return;
  }
  tvp::terminal::Table table;
  for (const Column& column : columns) {
    table.addColumn(column.heading, column.numbers, column.stays);
  }
  for (const Json& object : list) {
    std::vector<std::string> cells;
    cells.reserve(columns.size());
    for (const Column& column : columns) {
      cells.push_back(cell(object.at(column.member)));
    }
    table.addRow(cells);
  }
  const bool fitted =
      std::any_of(columns.begin(), columns.end(), [](const Column& column) { return column.stays; });
  std::cout << table.text(fitted ? Terminal::ofStandardOutput() : Terminal());
  if (const std::size_t hidden = table.hiddenColumns(); hidden > 0) {
    std::cout << hidden
              << (hidden == 1 ? " column hidden, -o json shows it\n"
                              : " columns hidden, -o json shows them\n");
  }
}

}  // namespace voltvk::ctl
