// SPDX-License-Identifier: Apache-2.0
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Formatter.h"
#include "host/tvpcim/output/InstanceJson.h"
#include "host/tvpcim/output/Text.h"

namespace tvp::host::tvpcim {
namespace {

using Json = nlohmann::ordered_json;

/** @param indent as that of Json::dump: a negative number keeps everything on one line */
std::string written(const Json& json, int indent = 2) {
  return text::printableJson(json.dump(indent)) + "\n";
}

/** JSON: arrays of objects, and objects; see InstanceJson.h. */
class JsonFormatter : public Formatter {
public:
  std::string listing(const Listing& listing) const override { return written(toJson(listing.instances)); }

  std::string record(const Instance& instance) const override { return written(toJson(instance)); }

  std::string nothing() const override { return "null\n"; }

  std::string paths(const std::string& /*noun*/, const std::vector<ObjectPath>& paths) const override {
    Json array = Json::array();
    for (const ObjectPath& path : paths) {
      array.push_back(toUtf8(toPathText(path)));
    }
    return written(array);
  }

  std::string event(const Instance& instance) const override { return written(toJson(instance), -1); }

  std::string tree(const std::vector<Instance>& roots) const override { return written(toJson(roots)); }
  std::string declaration(const SchemaClass& /*schemaClass*/, const Instance& details) const override {
    return record(details);
  }
};

}  // namespace

std::unique_ptr<const Formatter> makeJsonFormatter(const Appearance& /*appearance*/) {
  return std::make_unique<JsonFormatter>();
}

}  // namespace tvp::host::tvpcim
