// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMProperty.h"

#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"

#include <utility>

namespace tvp::cim::fwf {

CIMProperty::CIMProperty() = default;
CIMProperty::CIMProperty(const CIMProperty& other) = default;
CIMProperty::CIMProperty(CIMProperty&& other) noexcept = default;
CIMProperty::~CIMProperty() = default;

// The source's parts are copied first: it may be inside a path or an instance that is replaced here, and if
// memory runs out this property stays as it was. There is no move assignment: which elements stay is decided
// slot by slot, and that can allocate.
CIMProperty& CIMProperty::operator=(const CIMProperty& other) {
  if (this != &other) {
    std::string name(other.m_name);
    PropertySlots slots(m_slots);
    slots.assignAll(other.m_slots);
    m_type = other.m_type;
    m_isKey = other.m_isKey;
    m_extraFlag = other.m_extraFlag;
    m_name = std::move(name);
    m_slots = std::move(slots);
  }
  return *this;
}

// COMPAT: the value is assigned to its slot, not constructed in it: callers expect the flag that the slot's
// rule gives.
template <typename T, std::enable_if_t<!std::is_same_v<T, long long>, int>>
CIMProperty::CIMProperty(
    std::string name, CIMValue<T> value, bool isKey, Primitive_DataType type, bool extraFlag)
    : m_name(std::move(name)), m_type(type), m_isKey(isKey), m_extraFlag(extraFlag) {
  m_slots.assign(std::move(value));
}

template CIMProperty::CIMProperty(std::string, CIMValue<CIMObjectPath>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<double>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<float>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<unsigned long long>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<int>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<unsigned int>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<unsigned short>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<short>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<signed char>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<unsigned char>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<std::string>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<bool>, bool, Primitive_DataType, bool);
template CIMProperty::CIMProperty(std::string, CIMValue<CIMInstance>, bool, Primitive_DataType, bool);

CIMValue<bool> CIMProperty::getBoolValue() const {
  return m_slots.get<bool>();
}
CIMValue<signed char> CIMProperty::getSint8Value() const {
  return m_slots.get<signed char>();
}
CIMValue<unsigned char> CIMProperty::getUint8Value() const {
  return m_slots.get<unsigned char>();
}
CIMValue<short> CIMProperty::getSint16Value() const {
  return m_slots.get<short>();
}
CIMValue<unsigned short> CIMProperty::getUint16Value() const {
  return m_slots.get<unsigned short>();
}
CIMValue<int> CIMProperty::getSint32Value() const {
  return m_slots.get<int>();
}
CIMValue<unsigned int> CIMProperty::getUint32Value() const {
  return m_slots.get<unsigned int>();
}
CIMValue<long long> CIMProperty::getSint64Value() const {
  return m_slots.get<long long>();
}
CIMValue<unsigned long long> CIMProperty::getUint64Value() const {
  return m_slots.get<unsigned long long>();
}
CIMValue<std::string> CIMProperty::getStringValue() const {
  return m_slots.get<std::string>();
}
CIMValue<CIMObjectPath> CIMProperty::getObjectPathValue() const {
  return m_slots.get<CIMObjectPath>();
}
CIMValue<CIMInstance> CIMProperty::getInstanceValue() const {
  return m_slots.get<CIMInstance>();
}

namespace {

template <typename T>
struct ElementType {
  using Type = T;
};

/** Calls visit with the ElementType of a type code's slot. @return false if the type is not supported. */
template <typename Visitor>
bool withElementTypeOf(Primitive_DataType type, Visitor&& visit) {
  switch (type) {
  case PDT_BOOLEAN:
  case PDT_BOOLEAN_ARRAY:
    visit(ElementType<bool>());
    return true;
  case PDT_SINT16:
  case PDT_SINT16_ARRAY:
    visit(ElementType<short>());
    return true;
  case PDT_SINT32:
  case PDT_SINT32_ARRAY:
    visit(ElementType<int>());
    return true;
  case PDT_SINT64:
  case PDT_SINT64_ARRAY:
    visit(ElementType<long long>());
    return true;
  case PDT_SINT8:
  case PDT_SINT8_ARRAY:
    visit(ElementType<signed char>());
    return true;
  case PDT_DATETIME:
  case PDT_STRING:
  case PDT_STRING_ARRAY:
    visit(ElementType<std::string>());
    return true;
  case PDT_UINT16:
  case PDT_UINT16_ARRAY:
    visit(ElementType<unsigned short>());
    return true;
  case PDT_UINT32:
  case PDT_UINT32_ARRAY:
    visit(ElementType<unsigned int>());
    return true;
  case PDT_UINT64:
  case PDT_UINT64_ARRAY:
    visit(ElementType<unsigned long long>());
    return true;
  case PDT_UINT8:
  case PDT_UINT8_ARRAY:
    visit(ElementType<unsigned char>());
    return true;
  case PDT_REFERENCE:
    visit(ElementType<CIMObjectPath>());
    return true;
  default:
    return false;
  }
}

}  // namespace

int CIMProperty::setPropValue(Primitive_DataType type, const CIMProperty& source) {
  const bool copied = withElementTypeOf(type, [this, &source](auto element) {
    m_slots.assign(source.m_slots.get<typename decltype(element)::Type>());
  });
  if (!copied) {
    throw frameworkErrorWithStop(FW_RC_FAILED, "setPropValue", OPERATION_FAILED_SUFFIX);
  }
  return 1;
}

bool CIMProperty::equalValue(const CIMProperty& other) const {
  if (m_type != other.m_type || m_type == PDT_DATETIME) {
    return false;  // COMPAT: a datetime is unequal even to itself, and callers rely on it
  }
  bool equal = false;
  withElementTypeOf(m_type, [this, &other, &equal](auto element) {
    using Type = typename decltype(element)::Type;
    equal = slot<Type>().m_values == other.slot<Type>().m_values;
  });
  return equal;
}

bool CIMProperty::equals(const CIMProperty& other) const {
  return m_name == other.m_name && m_isKey == other.m_isKey && equalValue(other);
}

bool CIMProperty::subclassEqualsViewclass(const CIMProperty& other) const {
  return equalValue(other);
}

}  // namespace tvp::cim::fwf
