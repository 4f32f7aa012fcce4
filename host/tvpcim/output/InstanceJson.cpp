// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/InstanceJson.h"

#include "host/schema/ObjectPathText.h"
#include "host/tvpcim/output/Text.h"

#include <cmath>

namespace tvp::host::tvpcim {

using Json = nlohmann::ordered_json;

namespace {

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

Json valueToJson(const Value& value) {
  if (value.isNull()) {
    return nullptr;
  }
  if (!value.isArray()) {
    return scalarToJson(value);
  }
  Json array = Json::array();
  for (const Value& element : value.asArray()) {
    array.push_back(valueToJson(element));
  }
  return array;
}

}  // namespace

Json toJson(const Instance& instance) {
  Json object = Json::object();
  for (const NamedValue& property : instance.properties) {
    object[toUtf8(property.name)] = valueToJson(property.value);
  }
  return object;
}

Json toJson(const std::vector<Instance>& instances) {
  Json array = Json::array();
  for (const Instance& instance : instances) {
    array.push_back(toJson(instance));
  }
  return array;
}

}  // namespace tvp::host::tvpcim
