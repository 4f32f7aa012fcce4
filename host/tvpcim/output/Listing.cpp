// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Listing.h"

#include "host/schema/Names.h"
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Text.h"
#include "text/Size.h"

#include <cmath>
#include <utility>

namespace tvp::host::tvpcim {
namespace {

bool isNumber(CMPIType type) {
  return (type & CMPI_ARRAY) == 0 && ((type & CMPI_INTEGER) != 0 || (type & CMPI_REAL) != 0);
}

const Value* setValueOf(const Instance& instance, const std::string& property) {
  const Value* value = instance.property(property);
  return value == nullptr || value->isNull() ? nullptr : value;
}

}  // namespace

std::string cellText(const Value& value) {
  if (value.isNull()) {
    return "-";
  }
  if (value.isArray()) {
    std::vector<std::string> elements;
    for (const Value& element : value.asArray()) {
      elements.push_back(cellText(element));
    }
    return join(elements, ",");
  }
  switch (value.type()) {
  case CMPI_string:
    return value.asString();
  case CMPI_boolean:
    return value.asBoolean() ? "true" : "false";
  case CMPI_dateTime:
    return value.asDateTime().iso8601();
  case CMPI_ref:
    return toPathText(value.asReference());
  default:
    return value.toText();
  }
}

std::uint64_t numberOf(const Instance& instance, const std::string& property) {
  const Value* value = setValueOf(instance, property);
  const bool isUnsigned = value != nullptr && (value->type() & (CMPI_UINT | CMPI_SINT)) == CMPI_UINT;
  return isUnsigned && !value->isArray() ? value->asUnsigned() : 0;
}

std::string textOf(const Instance& instance, const std::string& property) {
  const Value* value = setValueOf(instance, property);
  return value != nullptr && value->type() == CMPI_string ? value->asString() : "";
}

bool flagOf(const Instance& instance, const std::string& property) {
  const Value* value = setValueOf(instance, property);
  return value != nullptr && value->type() == CMPI_boolean && value->asBoolean();
}

Column plainColumn(const std::string& title, const std::string& property, bool numbers) {
  return {title, numbers, false, false, [property](const Instance& instance) {
            const Value* value = instance.property(property);
            return value == nullptr ? "-" : cellText(*value);
          }};
}

Column sizeColumn(const std::string& title, const std::string& property) {
  return {title, true, false, false, [property](const Instance& instance) {
            return setValueOf(instance, property) == nullptr
                       ? "-"
                       : text::formatSectors(numberOf(instance, property));
          }};
}

Column flagColumn(const std::string& title, const std::string& property) {
  return {title, false, false, false, [property](const Instance& instance) {
            return flagOf(instance, property) ? "yes" : "no";
          }};
}

Column codeColumn(const std::string& title, const SchemaClass& schemaClass, const std::string& property) {
  return {title, false, false, false, [&schemaClass, property](const Instance& instance) {
            return setValueOf(instance, property) == nullptr
                       ? "-"
                       : codeName(schemaClass, property, numberOf(instance, property));
          }};
}

Column textColumn(const std::string& title, std::function<std::string(const Instance&)> cell) {
  return {title, false, false, false, std::move(cell)};
}

Column staying(Column column) {
  column.stays = true;
  return column;
}

Column onlyWide(Column column) {
  column.wideOnly = true;
  return column;
}

std::vector<Column> columnsOf(const std::vector<Instance>& instances) {
  std::vector<NamedValue> known;
  for (const Instance& instance : instances) {
    for (const NamedValue& property : instance.properties) {
      if (!property.value.isNull() && findValue(known, property.name) == nullptr) {
        known.push_back(property);
      }
    }
  }
  std::vector<Column> columns;
  columns.reserve(known.size());
  for (const NamedValue& property : known) {
    columns.push_back(plainColumn(property.name, property.name, isNumber(property.value.type())));
  }
  return columns;
}

unsigned percentOf(std::uint64_t used, std::uint64_t whole) {
  const double share = whole == 0 ? 0 : static_cast<double>(used) / static_cast<double>(whole);
  return static_cast<unsigned>(std::lround(100 * share));
}

std::string codeName(const SchemaClass& schemaClass, const std::string& property, std::uint64_t code) {
  const SchemaProperty* declared = schemaClass.property(property);
  const std::string number = std::to_string(code);
  const std::string name = declared == nullptr ? "" : declared->valueName(number);
  return name.empty() ? number : name;
}

}  // namespace tvp::host::tvpcim
