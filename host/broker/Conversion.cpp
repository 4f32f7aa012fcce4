// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

#include "host/broker/EntryPoint.h"

namespace tvp::host {
namespace {

constexpr const char* FUNCTION = "the taking over of a value";

/** Copies the content of an object that a value points to. */
template <class Face, class Copy>
CMPIrc copyObject(const Face* face, CMPIType type, Value& out, Copy copy) {
  if (face == nullptr) {
    out = Value::null(type);
    return CMPI_RC_OK;
  }
  Object<Face>* object = livingObject(face, FUNCTION);
  if (object == nullptr) {
    return CMPI_RC_ERR_INVALID_HANDLE;
  }
  out = copy(object->content());
  return CMPI_RC_OK;
}

CMPIrc arrayFromCmpi(const CMPIArray* array, CMPIType type, Value& out) {
  const CMPIType elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
  bool sameType = true;
  const CMPIrc code = copyObject(array, type, out, [&](const ArrayContent& content) {
    sameType = content.elementType == elementType ||
               (content.elementType == CMPI_string && elementType == CMPI_chars);
    return Value::array(content.elementType, content.elements);
  });
  return sameType ? code : CMPI_RC_ERR_TYPE_MISMATCH;
}

Value stringValue(const StringContent& content) {
  return content.text ? Value::string(*content.text) : Value::null(CMPI_string);
}

CMPIrc objectFromCmpi(const CMPIValue& value, CMPIType type, Value& out) {
  switch (type) {
  case CMPI_string:
    return copyObject(value.string, type, out, stringValue);
  case CMPI_dateTime:
    return copyObject(value.dateTime, type, out, Value::dateTime);
  case CMPI_ref:
    return copyObject(value.ref, type, out, Value::reference);
  case CMPI_instance:
    return copyObject(value.inst, type, out, [](const InstanceContent& content) {
      return Value::instance(content.snapshot());
    });
  default:
    return CMPI_RC_ERR_INVALID_DATA_TYPE;
  }
}

}  // namespace

CMPIrc fromCmpi(const CMPIValue* value, CMPIType type, Value& out) {
  if (type == CMPI_chars) {
    out = value == nullptr ? Value::null(CMPI_string) : Value::string(reinterpret_cast<const char*>(value));
    return CMPI_RC_OK;
  }
  if (value == nullptr || type == CMPI_null) {
    out = Value::null(type);
    return CMPI_RC_OK;
  }
  if ((type & CMPI_ARRAY) != 0) {
    return arrayFromCmpi(value->array, type, out);
  }
  switch (type) {
  case CMPI_boolean:
    out = Value::boolean(value->boolean != 0);
    return CMPI_RC_OK;
  case CMPI_char16:
    out = Value::unsignedInteger(type, value->char16);
    return CMPI_RC_OK;
  case CMPI_uint8:
    out = Value::unsignedInteger(type, value->uint8);
    return CMPI_RC_OK;
  case CMPI_uint16:
    out = Value::unsignedInteger(type, value->uint16);
    return CMPI_RC_OK;
  case CMPI_uint32:
    out = Value::unsignedInteger(type, value->uint32);
    return CMPI_RC_OK;
  case CMPI_uint64:
    out = Value::unsignedInteger(type, value->uint64);
    return CMPI_RC_OK;
  case CMPI_sint8:
    out = Value::signedInteger(type, value->sint8);
    return CMPI_RC_OK;
  case CMPI_sint16:
    out = Value::signedInteger(type, value->sint16);
    return CMPI_RC_OK;
  case CMPI_sint32:
    out = Value::signedInteger(type, value->sint32);
    return CMPI_RC_OK;
  case CMPI_sint64:
    out = Value::signedInteger(type, value->sint64);
    return CMPI_RC_OK;
  case CMPI_real32:
    out = Value::real(type, static_cast<double>(value->real32));
    return CMPI_RC_OK;
  case CMPI_real64:
    out = Value::real(type, value->real64);
    return CMPI_RC_OK;
  default:
    return objectFromCmpi(*value, type, out);
  }
}

CMPIData toCmpi(BrokerState& broker, const Value& value) {
  CMPIData data{};
  data.type = value.type();
  data.state = value.state();
  if (value.isNull()) {
    return data;
  }
  if (value.isArray()) {
    data.value.array = broker.make<CMPIArray>(
        ArrayContent{static_cast<CMPIType>(value.type() & ~CMPI_ARRAY), value.asArray()});
    return data;
  }
  switch (value.type()) {
  case CMPI_boolean:
    data.value.boolean = value.asBoolean() ? 1 : 0;
    break;
  case CMPI_real32:
    data.value.real32 = static_cast<CMPIReal32>(value.asReal());
    break;
  case CMPI_real64:
    data.value.real64 = value.asReal();
    break;
  case CMPI_sint8:
  case CMPI_sint16:
  case CMPI_sint32:
  case CMPI_sint64:
    data.value.sint64 = value.asSigned();  // on this byte order the low bytes are the shorter members
    break;
  case CMPI_string:
    data.value.string = makeString(broker, value.asString());
    break;
  case CMPI_dateTime:
    data.value.dateTime = broker.make<CMPIDateTime>(value.asDateTime());
    break;
  case CMPI_ref:
    data.value.ref = broker.make<CMPIObjectPath>(value.asReference());
    break;
  case CMPI_instance: {
    InstanceContent content;
    content.instance = value.asInstance();
    data.value.inst = broker.make<CMPIInstance>(std::move(content));
    break;
  }
  default:
    data.value.uint64 = value.asUnsigned();
  }
  return data;
}

CMPIData valueAt(
    BrokerState& broker, const std::vector<NamedValue>& values, CMPICount position, CMPIString** name,
    CMPIrc& code) {
  if (position >= values.size()) {
    code = CMPI_RC_ERR_NO_SUCH_PROPERTY;
    return noData(CMPI_notFound);
  }
  if (name != nullptr) {
    *name = makeString(broker, values[position].name);
  }
  return toCmpi(broker, values[position].value);
}

CMPIData
valueNamed(BrokerState& broker, const std::vector<NamedValue>& values, const char* name, CMPIrc& code) {
  const Value* value = name == nullptr ? nullptr : findValue(values, name);
  if (value == nullptr) {
    code = CMPI_RC_ERR_NO_SUCH_PROPERTY;
    return noData(CMPI_notFound);
  }
  return toCmpi(broker, *value);
}

Value textArray(const std::vector<std::string>& texts) {
  Value::List elements;
  for (const std::string& text : texts) {
    elements.push_back(Value::string(text));
  }
  return Value::array(CMPI_string, std::move(elements));
}

}  // namespace tvp::host
