// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIHELPERVALUES_H
#define CMPI_CMPIHELPERVALUES_H

#include "CIM/Framework/CIMProperty.h"
#include "cmpidt.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

// What keys, properties and method arguments share when their values are converted. Each defines for itself
// which types it accepts, what it logs and how it sets a value.
namespace tvp::cim::adap::cmpi {

/** Logs a conversion's message about a failed CMPI call; null if it has none. */
using FailureReport = void (*)(const CMPIStatus& status);

/** Reports a failure and releases the status's message. @throws CIMException FW_RC_FAILED with " :: Operation
 * Failed", always */
[[noreturn]] void
fail(FailureReport report = nullptr, const CMPIStatus& status = CMPIStatus{CMPI_RC_OK, nullptr});

/** Fails, as fail does, unless the status is CMPI_RC_OK. */
void requireOk(const CMPIStatus& status, FailureReport report = nullptr);

/**
 * The characters of a CMPI string; a null text reads as empty. Fails if there is no string or its text cannot
 * be read.
 */
std::string textOf(const CMPIString* text, FailureReport report = nullptr);

/**
 * Places where a value can occur, as bits. Each deliberately accepts different types, in either direction.
 */
using Places = unsigned int;
inline constexpr Places IN_KEY = 1;
inline constexpr Places IN_PROPERTY = 2;
inline constexpr Places IN_ARGUMENT = 4;

/** Fills a path from a CMPI path, as CMPIHelper::CMPIObjectPathToFrameworkObjectPath does. */
using PathReader = void (*)(const CMPIObjectPath* op, bool withKeys, fwf::CIMObjectPath& out);

/** How inbound values are converted. */
struct InboundRules {
  Places place;  ///< a single place: keys make key properties; references in properties are read without
                 ///< their keys
  PathReader readPath;   ///< for references
  FailureReport report;  ///< of a failed CMPI call
};

/** How inbound values of one type are converted. */
struct InboundKind;

/** @return null for a type that the place does not accept */
const InboundKind* findInboundKind(CMPIType type, Places place);

/** The property of a value of this kind. A null value makes a default element with the null flag. */
fwf::CIMProperty makeProperty(
    const InboundKind& kind, const std::string& name, const CMPIData& data, const InboundRules& rules);

/** How outbound values are converted. */
struct OutboundRules {
  const CMPIBroker* broker;
  const char** properties;  ///< filter of embedded instances; null means all
  FailureReport report;     ///< of a failed CMPI call
};

/** The types under which a property is sent. */
struct OutboundShape {
  CMPIType type;         ///< passed with the value
  CMPIType arrayMadeOf;  ///< element type with which an array is made
  CMPIType elementType;  ///< element type with which its elements are set
};

/** Log lines that accompany a conversion, at level 4; null for none. */
struct OutboundTexts {
  const char* received;
  const char* arrayMade;
  const char* beforeConverting;  ///< each element of an array
  const char* beforeSetting;     ///< each element of an array
};

/**
 * The CMPI types of the same kind as a type code. @return nothing for codes that the place does not accept
 */
std::optional<OutboundShape> naturalShape(fwf::Primitive_DataType code, Places place);

/**
 * A CMPI value with the objects made for it, which are released on destruction. The receivers of values copy
 * them.
 */
class OutboundValue {
public:
  /** The null value of a type. */
  explicit OutboundValue(CMPIType type) : m_type(type) {}
  OutboundValue(CMPIType type, const CMPIValue& value) : m_type(type), m_value(value), m_isNull(false) {}
  ~OutboundValue();
  OutboundValue(OutboundValue&& other) noexcept;
  OutboundValue& operator=(OutboundValue&&) = delete;
  OutboundValue(const OutboundValue&) = delete;
  OutboundValue& operator=(const OutboundValue&) = delete;

  CMPIType type() const { return m_type; }
  bool isNull() const { return m_isNull; }
  /** Keeps an element of this array until the array is released: a receiver may not have copied it. */
  void keep(OutboundValue&& element) { m_elements.push_back(std::move(element)); }
  /** The pointer to pass to setters; null for the null value. */
  const CMPIValue* get() const { return m_isNull ? nullptr : &m_value; }

private:
  CMPIType m_type;
  CMPIValue m_value{};
  bool m_isNull = true;
  std::vector<OutboundValue> m_elements;
};

/**
 * The CMPI value of a property whose type code some place accepts: its first element, or an array of all. A
 * scalar without an element is null. Fails if the broker does not make an object.
 * @throws CIMException also whatever converting references and instances throws
 */
OutboundValue valueOfProperty(
    const fwf::CIMProperty& property, const OutboundShape& shape, const OutboundRules& rules,
    const OutboundTexts& texts = OutboundTexts{});

}  // namespace tvp::cim::adap::cmpi

#endif
