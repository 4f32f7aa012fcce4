// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"
#include "text/Size.h"

#include <algorithm>

namespace tvp::host::tvpcim {
namespace {

Value::List arrayOf(const Instance& identity, const std::string& property) {
  const Value* value = identity.property(property);
  return value == nullptr || value->isNull() || !value->isArray() ? Value::List() : value->asArray();
}

/** Whether it is the mark that ends an array, which tells people nothing. */
bool isEndMark(const std::string& name) {
  const std::string ending = "MaxIndex";
  return name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

/**
 * "NAME: yes" for the entries of two arrays that belong together.
 * @param sizes a third one, with the size of the largest volume for each
 */
Value paired(
    const Instance& identity, const std::string& names, const std::string& values,
    const std::string& sizes = "") {
  const Value::List titles = arrayOf(identity, names);
  const Value::List flags = arrayOf(identity, values);
  const Value::List largest = arrayOf(identity, sizes);
  Value::List pairs;
  for (std::size_t index = 0; index < std::min(titles.size(), flags.size()); ++index) {
    const std::string title = cellText(titles[index]);
    const std::string flag = cellText(flags[index]);
    if (!isEndMark(title)) {
      pairs.push_back(Value::string(
          title + ": " +
          (flag == "0"   ? "no"
           : flag == "1" ? "yes"
                         : flag) +
          (index < largest.size() ? ", volumes up to " + text::formatSectors(largest[index].asUnsigned())
                                  : "")));
    }
  }
  return Value::array(CMPI_string, std::move(pairs));
}

/** The instance with its parallel arrays as lists, its sizes in units and its codes by their names. */
Instance forPeople(const Instance& identity, const SchemaClass& schemaClass) {
  Instance shown = identity;
  shown.properties.clear();
  for (const NamedValue& property : identity.properties) {
    const std::string& name = property.name;
    if (name == "SupportedFeatureNames") {
      shown.properties.push_back({"Features", paired(identity, name, "SupportedFeaturesValues")});
    } else if (name == "SupportedAdjustmentNames") {
      shown.properties.push_back({"Adjustments", paired(identity, name, "SupportedAdjustmentValues")});
    } else if (name == "SupportedChunkSizeNames") {
      shown.properties.push_back(
          {"ChunkSizes",
           paired(identity, name, "SupportedChunkSizeValues", "SupportedMaxVolumeSizeInSectors")});
    } else if (name == "MinTotalPoolSizeInSectors" || name == "MinRequiredSizeFromPoolInSectors") {
      const std::string title = name.substr(0, name.size() - std::string("InSectors").size());
      shown.properties.push_back({title, Value::string(text::formatSectors(numberOf(identity, name)))});
    } else if (name == "PolicyEngineStatus" || name == "TarvexPlusEnabled") {
      const std::string code = codeName(schemaClass, name, numberOf(identity, name));
      shown.properties.push_back({name, Value::string(code)});
    } else if (name.find("Supported") != 0) {
      shown.properties.push_back(property);
    }
  }
  return shown;
}

void showIdentity(Tool& tool) {
  const Instance& identity = tool.inventory().requireIdentity();
  if (tool.formatter().forPeople()) {
    const SchemaClass& schemaClass = tool.session().classNamed(identity.path.className);
    tool.print(tool.formatter().record(forPeople(identity, schemaClass)));
  } else {
    tool.print(tool.formatter().listing({"identity", {identity}, {}}));
  }
}

}  // namespace

void addIdentityCommand(CLI::App& app, Tool& tool) {
  addVerb(app, tool, "identity", "Show the product, its revisions, features and limits", "", [&tool] {
    showIdentity(tool);
  });
}

}  // namespace tvp::host::tvpcim
