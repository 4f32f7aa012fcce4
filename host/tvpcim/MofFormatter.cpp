#include "host/tvpcim/MofFormatter.h"

#include "host/ObjectPathText.h"
#include "host/tvpcim/MofText.h"
#include "host/tvpcim/Text.h"

namespace tvp::host::tvpcim {
namespace {

/** The node and what stands under it, one after the other. */
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

}  // namespace

std::string MofFormatter::listing(const Listing& listing) const {
  std::string result;
  for (const Instance& instance : listing.instances) {
    result += mofInstance(instance);
  }
  return result;
}

std::string MofFormatter::record(const Instance& instance) const {
  return mofInstance(instance);
}

std::string MofFormatter::nothing() const {
  return "";
}

std::string MofFormatter::paths(const std::string& /*noun*/, const std::vector<ObjectPath>& paths) const {
  std::string result;
  for (const ObjectPath& path : paths) {
    result += "// " + printable(toPathText(path)) + "\n";
  }
  return result;
}

std::string MofFormatter::event(const Instance& instance) const {
  return mofInstance(instance);
}

std::string MofFormatter::tree(const std::vector<Instance>& roots) const {
  std::string result;
  for (const Instance& root : roots) {
    result += flattened(root, 0);
  }
  return result;
}

}  // namespace tvp::host::tvpcim
