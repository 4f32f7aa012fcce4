// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_OUTPUT_LISTING_H
#define HOST_TVPCIM_OUTPUT_LISTING_H

#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** A column of a table. Machine output does not know columns: it has every property. */
struct Column {
  std::string title;
  bool numbers = false;   ///< aligned to the right
  bool wideOnly = false;  ///< shown with --wide alone
  bool stays = false;     ///< shown on a narrow terminal too
  std::function<std::string(const Instance&)> cell;
};

/** Instances of one kind to show, and how a table shows them. */
struct Listing {
  std::string noun;  ///< what they are, in the plural: "pools"
  std::vector<Instance> instances;
  std::vector<Column> columns;
};

/** A value for people: texts without quotes, "-" for null, the elements of an array with commas. */
std::string cellText(const Value& value);

/** A number property of any unsigned type; 0 when it is null, missing or no number. */
std::uint64_t numberOf(const Instance& instance, const std::string& property);
/** A text property; empty when it is null, missing or no text. */
std::string textOf(const Instance& instance, const std::string& property);
/** A boolean property; false when it is null, missing or no boolean. */
bool flagOf(const Instance& instance, const std::string& property);

/** The property as it is. */
Column plainColumn(const std::string& title, const std::string& property, bool numbers = false);
/** A number of sectors, as a size. */
Column sizeColumn(const std::string& title, const std::string& property);
/** A boolean as "yes" or "no". */
Column flagColumn(const std::string& title, const std::string& property);
/** A code, by the name that the schema has for it; the number when it has none. */
Column codeColumn(const std::string& title, const SchemaClass& schemaClass, const std::string& property);
/** A text that is made of the whole instance. */
Column textColumn(const std::string& title, std::function<std::string(const Instance&)> cell);
/** The same column, for --wide alone. */
Column onlyWide(Column column);
/** The same column, for narrow terminals too. */
Column staying(Column column);
/** A column for every property that one of the instances has set, in their order. */
std::vector<Column> columnsOf(const std::vector<Instance>& instances);

/** How much of a whole is used, in percent and rounded; 0 of a whole of 0. */
unsigned percentOf(std::uint64_t used, std::uint64_t whole);

/** The name that the schema has for the value of an enumerated property; the number when it has none. */
std::string codeName(const SchemaClass& schemaClass, const std::string& property, std::uint64_t code);

}  // namespace tvp::host::tvpcim

#endif
