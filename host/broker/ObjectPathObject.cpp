// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/broker/EntryPoint.h"
#include "host/schema/ObjectPathText.h"

namespace tvp::host {
namespace {

/** The parts of a path that are plain texts differ only in their member. */
CMPIStatus
setText(CMPIObjectPath* path, const char* function, std::string ObjectPath::*member, const char* text) {
  return statusCall(path, function, [=](ObjectPath& content, BrokerState&) {
    content.*member = textOf(text);
    return CMPI_RC_OK;
  });
}

CMPIString* getText(
    const CMPIObjectPath* path, const char* function, std::string ObjectPath::*member, CMPIStatus* status) {
  return valueCall<CMPIString*>(
      path, function, status,
      [=](ObjectPath& content, BrokerState& broker, CMPIrc&) { return makeString(broker, content.*member); });
}

CMPIStatus setNameSpace(CMPIObjectPath* path, const char* text) {
  return setText(path, "CMPIObjectPath.setNameSpace", &ObjectPath::nameSpace, text);
}

CMPIString* getNameSpace(const CMPIObjectPath* path, CMPIStatus* status) {
  return getText(path, "CMPIObjectPath.getNameSpace", &ObjectPath::nameSpace, status);
}

CMPIStatus setHostname(CMPIObjectPath* path, const char* text) {
  return setText(path, "CMPIObjectPath.setHostname", &ObjectPath::host, text);
}

CMPIString* getHostname(const CMPIObjectPath* path, CMPIStatus* status) {
  return getText(path, "CMPIObjectPath.getHostname", &ObjectPath::host, status);
}

CMPIStatus setClassName(CMPIObjectPath* path, const char* text) {
  return setText(path, "CMPIObjectPath.setClassName", &ObjectPath::className, text);
}

CMPIString* getClassName(const CMPIObjectPath* path, CMPIStatus* status) {
  return getText(path, "CMPIObjectPath.getClassName", &ObjectPath::className, status);
}

CMPIStatus addKey(CMPIObjectPath* path, const char* name, const CMPIValue* value, const CMPIType type) {
  return statusCall(path, "CMPIObjectPath.addKey", [=](ObjectPath& content, BrokerState&) -> CMPIrc {
    if (name == nullptr || value == nullptr) {
      return CMPI_RC_ERR_INVALID_PARAMETER;
    }
    // Keys identify, so they are scalars that can be compared.
    if ((type & CMPI_ARRAY) != 0 || type == CMPI_instance || type == CMPI_null) {
      return CMPI_RC_ERR_INVALID_DATA_TYPE;
    }
    Value key;
    const CMPIrc code = fromCmpi(value, type, key);
    if (code == CMPI_RC_OK) {
      setValue(content.keys, name, std::move(key));
    }
    return code;
  });
}

/** Marks what a key getter answers. */
CMPIData asKey(CMPIData data, const BrokerState& broker, CMPIrc code) {
  if (code == CMPI_RC_OK && data.state == CMPI_goodValue) {
    data.state = broker.options().keyState;
  }
  return data;
}

CMPIData getKey(const CMPIObjectPath* path, const char* name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      path, "CMPIObjectPath.getKey", status, [=](ObjectPath& content, BrokerState& broker, CMPIrc& code) {
        const CMPIData data = valueNamed(broker, content.keys, name, code);
        return asKey(data, broker, code);
      });
}

CMPIData getKeyAt(const CMPIObjectPath* path, CMPICount position, CMPIString** name, CMPIStatus* status) {
  return valueCall<CMPIData>(
      path, "CMPIObjectPath.getKeyAt", status, [=](ObjectPath& content, BrokerState& broker, CMPIrc& code) {
        const CMPIData data = valueAt(broker, content.keys, position, name, code);
        return asKey(data, broker, code);
      });
}

CMPICount getKeyCount(const CMPIObjectPath* path, CMPIStatus* status) {
  return valueCall<CMPICount>(
      path, "CMPIObjectPath.getKeyCount", status,
      [](ObjectPath& content, BrokerState&, CMPIrc&) { return static_cast<CMPICount>(content.keys.size()); });
}

CMPIStatus
copyOrigin(CMPIObjectPath* path, const CMPIObjectPath* source, const char* function, bool withHost) {
  return statusCall(path, function, [=](ObjectPath& content, BrokerState&) -> CMPIrc {
    Object<CMPIObjectPath>* other = livingObject(source, function);
    if (other == nullptr) {
      return CMPI_RC_ERR_INVALID_HANDLE;
    }
    content.nameSpace = other->content().nameSpace;
    if (withHost) {
      content.host = other->content().host;
    }
    return CMPI_RC_OK;
  });
}

CMPIStatus setNameSpaceFromObjectPath(CMPIObjectPath* path, const CMPIObjectPath* source) {
  return copyOrigin(path, source, "CMPIObjectPath.setNameSpaceFromObjectPath", false);
}

CMPIStatus setHostAndNameSpaceFromObjectPath(CMPIObjectPath* path, const CMPIObjectPath* source) {
  return copyOrigin(path, source, "CMPIObjectPath.setHostAndNameSpaceFromObjectPath", true);
}

/** A qualifier, found by a function that goes from the class to the element that carries it. */
template <class FindQualifiers>
CMPIData getQualifier(
    const CMPIObjectPath* path, const char* function, const char* name, CMPIStatus* status,
    FindQualifiers findQualifiers) {
  return valueCall<CMPIData>(
      path, function, status, [&](ObjectPath& content, BrokerState& broker, CMPIrc& code) -> CMPIData {
        const SchemaClass* known = broker.schema()->find(content.className);
        if (known == nullptr) {
          code = CMPI_RC_ERR_INVALID_CLASS;
          return noData();
        }
        const Qualifiers* qualifiers = findQualifiers(*known);
        if (qualifiers == nullptr) {
          code = CMPI_RC_ERR_NO_SUCH_PROPERTY;
          return noData(CMPI_notFound);
        }
        return valueNamed(broker, *qualifiers, name, code);
      });
}

const Qualifiers* qualifiersOf(const TypedElement* element) {
  return element == nullptr ? nullptr : &element->qualifiers;
}

CMPIData getClassQualifier(const CMPIObjectPath* path, const char* name, CMPIStatus* status) {
  return getQualifier(path, "CMPIObjectPath.getClassQualifier", name, status, [](const SchemaClass& known) {
    return &known.qualifiers;
  });
}

CMPIData
getPropertyQualifier(const CMPIObjectPath* path, const char* property, const char* name, CMPIStatus* status) {
  return getQualifier(
      path, "CMPIObjectPath.getPropertyQualifier", name, status,
      [=](const SchemaClass& known) { return qualifiersOf(known.property(textOf(property))); });
}

CMPIData
getMethodQualifier(const CMPIObjectPath* path, const char* method, const char* name, CMPIStatus* status) {
  return getQualifier(path, "CMPIObjectPath.getMethodQualifier", name, status, [=](const SchemaClass& known) {
    return qualifiersOf(known.method(textOf(method)));
  });
}

CMPIData getParameterQualifier(
    const CMPIObjectPath* path, const char* method, const char* parameter, const char* name,
    CMPIStatus* status) {
  return getQualifier(
      path, "CMPIObjectPath.getParameterQualifier", name, status,
      [=](const SchemaClass& known) -> const Qualifiers* {
        const SchemaMethod* found = known.method(textOf(method));
        return found == nullptr ? nullptr : qualifiersOf(found->parameter(textOf(parameter)));
      });
}

CMPIString* toString(const CMPIObjectPath* path, CMPIStatus* status) {
  return valueCall<CMPIString*>(
      path, "CMPIObjectPath.toString", status, [](ObjectPath& content, BrokerState& broker, CMPIrc&) {
        return makeString(broker, toPathText(content));
      });
}

}  // namespace

template <>
CMPIObjectPathFT* functionTable<CMPIObjectPath>() {
  static CMPIObjectPathFT table = {
      CMPIVersion200,
      releaseObject<CMPIObjectPath>,
      cloneObject<CMPIObjectPath>,
      setNameSpace,
      getNameSpace,
      setHostname,
      getHostname,
      setClassName,
      getClassName,
      addKey,
      getKey,
      getKeyAt,
      getKeyCount,
      setNameSpaceFromObjectPath,
      setHostAndNameSpaceFromObjectPath,
      getClassQualifier,
      getPropertyQualifier,
      getMethodQualifier,
      getParameterQualifier,
      toString};
  return &table;
}

}  // namespace tvp::host
