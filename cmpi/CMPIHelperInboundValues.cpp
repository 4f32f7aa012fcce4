// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "cmpi/CMPIHelperValues.h"
#include "cmpimacs.h"

#include <utility>
#include <vector>

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMObjectPath;
using fwf::CIMProperty;
using fwf::CIMValue;
using fwf::Primitive_DataType;

template <typename T>
using ElementReader = T (*)(const CMPIData& data, const InboundRules& rules);

template <typename T, auto Member>
T readNumber(const CMPIData& data, const InboundRules&) {
  return static_cast<T>(data.value.*Member);
}

std::string readString(const CMPIData& data, const InboundRules& rules) {
  return textOf(data.value.string, rules.report);
}

std::string readDateTime(const CMPIData& data, const InboundRules& rules) {
  if (data.value.dateTime == nullptr) {
    fail(rules.report);
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPIString* text = CMGetStringFormat(data.value.dateTime, &rc);
  requireOk(rc, rules.report);
  return textOf(text, rules.report);
}

CIMObjectPath readReference(const CMPIData& data, const InboundRules& rules) {
  CIMObjectPath path;
  rules.readPath(data.value.ref, rules.place != IN_PROPERTY, path);
  return path;
}

template <typename T, ElementReader<T> Read>
T readElement(const CMPIData& data, const InboundRules& rules) {
  return CMIsNullValue(data) ? T() : Read(data, rules);
}

/** What a row of the table needs to make its property. */
struct Inbound {
  const std::string& name;
  const CMPIData& data;
  const InboundRules& rules;
  Primitive_DataType code;

  template <typename T>
  CIMProperty property(CIMValue<T> value) const {
    return CIMProperty(name, std::move(value), rules.place == IN_KEY, code, false);
  }
};

template <typename T, ElementReader<T> Read>
CIMProperty makeScalar(const Inbound& in) {
  return in.property(CIMValue<T>(readElement<T, Read>(in.data, in.rules), false, CMIsNullValue(in.data)));
}

template <typename T, ElementReader<T> Read>
CIMProperty makeArray(const Inbound& in) {
  if (CMIsNullValue(in.data)) {
    return in.property(CIMValue<T>(T(), true, true));
  }
  const CMPIArray* array = in.data.value.array;
  if (array == nullptr) {
    fail(in.rules.report);
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPICount count = CMGetArrayCount(array, &rc);
  requireOk(rc, in.rules.report);
  std::vector<T> values;
  values.reserve(count);
  for (CMPICount i = 0; i < count; ++i) {
    const CMPIData element = CMGetArrayElementAt(array, i, &rc);
    requireOk(rc, in.rules.report);
    values.push_back(readElement<T, Read>(element, in.rules));
  }
  return in.property(CIMValue<T>(std::move(values), true, false));
}

constexpr Places IN_VALUES = IN_PROPERTY | IN_ARGUMENT;
constexpr Places EVERYWHERE = IN_VALUES | IN_KEY;

}  // namespace

/** A type, the places that accept it, and what it is converted to. */
struct InboundKind {
  CMPIType type;
  Places places;
  Primitive_DataType code;
  CIMProperty (*make)(const Inbound& in);
};

namespace {

template <typename T, auto Member>
constexpr InboundKind number(CMPIType type, Places places, Primitive_DataType code) {
  return {type, places, code, makeScalar<T, readNumber<T, Member>>};
}

template <typename T, auto Member>
constexpr InboundKind numbers(CMPIType type, Places places, Primitive_DataType code) {
  return {type, places, code, makeArray<T, readNumber<T, Member>>};
}

constexpr InboundKind INBOUND_KINDS[] = {
    number<bool, &CMPIValue::boolean>(CMPI_boolean, EVERYWHERE, fwf::PDT_BOOLEAN),
    number<unsigned char, &CMPIValue::uint8>(CMPI_uint8, IN_VALUES, fwf::PDT_UINT8),
    number<unsigned short, &CMPIValue::uint16>(CMPI_uint16, IN_VALUES, fwf::PDT_UINT16),
    number<unsigned int, &CMPIValue::uint32>(CMPI_uint32, IN_VALUES, fwf::PDT_UINT32),
    number<unsigned long long, &CMPIValue::uint64>(CMPI_uint64, IN_VALUES, fwf::PDT_UINT64),
    // COMPAT: object managers pass every number in a path as sint64; the keys of this system are 32-bit
    // identifiers, for which clients use the low 32 bits.
    number<unsigned int, &CMPIValue::sint64>(CMPI_sint64, IN_KEY, fwf::PDT_UINT32),
    {CMPI_string, EVERYWHERE, fwf::PDT_STRING, makeScalar<std::string, readString>},
    {CMPI_dateTime, IN_VALUES, fwf::PDT_DATETIME, makeScalar<std::string, readDateTime>},
    {CMPI_ref, EVERYWHERE, fwf::PDT_REFERENCE, makeScalar<CIMObjectPath, readReference>},
    numbers<unsigned char, &CMPIValue::uint8>(CMPI_uint8A, IN_ARGUMENT, fwf::PDT_UINT8_ARRAY),
    numbers<signed char, &CMPIValue::sint8>(CMPI_sint8A, IN_ARGUMENT, fwf::PDT_SINT8_ARRAY),
    numbers<unsigned int, &CMPIValue::uint32>(CMPI_uint32A, IN_ARGUMENT, fwf::PDT_UINT32_ARRAY),
    numbers<unsigned long long, &CMPIValue::uint64>(CMPI_uint64A, IN_ARGUMENT, fwf::PDT_UINT64_ARRAY),
    {CMPI_stringA, IN_ARGUMENT, fwf::PDT_STRING_ARRAY, makeArray<std::string, readString>},
    {CMPI_refA, IN_ARGUMENT, fwf::PDT_REFERENCE_ARRAY, makeArray<CIMObjectPath, readReference>},
};

}  // namespace

const InboundKind* findInboundKind(CMPIType type, Places place) {
  for (const InboundKind& kind : INBOUND_KINDS) {
    if (kind.type == type && (kind.places & place) != 0) {
      return &kind;
    }
  }
  return nullptr;
}

CIMProperty makeProperty(
    const InboundKind& kind, const std::string& name, const CMPIData& data, const InboundRules& rules) {
  return kind.make(Inbound{name, data, rules, kind.code});
}

}  // namespace tvp::cim::adap::cmpi
