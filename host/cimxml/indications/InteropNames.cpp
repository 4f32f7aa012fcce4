// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/InteropNames.h"

#include "host/schema/ObjectPathText.h"
#include "text/Trim.h"

#include <array>
#include <utility>

#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

/** A reference in a key. COMPAT: clients that write a key that is a reference as a text. */
Value interopReference(const Value& value) {
  if (value.type() == CMPI_ref && !value.isNull()) {
    return Value::reference(interopPath(value.asReference()));
  }
  if (value.type() == CMPI_string && !value.isNull()) {
    try {
      return Value::reference(interopPath(parsePathText(value.asString())));
    } catch (const PathSyntaxError&) {
      return value;
    }
  }
  return value;
}

}  // namespace

bool isInteropName(const std::string& nameSpace) {
  const std::string name(text::trimmed(nameSpace, "/"));
  // COMPAT: OpenPegasus calls it root/PG_InterOp.
  return equalNames(name, INTEROP_NAMESPACE) || equalNames(name, "interop") ||
         equalNames(name, "root/PG_InterOp");
}

std::string systemName() {
  std::array<char, 256> name{};
  return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "localhost";
}

Instance emptyInteropInstance(const Schema& schema, const std::string& className) {
  ObjectPath path;
  path.nameSpace = INTEROP_NAMESPACE;
  path.className = className;
  return schema.emptyInstance(path);
}

void takeKeys(Instance& instance, const SchemaClass& schemaClass) {
  instance.path.keys.clear();
  for (const SchemaProperty& property : schemaClass.properties) {
    if (property.key) {
      instance.path.keys.push_back({property.name, *instance.property(property.name)});
    }
  }
}

ObjectPath interopPath(ObjectPath path) {
  if (path.nameSpace.empty() || isInteropName(path.nameSpace)) {
    path.nameSpace = INTEROP_NAMESPACE;
  }
  path.host.clear();
  if (equalNames(path.className, SUBSCRIPTION_CLASS)) {
    for (NamedValue& key : path.keys) {
      key.value = interopReference(key.value);
    }
  }
  return path;
}

}  // namespace tvp::host::cimxml
