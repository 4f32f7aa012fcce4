// SPDX-License-Identifier: Apache-2.0
#include "host/schema/MofWriter.h"
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Formatter.h"
#include "host/tvpcim/output/Text.h"

namespace tvp::host::tvpcim {
namespace {

/** The node and what it contains, one after the other. */
std::string flattened(const Instance& node, std::uint32_t level) {
  Instance own = node;
  own.properties.clear();
  std::string below;
  for (const NamedValue& property : node.properties) {
    if (property.name != "Children") {
      own.properties.push_back(property);
      continue;
    }
    for (const Value& child : property.value.asArray()) {
      below += flattened(child.asInstance(), level + 1);
    }
  }
  setValue(own.properties, "Level", Value::uint32(level));
  return mofInstance(own) + below;
}

/**
 * MOF: instance declarations that a MOF compiler reads. Paths are comments, embedded instances are texts that
 * hold MOF, and the nodes of a tree follow each other with their "Level".
 */
class MofFormatter : public Formatter {
public:
  std::string listing(const Listing& listing) const override {
    std::string result;
    for (const Instance& instance : listing.instances) {
      result += mofInstance(instance);
    }
    return result;
  }

  std::string record(const Instance& instance) const override { return mofInstance(instance); }

  std::string nothing() const override { return ""; }

  std::string paths(const std::string& /*noun*/, const std::vector<ObjectPath>& paths) const override {
    std::string result;
    for (const ObjectPath& path : paths) {
      result += "// " + printable(toPathText(path)) + "\n";
    }
    return result;
  }

  std::string event(const Instance& instance) const override { return mofInstance(instance); }

  std::string tree(const std::vector<Instance>& roots) const override {
    std::string result;
    for (const Instance& root : roots) {
      result += flattened(root, 0);
    }
    return result;
  }
  std::string
  declarations(const std::vector<const SchemaClass*>& classes, const Listing& /*summaries*/) const override {
    std::string result;
    for (const SchemaClass* schemaClass : classes) {
      result += mofClass(*schemaClass) + "\n";
    }
    return result;
  }
};

}  // namespace

std::unique_ptr<const Formatter> makeMofFormatter(const Appearance& /*appearance*/) {
  return std::make_unique<MofFormatter>();
}

}  // namespace tvp::host::tvpcim
