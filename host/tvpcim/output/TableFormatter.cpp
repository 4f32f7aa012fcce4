// SPDX-License-Identifier: Apache-2.0
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Formatter.h"
#include "host/tvpcim/output/Text.h"
#include "terminal/Table.h"
#include "terminal/Width.h"
#include "text/Size.h"

namespace tvp::host::tvpcim {
namespace {

using terminal::Table;

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
  text += "  " + text::formatSectors(size);
  if (used != nullptr && !used->isNull() && size > 0) {
    // A drive can have shrunk below what its pool keeps on it.
    const std::uint64_t amount = used->asUnsigned();
    text += ", " +
            (amount > size ? text::formatSectors(amount) : std::to_string(percentOf(amount, size)) + "%") +
            " used";
  }
  return text;
}

void addBranch(Table& table, const Instance& node, Table::Row parent) {
  const Table::Row row = table.addRow({nodeText(node)}, parent);
  const Value* children = node.property("Children");
  if (children != nullptr && !children->isNull()) {
    for (const Value& child : children->asArray()) {
      addBranch(table, child.asInstance(), row);
    }
  }
}

/**
 * Tables for people. On a terminal no row is wider than it, unless everything was asked for; elsewhere
 * nothing is cut. Control characters and bytes that are not UTF-8 are shown as \xHH.
 */
class TableFormatter : public Formatter {
public:
  explicit TableFormatter(const Appearance& appearance)
      : m_terminal(appearance.terminal), m_wide(appearance.wide) {
    if (m_wide) {
      m_terminal.columns = terminal::Terminal::UNLIMITED;
    }
  }

  bool forPeople() const override { return true; }

  std::string listing(const Listing& listing) const override {
    return listing.instances.empty() ? "No " + listing.noun + ".\n"
                                     : table(listing.instances, listing.columns);
  }

  std::string record(const Instance& instance) const override {
    Table values(Table::Kind::Untitled);
    values.addColumn("name");
    values.addColumn("value");
    std::string tables;
    for (const NamedValue& property : instance.properties) {
      if (isListOfInstances(property.value)) {
        const std::vector<Instance> instances = instancesOf(property.value);
        tables += fitted(property.name + (instances.empty() ? ": none" : ":"));
        tables += instances.empty() ? "" : table(instances, columnsOf(instances));
      } else {
        values.addRow({property.name, cellText(property.value)});
      }
    }
    return values.text(m_terminal) + tables;
  }

  std::string nothing() const override { return "No instance.\n"; }

  std::string paths(const std::string& noun, const std::vector<ObjectPath>& paths) const override {
    std::string result = paths.empty() ? "No " + noun + ".\n" : "";
    for (const ObjectPath& path : paths) {
      result += printable(toPathText(path)) + "\n";  // never cut: a path is there to be copied
    }
    return result;
  }

  std::string event(const Instance& instance) const override {
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

  std::string tree(const std::vector<Instance>& roots) const override {
    if (roots.empty()) {
      return "No drives, pools or volumes.\n";
    }
    Table table(Table::Kind::Tree);
    table.addColumn("node");
    for (const Instance& root : roots) {
      addBranch(table, root, nullptr);
    }
    return table.text(m_terminal);
  }

private:
  std::string table(const std::vector<Instance>& instances, const std::vector<Column>& columns) const {
    Table table;
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

  std::string fitted(const std::string& line) const {
    return terminal::cutToWidth(line, m_terminal.columns) + "\n";
  }

  terminal::Terminal m_terminal;
  bool m_wide;
};

}  // namespace

std::unique_ptr<const Formatter> makeTableFormatter(const Appearance& appearance) {
  return std::make_unique<TableFormatter>(appearance);
}

}  // namespace tvp::host::tvpcim
