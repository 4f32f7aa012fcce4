// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIHelperValues.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

#include <array>
#include <cstddef>
#include <utility>

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMInstance;
using fwf::CIMObjectPath;
using fwf::CIMProperty;
using fwf::Primitive_DataType;

/** An object of the broker; a missing one is a failure even if the status is success. */
template <typename Object>
Object* made(Object* object, const CMPIStatus& rc, const OutboundRules& rules) {
  if (rc.rc != CMPI_RC_OK || object == nullptr) {
    fail(rules.report, rc);
  }
  return object;
}

template <typename T>
std::size_t countElements(const CIMProperty& property) {
  return property.slot<T>().m_values.size();
}

template <typename T, auto Member>
CMPIValue makeNumber(const CIMProperty& property, std::size_t index, const OutboundRules&) {
  CMPIValue value{};
  value.*Member = property.slot<T>().m_values[index];
  return value;
}

CMPIValue makeString(const CIMProperty& property, std::size_t index, const OutboundRules& rules) {
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  CMPIValue value{};
  value.string = CMNewString(rules.broker, property.stringSlot().m_values[index].c_str(), &rc);
  made(value.string, rc, rules);
  return value;
}

CMPIValue makeDateTime(const CIMProperty& property, std::size_t index, const OutboundRules& rules) {
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  CMPIValue value{};
  value.dateTime = CMNewDateTimeFromChars(rules.broker, property.stringSlot().m_values[index].c_str(), &rc);
  made(value.dateTime, rc, rules);
  return value;
}

CMPIValue makeReference(const CIMProperty& property, std::size_t index, const OutboundRules& rules) {
  CMPIValue value{};
  value.ref = CMPIHelper::FrameworkObjectPathToCMPIObjectPath(
      property.objectPathSlot().m_values[index], rules.broker);
  made(value.ref, CMPIStatus{CMPI_RC_OK, nullptr}, rules);
  return value;
}

CMPIValue makeInstance(const CIMProperty& property, std::size_t index, const OutboundRules& rules) {
  CMPIValue value{};
  value.inst = CMPIHelper::FrameworkInstanceToCMPIInstance(
      property.instanceSlot().m_values[index], rules.broker, rules.properties);
  made(value.inst, CMPIStatus{CMPI_RC_OK, nullptr}, rules);
  return value;
}

constexpr Places IN_PATHS_AND_INSTANCES = IN_KEY | IN_PROPERTY;
constexpr Places NOWHERE = 0;

/**
 * One kind of value, under the type code of its scalar, with the places that accept its scalar and its array.
 */
struct OutboundKind {
  Primitive_DataType code;
  CMPIType type;
  Places scalar;
  Places array;
  std::size_t (*count)(const CIMProperty& property);
  CMPIValue (*make)(const CIMProperty& property, std::size_t index, const OutboundRules& rules);
};

template <typename T, auto Member>
constexpr OutboundKind number(Primitive_DataType code, CMPIType type) {
  return {
      code, type, IN_PATHS_AND_INSTANCES, IN_PATHS_AND_INSTANCES, countElements<T>, makeNumber<T, Member>};
}

// Arguments have a table of their own for what they accept, and under which types.
constexpr OutboundKind OUTBOUND_KINDS[] = {
    number<bool, &CMPIValue::boolean>(fwf::PDT_BOOLEAN, CMPI_boolean),
    {fwf::PDT_DATETIME, CMPI_dateTime, IN_PATHS_AND_INSTANCES, NOWHERE, countElements<std::string>,
     makeDateTime},
    number<short, &CMPIValue::sint16>(fwf::PDT_SINT16, CMPI_sint16),
    number<int, &CMPIValue::sint32>(fwf::PDT_SINT32, CMPI_sint32),
    number<long long, &CMPIValue::sint64>(fwf::PDT_SINT64, CMPI_sint64),
    number<signed char, &CMPIValue::sint8>(fwf::PDT_SINT8, CMPI_sint8),
    {fwf::PDT_STRING, CMPI_string, IN_PATHS_AND_INSTANCES, IN_PATHS_AND_INSTANCES, countElements<std::string>,
     makeString},
    number<unsigned short, &CMPIValue::uint16>(fwf::PDT_UINT16, CMPI_uint16),
    number<unsigned int, &CMPIValue::uint32>(fwf::PDT_UINT32, CMPI_uint32),
    number<unsigned long long, &CMPIValue::uint64>(fwf::PDT_UINT64, CMPI_uint64),
    number<unsigned char, &CMPIValue::uint8>(fwf::PDT_UINT8, CMPI_uint8),
    {fwf::PDT_REFERENCE, CMPI_ref, IN_PATHS_AND_INSTANCES, NOWHERE, countElements<CIMObjectPath>,
     makeReference},
    {fwf::PDT_INSTANCE, CMPI_instance, IN_PROPERTY, NOWHERE, countElements<CIMInstance>, makeInstance},
};

bool isArrayCode(Primitive_DataType code) {
  return (code & 1U) != 0;
}

/** The kinds indexed by half their code, so that each property finds its kind at once. */
constexpr auto KINDS_BY_CODE = [] {
  std::array<const OutboundKind*, fwf::PDT_INSTANCE_ARRAY / 2 + 1> table{};
  for (const OutboundKind& kind : OUTBOUND_KINDS) {
    table[kind.code / 2] = &kind;
  }
  return table;
}();

const OutboundKind* findKind(Primitive_DataType code) {
  return code / 2 < KINDS_BY_CODE.size() ? KINDS_BY_CODE[code / 2] : nullptr;
}

template <typename Object>
void releaseObject(Object* object) {
  CMPIObjectGuard<Object> guard(object);
}

void logText(const char* text) {
  if (text != nullptr) {
    KvsLogMsg(KVS_LOG_DEBUG, "%s", text);
  }
}

OutboundValue makeArray(
    const CIMProperty& property, const OutboundKind& kind, const OutboundShape& shape,
    const OutboundRules& rules, const OutboundTexts& texts) {
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const std::size_t count = kind.count(property);
  CMPIValue value{};
  value.array = CMNewArray(rules.broker, static_cast<CMPICount>(count), shape.arrayMadeOf, &rc);
  made(value.array, rc, rules);
  OutboundValue array(shape.type, value);
  logText(texts.arrayMade);
  for (std::size_t i = 0; i < count; ++i) {
    logText(texts.beforeConverting);
    OutboundValue element(shape.elementType, kind.make(property, i, rules));
    logText(texts.beforeSetting);
    requireOk(
        CMSetArrayElementAt(value.array, static_cast<CMPICount>(i), element.get(), element.type()),
        rules.report);
    array.keep(std::move(element));
  }
  return array;
}

}  // namespace

OutboundValue::~OutboundValue() {
  if (m_isNull) {
    return;
  }
  if ((m_type & CMPI_ARRAY) != 0) {
    releaseObject(m_value.array);
  } else if (m_type == CMPI_string) {
    releaseObject(m_value.string);
  } else if (m_type == CMPI_dateTime) {
    releaseObject(m_value.dateTime);
  } else if (m_type == CMPI_ref) {
    releaseObject(m_value.ref);
  } else if (m_type == CMPI_instance) {
    releaseObject(m_value.inst);
  }
}

OutboundValue::OutboundValue(OutboundValue&& other) noexcept
    : m_type(other.m_type), m_value(other.m_value), m_isNull(other.m_isNull),
      m_elements(std::move(other.m_elements)) {
  other.m_isNull = true;
}

std::optional<OutboundShape> naturalShape(Primitive_DataType code, Places place) {
  const OutboundKind* kind = findKind(code);
  const bool isArray = isArrayCode(code);
  if (kind == nullptr || ((isArray ? kind->array : kind->scalar) & place) == 0) {
    return std::nullopt;
  }
  const unsigned int flag = isArray ? static_cast<unsigned int>(CMPI_ARRAY) : 0U;
  return OutboundShape{static_cast<CMPIType>(kind->type | flag), kind->type, kind->type};
}

OutboundValue valueOfProperty(
    const CIMProperty& property, const OutboundShape& shape, const OutboundRules& rules,
    const OutboundTexts& texts) {
  const OutboundKind& kind = *findKind(property.getType());
  logText(texts.received);
  if (isArrayCode(property.getType())) {
    return makeArray(property, kind, shape, rules, texts);
  }
  if (kind.count(property) == 0) {
    return OutboundValue(shape.type);
  }
  return OutboundValue(shape.type, kind.make(property, 0, rules));
}

}  // namespace tvp::cim::adap::cmpi
