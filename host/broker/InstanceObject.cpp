// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

/** Whether an embedded instance, or each one of a list, is of the class that the property declares. */
bool isOfDeclaredClass(const Schema& schema, const SchemaProperty* property, const Value& value) {
  if (property == nullptr || property->className.empty()) {
    return true;
  }
  if (value.isArray()) {
    for (const Value& element : value.asArray()) {
      if (!isOfDeclaredClass(schema, property, element)) {
        return false;
      }
    }
    return true;
  }
  if (value.isNull()) {
    return true;
  }
  const std::string& given =
      value.type() == CMPI_ref ? value.asReference().className : value.asInstance().path.className;
  return schema.isA(given, property->className);
}

/** The strict assignment: the name and the type must be the declared ones. */
CMPIrc assign(
    InstanceContent& content, BrokerState& broker, const char* name, const CMPIValue* given, CMPIType type) {
  if (name == nullptr) {
    return CMPI_RC_ERR_INVALID_PARAMETER;
  }
  if (!content.passesFilter(name)) {
    return CMPI_RC_OK;
  }
  const bool lenient = broker.options().lenient;
  const std::size_t position = content.find(name);
  if (position == NameIndex::NONE) {
    return lenient ? CMPI_RC_OK : CMPI_RC_ERR_NO_SUCH_PROPERTY;
  }
  Value value;
  const CMPIrc code = fromCmpi(given, type, value);
  if (code != CMPI_RC_OK) {
    return code;
  }
  Value& property = content.instance.properties[position].value;
  if (value.isNull()) {
    property = Value::null(property.type());
    return CMPI_RC_OK;
  }
  const SchemaProperty* declared =
      content.schemaClass == nullptr ? nullptr : &content.schemaClass->properties[position];
  if (value.type() != property.type() || !isOfDeclaredClass(*broker.schema(), declared, value)) {
    return lenient ? CMPI_RC_OK : CMPI_RC_ERR_TYPE_MISMATCH;
  }
  property = std::move(value);
  return CMPI_RC_OK;
}

CMPIData getProperty(const CMPIInstance* instance, const char* name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      instance, "CMPIInstance.getProperty", status,
      [=](InstanceContent& content, BrokerState& broker, CMPIrc& code) -> CMPIData {
        const std::size_t position = name == nullptr ? NameIndex::NONE : content.find(name);
        const CMPICount place =
            position == NameIndex::NONE ? static_cast<CMPICount>(-1) : static_cast<CMPICount>(position);
        return valueAt(broker, content.instance.properties, place, nullptr, code);
      });
}

CMPIData
getPropertyAt(const CMPIInstance* instance, CMPICount position, CMPIString** name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      instance, "CMPIInstance.getPropertyAt", status,
      [=](InstanceContent& content, BrokerState& broker, CMPIrc& code) {
        return valueAt(broker, content.instance.properties, position, name, code);
      });
}

CMPICount getPropertyCount(const CMPIInstance* instance, CMPIStatus* status) {
  return valueCall<CMPICount>(
      instance, "CMPIInstance.getPropertyCount", status, [](InstanceContent& content, BrokerState&, CMPIrc&) {
        return static_cast<CMPICount>(content.instance.properties.size());
      });
}

CMPIStatus
setProperty(const CMPIInstance* instance, const char* name, const CMPIValue* value, CMPIType type) {
  return statusCall(instance, "CMPIInstance.setProperty", [=](InstanceContent& content, BrokerState& broker) {
    return assign(content, broker, name, value, type);
  });
}

/** The origin is not kept: the schema knows where a property was declared. */
CMPIStatus setPropertyWithOrigin(
    const CMPIInstance* instance, const char* name, const CMPIValue* value, const CMPIType type,
    const char*) {
  return statusCall(
      instance, "CMPIInstance.setPropertyWithOrigin", [=](InstanceContent& content, BrokerState& broker) {
        return assign(content, broker, name, value, type);
      });
}

CMPIObjectPath* getObjectPath(const CMPIInstance* instance, CMPIStatus* status) {
  return valueCall<CMPIObjectPath*>(
      instance, "CMPIInstance.getObjectPath", status,
      [](InstanceContent& content, BrokerState& broker, CMPIrc&) {
        return broker.make<CMPIObjectPath>(content.instance.path);
      });
}

CMPIStatus setPropertyFilter(CMPIInstance* instance, const char** properties, const char** keys) {
  return statusCall(instance, "CMPIInstance.setPropertyFilter", [=](InstanceContent& content, BrokerState&) {
    content.filtered = properties != nullptr;
    content.requested.clear();
    for (const char** list : {properties, keys}) {
      for (; list != nullptr && *list != nullptr; ++list) {
        content.requested.emplace_back(*list);
      }
    }
    return CMPI_RC_OK;
  });
}

CMPIStatus setObjectPath(CMPIInstance* instance, const CMPIObjectPath* path) {
  static constexpr const char* FUNCTION = "CMPIInstance.setObjectPath";
  return statusCall(instance, FUNCTION, [=](InstanceContent& content, BrokerState& broker) -> CMPIrc {
    Object<CMPIObjectPath>* given = livingObject(path, FUNCTION);
    if (given == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    // The properties are those of the class, which therefore stays.
    if (!broker.schema()->isA(content.instance.path.className, given->content().className)) {
      return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    content.instance.path = given->content();
    return CMPI_RC_OK;
  });
}

}  // namespace

template <>
CMPIInstanceFT* functionTable<CMPIInstance>() {
  static CMPIInstanceFT table = {
      CMPIVersion200,
      releaseObject<CMPIInstance>,
      cloneObject<CMPIInstance>,
      getProperty,
      getPropertyAt,
      getPropertyCount,
      setProperty,
      getObjectPath,
      setPropertyFilter,
      setObjectPath,
      setPropertyWithOrigin};
  return &table;
}

}  // namespace tvp::host
