// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_CTL_OUTPUT_H
#define VOLTVK_CTL_OUTPUT_H

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

namespace voltvk::ctl {

/** Keeps the order in which members are added. */
using Json = nlohmann::ordered_json;

/** A column of a table: the member of each object that it shows. */
struct Column {
  const char* member;
  const char* heading;
  bool numbers = false;  ///< aligned to the right
  bool stays = false;    ///< shown on a narrow terminal too
};

/** Where commands write their output. Machine output is one JSON document and nothing else. */
class Output {
public:
  /** Set by the option -o. */
  std::string format = "table";

  bool isJson() const { return format == "json"; }

  /** Writes the document with the output format "json", else the text. */
  void write(const Json& document, const std::string& text) const;

  /**
   * Writes a list of objects: with the output format "json" as it is, else as a table. If a column stays,
   * others are left out on a terminal that is too narrow, which a last line announces; else all are shown.
   * @param whenEmpty what to say in place of an empty table
   */
  void writeList(const Json& list, const std::vector<Column>& columns, const std::string& whenEmpty) const;
};

}  // namespace voltvk::ctl

#endif
