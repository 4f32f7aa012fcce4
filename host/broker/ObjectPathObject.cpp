// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"
#include "host/schema/ObjectPathText.h"

#include <algorithm>

namespace tvp::host {
namespace {

/* The parts of a path that are plain texts differ only in their member. */

template <std::string ObjectPath::*member>
CMPIString* text(ObjectPath& content, Call& call) {
  return call.makeString(content.*member);
}

template <std::string ObjectPath::*member>
void setText(ObjectPath& content, Call&, const char* given) {
  content.*member = textOf(given);
}

void addKey(ObjectPath& content, Call& call, const char* name, const CMPIValue* given, CMPIType type) {
  required(name);
  required(given);
  // Keys are identifiers, so they must be scalars that can be compared.
  if ((type & CMPI_ARRAY) != 0 || type == CMPI_instance || type == CMPI_null) {
    throw CallFailure{CMPI_RC_ERR_INVALID_DATA_TYPE};
  }
  setValue(content.keys, name, fromCmpi(call, given, type));
}

/** Marks what a key getter returns. */
CMPIData asKey(CMPIData data, const Call& call) {
  if (data.state == CMPI_goodValue) {
    data.state = call.broker().options().keyState;
  }
  return data;
}

/** The number of keys that an object manager counts although the path may lack them. */
std::size_t countedKeys(const ObjectPath& path, const Call& call) {
  const SchemaClass* known = call.broker().schema().find(path.className);
  if (known == nullptr || call.broker().options().manager != ObjectManager::OpenPegasus) {
    return 0;
  }
  return static_cast<std::size_t>(
      std::count_if(known->properties.begin(), known->properties.end(), [](const SchemaProperty& property) {
        return property.key;
      }));
}

/** @throws CallFailure CMPI_RC_ERR_INVALID_CLASS for a class that the schema does not have */
const SchemaClass& classOf(const ObjectPath& path, const Call& call) {
  const SchemaClass* known = call.broker().schema().find(path.className);
  return known != nullptr ? *known : throw CallFailure{CMPI_RC_ERR_INVALID_CLASS};
}

/** A qualifier of a property, method or parameter; if the element does not exist, there is none. */
CMPIData qualifierOf(const TypedElement* element, const Call& call, const char* name) {
  return valueNamed(call, element == nullptr ? Qualifiers() : element->qualifiers, name);
}

}  // namespace

CMPIObjectPathFT* ObjectTraits<CMPIObjectPath>::table() {
  using FT = CMPIObjectPathFT;
  static FT functions = objectTable<CMPIObjectPath>([](FT& table) {
    bind<&FT::setNameSpace>(table, "setNameSpace", setText<&ObjectPath::nameSpace>);
    bind<&FT::getNameSpace>(table, "getNameSpace", text<&ObjectPath::nameSpace>);
    bind<&FT::setHostname>(table, "setHostname", setText<&ObjectPath::host>);
    bind<&FT::getHostname>(table, "getHostname", text<&ObjectPath::host>);
    bind<&FT::setClassName>(table, "setClassName", setText<&ObjectPath::className>);
    bind<&FT::getClassName>(table, "getClassName", text<&ObjectPath::className>);
    bind<&FT::addKey>(table, "addKey", addKey);
    bind<&FT::getKey>(table, "getKey", [](ObjectPath& content, Call& call, const char* name) {
      return asKey(valueNamed(call, content.keys, name), call);
    });
    bind<&FT::getKeyAt>(
        table, "getKeyAt", [](ObjectPath& content, Call& call, CMPICount position, CMPIString** name) {
          return asKey(valueAt(call, content.keys, position, name), call);
        });
    bind<&FT::getKeyCount>(table, "getKeyCount", [](ObjectPath& content, Call& call) {
      return static_cast<CMPICount>(std::max(content.keys.size(), countedKeys(content, call)));
    });
    bind<&FT::setNameSpaceFromObjectPath>(
        table, "setNameSpaceFromObjectPath",
        [](ObjectPath& content, Call& call, const CMPIObjectPath* source) {
          content.nameSpace = call.contentOf(source).nameSpace;
        });
    bind<&FT::setHostAndNameSpaceFromObjectPath>(
        table, "setHostAndNameSpaceFromObjectPath",
        [](ObjectPath& content, Call& call, const CMPIObjectPath* source) {
          content.nameSpace = call.contentOf(source).nameSpace;
          content.host = call.contentOf(source).host;
        });
    bind<&FT::getClassQualifier>(
        table, "getClassQualifier", [](ObjectPath& content, Call& call, const char* name) {
          return valueNamed(call, classOf(content, call).qualifiers, name);
        });
    bind<&FT::getPropertyQualifier>(
        table, "getPropertyQualifier",
        [](ObjectPath& content, Call& call, const char* property, const char* name) {
          return qualifierOf(classOf(content, call).property(textOf(property)), call, name);
        });
    bind<&FT::getMethodQualifier>(
        table, "getMethodQualifier",
        [](ObjectPath& content, Call& call, const char* method, const char* name) {
          return qualifierOf(classOf(content, call).method(textOf(method)), call, name);
        });
    bind<&FT::getParameterQualifier>(
        table, "getParameterQualifier",
        [](ObjectPath& content, Call& call, const char* method, const char* parameter, const char* name) {
          const SchemaMethod* found = classOf(content, call).method(textOf(method));
          return qualifierOf(found == nullptr ? nullptr : found->parameter(textOf(parameter)), call, name);
        });
    bind<&FT::toString>(table, "toString", [](ObjectPath& content, Call& call) {
      return call.makeString(toPathText(content));
    });
  });
  return &functions;
}

}  // namespace tvp::host
