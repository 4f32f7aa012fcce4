// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/TableFormatter.h"

#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/output/TextTable.h"
#include "host/tvpcim/storage/Size.h"

#include <algorithm>

namespace tvp::host::tvpcim {
namespace {

bool isListOfInstances(const Value& value) {
  return value.type() == CMPI_instanceA && !value.isNull();
}

std::vector<Instance> instancesOf(const Value& value) {
  std::vector<Instance> instances;
  instances.reserve(value.asArray().size());
  for (const Value& element : value.asArray()) {
    instances.push_back(element.asInstance());
  }
  return instances;
}

/** "pool 3 gold (SSD)  100 GiB, 40% used" */
std::string nodeText(const Instance& node) {
  std::string text = textOf(node, "Kind");
  const Value* number = node.property("Number");
  if (number != nullptr && !number->isNull()) {
    text += " " + cellText(*number);
  }
  text += " " + textOf(node, "Name");
  const std::string detail = textOf(node, "Detail");
  text += detail.empty() ? "" : " (" + detail + ")";
  const std::uint64_t size = numberOf(node, "SizeInSectors");
  const Value* used = node.property("UsedInSectors");
  text += "  " + formatSectors(size);
  if (used != nullptr && !used->isNull() && size > 0) {
    text += ", " + std::to_string(percentOf(used->asUnsigned(), size)) + "% used";
  }
  return printable(text);
}

}  // namespace

TableFormatter::TableFormatter(const Terminal& terminal, bool wide) : m_terminal(terminal), m_wide(wide) {
  if (wide) {
    m_terminal.columns = Terminal::UNLIMITED;
  }
}

std::string TableFormatter::fitted(const std::string& line) const {
  return cutToWidth(line, m_terminal.columns) + "\n";
}

std::string
TableFormatter::table(const std::vector<Instance>& instances, const std::vector<Column>& columns) const {
  TextTable table;
  std::vector<const Column*> shown;
  for (const Column& column : columns) {
    if (m_wide || !column.wideOnly) {
      table.addColumn(column.title, column.numbers);
      shown.push_back(&column);
    }
  }
  for (const Instance& instance : instances) {
    std::vector<std::string> cells;
    cells.reserve(shown.size());
    for (const Column* column : shown) {
      cells.push_back(column->cell(instance));
    }
    table.addRow(cells);
  }
  return table.text(m_terminal);
}

std::string TableFormatter::listing(const Listing& listing) const {
  if (listing.instances.empty()) {
    return "No " + listing.noun + ".\n";
  }
  return table(listing.instances, listing.columns);
}

std::string TableFormatter::record(const Instance& instance) const {
  std::size_t width = 0;
  for (const NamedValue& property : instance.properties) {
    width = std::max(width, displayWidth(property.name));
  }
  std::string result;
  std::string tables;
  for (const NamedValue& property : instance.properties) {
    if (isListOfInstances(property.value)) {
      const std::vector<Instance> instances = instancesOf(property.value);
      tables += fitted(property.name + (instances.empty() ? ": none" : ":"));
      tables += instances.empty() ? "" : table(instances, columnsOf(instances));
      continue;
    }
    const std::string padding(width - displayWidth(property.name), ' ');
    result += fitted(property.name + padding + "  " + printable(cellText(property.value)));
  }
  return result + tables;
}

std::string TableFormatter::nothing() const {
  return "No instance.\n";
}

std::string TableFormatter::paths(const std::string& noun, const std::vector<ObjectPath>& paths) const {
  std::string result = paths.empty() ? "No " + noun + ".\n" : "";
  for (const ObjectPath& path : paths) {
    result += printable(toPathText(path)) + "\n";  // never cut: a path is there to be copied
  }
  return result;
}

std::string TableFormatter::event(const Instance& instance) const {
  const std::string description = textOf(instance, "eventDesc");
  if (!description.empty()) {
    return fitted(printable(
        textOf(instance, "eventTime") + "  " + std::to_string(numberOf(instance, "eventCode")) + "  " +
        description));
  }
  std::vector<std::string> values;
  for (const NamedValue& property : instance.properties) {
    if (!property.value.isNull()) {
      values.push_back(property.name + "=" + printable(cellText(property.value)));
    }
  }
  return fitted(join(values, "  "));
}

void TableFormatter::addBranch(
    std::string& result, const Instance& node, const std::string& lead, const std::string& below) const {
  result += fitted(lead + nodeText(node));
  const Value* children = node.property("Children");
  if (children == nullptr || children->isNull()) {
    return;
  }
  const Value::List& nodes = children->asArray();
  for (const Value& child : nodes) {
    const bool last = &child == &nodes.back();
    addBranch(result, child.asInstance(), below + (last ? "└─ " : "├─ "), below + (last ? "   " : "│  "));
  }
}

std::string TableFormatter::tree(const std::vector<Instance>& roots) const {
  std::string result = roots.empty() ? "No drives, pools or volumes.\n" : "";
  for (const Instance& root : roots) {
    addBranch(result, root, "", "");
  }
  return result;
}

}  // namespace tvp::host::tvpcim
