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

// Both assignments hold the source's parts in a copy first: the source may lie inside a path or an instance
// that is replaced here.
CIMProperty& CIMProperty::operator=(const CIMProperty& other) {
  if (this != &other) {
    assign(CIMProperty(other));
  }
  return *this;
}

CIMProperty& CIMProperty::operator=(CIMProperty&& other) noexcept {
  if (this != &other) {
    assign(CIMProperty(std::move(other)));
  }
  return *this;
}

void CIMProperty::assign(CIMProperty&& source) noexcept {
  m_name = std::move(source.m_name);
  m_type = source.m_type;
  m_isKey = source.m_isKey;
  m_extraFlag = source.m_extraFlag;
  m_string = std::move(source.m_string);
  m_uint8 = std::move(source.m_uint8);
  m_sint8 = std::move(source.m_sint8);
  m_uint16 = std::move(source.m_uint16);
  m_sint16 = std::move(source.m_sint16);
  m_uint32 = std::move(source.m_uint32);
  m_sint32 = std::move(source.m_sint32);
  m_float = std::move(source.m_float);
  m_double = std::move(source.m_double);
  m_uint64 = std::move(source.m_uint64);
  m_sint64 = std::move(source.m_sint64);
  m_boolean = std::move(source.m_boolean);
  m_objectPath = std::move(source.m_objectPath);
  m_instance = std::move(source.m_instance);
}

// The value is assigned, not constructed, into its slot: the array flag follows the slot's rule (intended).
template <typename T, std::enable_if_t<!std::is_same_v<T, long long>, int>>
CIMProperty::CIMProperty(
    std::string name, CIMValue<T> value, bool isKey, Primitive_DataType type, bool extraFlag)
    : m_name(std::move(name)), m_type(type), m_isKey(isKey), m_extraFlag(extraFlag) {
  this->*memberOf<T>() = std::move(value);
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
  return m_boolean;
}
CIMValue<signed char> CIMProperty::getSint8Value() const {
  return m_sint8;
}
CIMValue<unsigned char> CIMProperty::getUint8Value() const {
  return m_uint8;
}
CIMValue<short> CIMProperty::getSint16Value() const {
  return m_sint16;
}
CIMValue<unsigned short> CIMProperty::getUint16Value() const {
  return m_uint16;
}
CIMValue<int> CIMProperty::getSint32Value() const {
  return m_sint32;
}
CIMValue<unsigned int> CIMProperty::getUint32Value() const {
  return m_uint32;
}
CIMValue<long long> CIMProperty::getSint64Value() const {
  return m_sint64;
}
CIMValue<unsigned long long> CIMProperty::getUint64Value() const {
  return m_uint64;
}
CIMValue<std::string> CIMProperty::getStringValue() const {
  return m_string;
}
CIMValue<CIMObjectPath> CIMProperty::getObjectPathValue() const {
  return m_objectPath;
}
CIMValue<CIMInstance> CIMProperty::getInstanceValue() const {
  return m_instance;
}

/** Calls visit with the slot of a type as a member pointer. @return false when the type is not served. */
template <typename Visitor>
bool CIMProperty::withSlotOf(Primitive_DataType type, Visitor&& visit) {
  switch (type) {
  case PDT_BOOLEAN:
  case PDT_BOOLEAN_ARRAY:
    visit(&CIMProperty::m_boolean);
    return true;
  case PDT_SINT16:
  case PDT_SINT16_ARRAY:
    visit(&CIMProperty::m_sint16);
    return true;
  case PDT_SINT32:
  case PDT_SINT32_ARRAY:
    visit(&CIMProperty::m_sint32);
    return true;
  case PDT_SINT64:
  case PDT_SINT64_ARRAY:
    visit(&CIMProperty::m_sint64);
    return true;
  case PDT_SINT8:
  case PDT_SINT8_ARRAY:
    visit(&CIMProperty::m_sint8);
    return true;
  case PDT_DATETIME:
  case PDT_STRING:
  case PDT_STRING_ARRAY:
    visit(&CIMProperty::m_string);
    return true;
  case PDT_UINT16:
  case PDT_UINT16_ARRAY:
    visit(&CIMProperty::m_uint16);
    return true;
  case PDT_UINT32:
  case PDT_UINT32_ARRAY:
    visit(&CIMProperty::m_uint32);
    return true;
  case PDT_UINT64:
  case PDT_UINT64_ARRAY:
    visit(&CIMProperty::m_uint64);
    return true;
  case PDT_UINT8:
  case PDT_UINT8_ARRAY:
    visit(&CIMProperty::m_uint8);
    return true;
  case PDT_REFERENCE:
    visit(&CIMProperty::m_objectPath);
    return true;
  default:
    return false;
  }
}

int CIMProperty::setPropValue(Primitive_DataType type, const CIMProperty& source) {
  const bool copied = withSlotOf(type, [this, &source](auto member) { this->*member = source.*member; });
  if (!copied) {
    throw frameworkErrorWithStop(FW_RC_FAILED, "setPropValue", OPERATION_FAILED_SUFFIX);
  }
  return 1;
}

bool CIMProperty::equalValue(const CIMProperty& other) const {
  if (m_type != other.m_type || m_type == PDT_DATETIME) {
    return false;  // a datetime is unequal to itself, too (intended)
  }
  bool equal = false;
  withSlotOf(m_type, [this, &other, &equal](auto member) {
    equal = (this->*member).m_values == (other.*member).m_values;
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
