// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Output.h"

#include "terminal/Table.h"
#include "text/Utf8.h"

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
    table.addColumn(column.heading, column.numbers);
  }
  for (const Json& object : list) {
    std::vector<std::string> cells;
    for (const Column& column : columns) {
      cells.push_back(cell(object.at(column.member)));
    }
    table.addRow(cells);
  }
  std::cout << table.text({});  // whole on a terminal as well: no option would show what is left out
}

}  // namespace voltvk::ctl
