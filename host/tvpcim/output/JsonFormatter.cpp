// SPDX-License-Identifier: Apache-2.0
#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Formatter.h"
#include "host/tvpcim/output/Text.h"

#include <nlohmann/json.hpp>

#include <cmath>

namespace tvp::host::tvpcim {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const Instance& instance);

Json scalarToJson(const Value& value) {
  switch (value.type()) {
  case CMPI_boolean:
    return value.asBoolean();
  case CMPI_string:
    return toUtf8(value.asString());
  case CMPI_dateTime:
    return value.asDateTime().iso8601();
  case CMPI_ref:
    return toUtf8(toPathText(value.asReference()));
  case CMPI_instance:
    return toJson(value.asInstance());
  case CMPI_real32:
  case CMPI_real64:
    return std::isfinite(value.asReal()) ? Json(value.asReal()) : Json(nullptr);
  case CMPI_sint8:
  case CMPI_sint16:
  case CMPI_sint32:
  case CMPI_sint64:
    return value.asSigned();
  default:
    return value.asUnsigned();
  }
}

Json toJson(const Value& value) {
  if (value.isNull()) {
    return nullptr;
  }
  if (!value.isArray()) {
    return scalarToJson(value);
  }
  Json array = Json::array();
  for (const Value& element : value.asArray()) {
    array.push_back(toJson(element));
  }
  return array;
}

Json toJson(const Instance& instance) {
  Json object = Json::object();
  for (const NamedValue& property : instance.properties) {
    object[toUtf8(property.name)] = toJson(property.value);
  }
  return object;
}

/** @param indent as that of Json::dump: a negative number keeps everything on one line */
std::string written(const Json& json, int indent = 2) {
  return text::printableJson(json.dump(indent)) + "\n";
}

std::string listOf(const std::vector<Instance>& instances) {
  Json array = Json::array();
  for (const Instance& instance : instances) {
    array.push_back(toJson(instance));
  }
  return written(array);
}

/**
 * JSON: arrays of objects, and objects. Numbers keep every digit, what is unset is null, date-times are
 * ISO 8601, references are the text of their path. Bytes that are not UTF-8 become \xHH in the text.
 */
class JsonFormatter : public Formatter {
public:
  std::string listing(const Listing& listing) const override { return listOf(listing.instances); }

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

  std::string tree(const std::vector<Instance>& roots) const override { return listOf(roots); }
  std::string declaration(const SchemaClass& /*schemaClass*/, const Instance& details) const override {
    return record(details);
  }
};

}  // namespace

std::unique_ptr<const Formatter> makeJsonFormatter(const Appearance& /*appearance*/) {
  return std::make_unique<JsonFormatter>();
}

}  // namespace tvp::host::tvpcim
