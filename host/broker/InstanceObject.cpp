// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

#include <algorithm>

namespace tvp::host {
namespace {

/** Whether an embedded instance, or each one of a list, is of the class that the property declares. */
bool isOfDeclaredClass(const Schema& schema, const SchemaProperty* property, const Value& value) {
  if (property == nullptr || property->className.empty()) {
    return true;
  }
  if (value.isArray()) {
    return std::all_of(value.asArray().begin(), value.asArray().end(), [&](const Value& element) {
      return isOfDeclaredClass(schema, property, element);
    });
  }
  if (value.isNull()) {
    return true;
  }
  const std::string& given =
      value.type() == CMPI_ref ? value.asReference().className : value.asInstance().path.className;
  return schema.isA(given, property->className);
}

/** The strict assignment: the name and the type must be the declared ones. */
void assign(InstanceContent& content, Call& call, const char* name, const CMPIValue* given, CMPIType type) {
  if (!content.passesFilter(required(name))) {
    return;
  }
  const auto refuse = [lenient = call.broker().options().lenient](CMPIrc code) {
    if (!lenient) {
      throw CallFailure{code};
    }
  };
  const std::optional<std::size_t> position = content.find(name);
  if (!position) {
    return refuse(CMPI_RC_ERR_NO_SUCH_PROPERTY);
  }
  Value value = fromCmpi(call, given, type);
  Value& property = content.instance.properties[*position].value;
  const SchemaProperty* declared =
      content.schemaClass == nullptr ? nullptr : &content.schemaClass->properties[*position];
  if (value.isNull()) {
    property = Value::null(property.type());
  } else if (value.type() == property.type() && isOfDeclaredClass(call.broker().schema(), declared, value)) {
    property = std::move(value);
  } else {
    refuse(CMPI_RC_ERR_TYPE_MISMATCH);
  }
}

void setPropertyFilter(InstanceContent& content, Call&, const char** properties, const char** keys) {
  content.filtered = properties != nullptr;
  content.requested.clear();
  for (const char** list : {properties, keys}) {
    for (; list != nullptr && *list != nullptr; ++list) {
      content.requested.emplace_back(*list);
    }
  }
}

void setObjectPath(InstanceContent& content, Call& call, const CMPIObjectPath* path) {
  const ObjectPath& given = call.contentOf(path);
  // The properties are those of the class, so the class cannot change.
  if (!call.broker().schema().isA(content.instance.path.className, given.className)) {
    throw CallFailure{CMPI_RC_ERR_INVALID_PARAMETER};
  }
  content.instance.path = given;
}

}  // namespace

CMPIInstanceFT* ObjectTraits<CMPIInstance>::table() {
  static CMPIInstanceFT functions = objectTable<CMPIInstance>([](CMPIInstanceFT& table) {
    bind<&CMPIInstanceFT::getProperty>(
        table, "getProperty", [](InstanceContent& content, Call& call, const char* name) {
          const std::optional<std::size_t> position = name == nullptr ? std::nullopt : content.find(name);
          const std::vector<NamedValue>& properties = content.instance.properties;
          return valueAt(call, properties, position.value_or(properties.size()), nullptr);
        });
    bind<&CMPIInstanceFT::getPropertyAt>(
        table, "getPropertyAt",
        [](InstanceContent& content, Call& call, CMPICount position, CMPIString** name) {
          return valueAt(call, content.instance.properties, position, name);
        });
    bind<&CMPIInstanceFT::getPropertyCount>(table, "getPropertyCount", [](InstanceContent& content, Call&) {
      return static_cast<CMPICount>(content.instance.properties.size());
    });
    bind<&CMPIInstanceFT::setProperty>(table, "setProperty", assign);
    // The origin is not kept: the schema knows where a property was declared.
    bind<&CMPIInstanceFT::setPropertyWithOrigin>(
        table, "setPropertyWithOrigin",
        [](InstanceContent& content, Call& call, const char* name, const CMPIValue* given, CMPIType type,
           const char*) { assign(content, call, name, given, type); });
    bind<&CMPIInstanceFT::getObjectPath>(table, "getObjectPath", [](InstanceContent& content, Call& call) {
      return call.make<CMPIObjectPath>(content.instance.path);
    });
    bind<&CMPIInstanceFT::setPropertyFilter>(table, "setPropertyFilter", setPropertyFilter);
    bind<&CMPIInstanceFT::setObjectPath>(table, "setObjectPath", setObjectPath);
  });
  return &functions;
}

}  // namespace tvp::host
