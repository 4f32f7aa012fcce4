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
  rules.readPath(data.value.ref, rules.referenceKeys, path);
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
    return CIMProperty(name, std::move(value), rules.isKey, code, false);
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

struct InboundKind {
  CMPIType type;
  Primitive_DataType code;
  CIMProperty (*make)(const Inbound& in);
};

constexpr InboundKind INBOUND_KINDS[] = {
    {CMPI_boolean, fwf::PDT_BOOLEAN, makeScalar<bool, readNumber<bool, &CMPIValue::boolean>>},
    {CMPI_uint8, fwf::PDT_UINT8, makeScalar<unsigned char, readNumber<unsigned char, &CMPIValue::uint8>>},
    {CMPI_uint16, fwf::PDT_UINT16,
     makeScalar<unsigned short, readNumber<unsigned short, &CMPIValue::uint16>>},
    {CMPI_uint32, fwf::PDT_UINT32, makeScalar<unsigned int, readNumber<unsigned int, &CMPIValue::uint32>>},
    {CMPI_uint64, fwf::PDT_UINT64,
     makeScalar<unsigned long long, readNumber<unsigned long long, &CMPIValue::uint64>>},
    {CMPI_string, fwf::PDT_STRING, makeScalar<std::string, readString>},
    {CMPI_dateTime, fwf::PDT_DATETIME, makeScalar<std::string, readDateTime>},
    {CMPI_ref, fwf::PDT_REFERENCE, makeScalar<CIMObjectPath, readReference>},
    {CMPI_uint8A, fwf::PDT_UINT8_ARRAY,
     makeArray<unsigned char, readNumber<unsigned char, &CMPIValue::uint8>>},
    {CMPI_sint8A, fwf::PDT_SINT8_ARRAY, makeArray<signed char, readNumber<signed char, &CMPIValue::sint8>>},
    {CMPI_uint32A, fwf::PDT_UINT32_ARRAY,
     makeArray<unsigned int, readNumber<unsigned int, &CMPIValue::uint32>>},
    {CMPI_uint64A, fwf::PDT_UINT64_ARRAY,
     makeArray<unsigned long long, readNumber<unsigned long long, &CMPIValue::uint64>>},
    {CMPI_stringA, fwf::PDT_STRING_ARRAY, makeArray<std::string, readString>},
    {CMPI_refA, fwf::PDT_REFERENCE_ARRAY, makeArray<CIMObjectPath, readReference>},
};

}  // namespace

std::optional<CIMProperty>
propertyOfValue(const std::string& name, const CMPIData& data, const InboundRules& rules) {
  for (const InboundKind& kind : INBOUND_KINDS) {
    if (kind.type == data.type) {
      return kind.make(Inbound{name, data, rules, kind.code});
    }
  }
  return std::nullopt;
}

}  // namespace tvp::cim::adap::cmpi
