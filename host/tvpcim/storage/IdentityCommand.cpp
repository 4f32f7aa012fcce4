// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/storage/StorageVerbs.h"
#include "text/Size.h"

#include <algorithm>

namespace tvp::host::tvpcim {
namespace {

/** "NAME=VALUE" for the entries of two arrays that belong together. */
Value paired(const Instance& identity, const std::string& names, const std::string& values) {
  const Value* first = identity.property(names);
  const Value* second = identity.property(values);
  Value::List pairs;
  if (first != nullptr && second != nullptr && !first->isNull() && !second->isNull()) {
    const std::size_t count = std::min(first->asArray().size(), second->asArray().size());
    for (std::size_t index = 0; index < count; ++index) {
      pairs.push_back(
          Value::string(cellText(first->asArray()[index]) + "=" + cellText(second->asArray()[index])));
    }
  }
  return Value::array(CMPI_string, std::move(pairs));
}

/** The instance with its parallel arrays as pairs, its sizes in units and its codes by their names. */
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
      shown.properties.push_back({"ChunkSizes", paired(identity, name, "SupportedChunkSizeValues")});
    } else if (name == "MinTotalPoolSizeInSectors" || name == "MinRequiredSizeFromPoolInSectors") {
      const std::string title = name.substr(0, name.size() - std::string("InSectors").size());
      shown.properties.push_back({title, Value::string(text::formatSectors(numberOf(identity, name)))});
    } else if (name == "SupportedMaxVolumeSizeInSectors" && !property.value.isNull()) {
      Value::List sizes;
      for (const Value& size : property.value.asArray()) {
        sizes.push_back(Value::string(text::formatSectors(size.asUnsigned())));
      }
      shown.properties.push_back({"MaxVolumeSizes", Value::array(CMPI_string, std::move(sizes))});
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
