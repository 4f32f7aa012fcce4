// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Conversion.h"

namespace tvp::host {
namespace {

Value arrayFromCmpi(const Call& call, const CMPIArray* array, CMPIType type) {
  if (array == nullptr) {
    return Value::null(type);
  }
  const ArrayContent& content = call.contentOf(array);
  const auto elementType = static_cast<CMPIType>(type & ~CMPI_ARRAY);
  if (content.elementType != elementType &&
      !(content.elementType == CMPI_string && elementType == CMPI_chars)) {
    throw CallFailure{CMPI_RC_ERR_TYPE_MISMATCH};
  }
  return Value::array(content.elementType, content.elements);
}

/** The content of an object that a value points to; if there is no object, a null of the type. */
template <class Face, class Convert>
Value objectFromCmpi(const Call& call, const Face* face, CMPIType type, Convert convert) {
  return face == nullptr ? Value::null(type) : convert(call.contentOf(face));
}

}  // namespace

Value fromCmpi(const Call& call, const CMPIValue* value, CMPIType type) {
  if (type == CMPI_chars) {
    return value == nullptr ? Value::null(CMPI_string) : Value::string(reinterpret_cast<const char*>(value));
  }
  if (value == nullptr || type == CMPI_null) {
    return Value::null(type);
  }
  if ((type & CMPI_ARRAY) != 0) {
    return arrayFromCmpi(call, value->array, type);
  }
  switch (type) {
  case CMPI_boolean:
    return Value::boolean(value->boolean != 0);
  case CMPI_char16:
    return Value::unsignedInteger(type, value->char16);
  case CMPI_uint8:
    return Value::unsignedInteger(type, value->uint8);
  case CMPI_uint16:
    return Value::unsignedInteger(type, value->uint16);
  case CMPI_uint32:
    return Value::unsignedInteger(type, value->uint32);
  case CMPI_uint64:
    return Value::unsignedInteger(type, value->uint64);
  case CMPI_sint8:
    return Value::signedInteger(type, value->sint8);
  case CMPI_sint16:
    return Value::signedInteger(type, value->sint16);
  case CMPI_sint32:
    return Value::signedInteger(type, value->sint32);
  case CMPI_sint64:
    return Value::signedInteger(type, value->sint64);
  case CMPI_real32:
    return Value::real(type, static_cast<double>(value->real32));
  case CMPI_real64:
    return Value::real(type, value->real64);
  case CMPI_string:
    return objectFromCmpi(call, value->string, type, [type](const StringContent& content) {
      return content.text ? Value::string(*content.text) : Value::null(type);
    });
  case CMPI_dateTime:
    return objectFromCmpi(call, value->dateTime, type, Value::dateTime);
  case CMPI_ref:
    return objectFromCmpi(call, value->ref, type, Value::reference);
  case CMPI_instance:
    return objectFromCmpi(call, value->inst, type, [](const InstanceContent& content) {
      return Value::instance(content.snapshot());
    });
  default:
    throw CallFailure{CMPI_RC_ERR_INVALID_DATA_TYPE};
  }
}

CMPIData toCmpi(const Call& call, const Value& value) {
  CMPIData data{};
  data.type = value.type();
  data.state = value.state();
  if (call.broker().options().manager == ObjectManager::Sfcb && value.isArray() && !value.isNull() &&
      value.asArray().empty()) {
    data.type = CMPI_ARRAY;  // nothing in the request says of what
    data.state = CMPI_nullValue;
    return data;
  }
  if (value.isNull()) {
    return data;
  }
  if (value.isArray()) {
    data.value.array = call.make<CMPIArray>(
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
    data.value.sint64 = value.asSigned();  // in this byte order the shorter members are the low bytes
    break;
  case CMPI_string:
    data.value.string = call.makeString(value.asString());
    break;
  case CMPI_dateTime:
    data.value.dateTime = call.make<CMPIDateTime>(value.asDateTime());
    break;
  case CMPI_ref:
    data.value.ref = call.make<CMPIObjectPath>(value.asReference());
    break;
  case CMPI_instance: {
    InstanceContent content;
    content.instance = value.asInstance();
    data.value.inst = call.make<CMPIInstance>(std::move(content));
    break;
  }
  default:
    data.value.uint64 = value.asUnsigned();
  }
  return data;
}

CMPIData
valueAt(const Call& call, const std::vector<NamedValue>& values, std::size_t position, CMPIString** name) {
  if (position >= values.size()) {
    throw CallFailure{CMPI_RC_ERR_NO_SUCH_PROPERTY};
  }
  if (name != nullptr) {
    *name = call.makeString(values[position].name);
  }
  return toCmpi(call, values[position].value);
}

CMPIData valueNamed(const Call& call, const std::vector<NamedValue>& values, const char* name) {
  const Value* value = name == nullptr ? nullptr : findValue(values, name);
  if (value == nullptr) {
    throw CallFailure{CMPI_RC_ERR_NO_SUCH_PROPERTY};
  }
  return toCmpi(call, *value);
}

}  // namespace tvp::host
