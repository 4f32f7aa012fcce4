// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/message/KeyTypes.h"

#include "host/cimxml/message/ScalarText.h"

namespace tvp::host::cimxml {
namespace {

/** Whether a key that a message calls a text, a number or a boolean may be of a type. */
bool mayBe(CMPIType inMessage, CMPIType declared) {
  constexpr auto isText = [](CMPIType type) {
    return type == CMPI_string || type == CMPI_dateTime || type == CMPI_char16;
  };
  return inMessage == CMPI_boolean ? declared == CMPI_boolean
                                   : declared != CMPI_boolean && isText(inMessage) == isText(declared);
}

/** The same number or text as a value of another type; unchanged when it cannot be one. */
Value retyped(const Value& key, CMPIType type) {
  std::string text;
  if (key.type() == CMPI_string) {
    text = key.asString();
  } else {
    appendScalar(text, key);
  }
  return parseScalar(text, type).value_or(key);
}

}  // namespace

void applyKeyTypes(ObjectPath& path, const Schema& schema) {
  const SchemaClass* schemaClass = schema.find(path.className);
  if (schemaClass == nullptr) {
    return;
  }
  for (const SchemaProperty& property : schemaClass->properties) {
    Value* key = property.key ? findValue(path.keys, property.name) : nullptr;
    if (property.key && key == nullptr && path.keys.size() == 1 && path.keys.front().name.empty()) {
      path.keys.front().name = property.name;
      key = &path.keys.front().value;
    }
    if (key == nullptr || key->isNull() || key->isArray()) {
      continue;
    }
    if (key->type() == CMPI_ref) {
      ObjectPath referenced = key->asReference();
      applyKeyTypes(referenced, schema);
      *key = Value::reference(std::move(referenced));
    } else if (key->type() != property.type && mayBe(key->type(), property.type)) {
      *key = retyped(*key, property.type);
    }
  }
}

}  // namespace tvp::host::cimxml
