// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_MODEL_DESCRIBE_H
#define TESTS_MODEL_DESCRIBE_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMMethodParam.h"

#include <sstream>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/** Fills any slot of a property. */
struct SlotFiller {
  template <typename T>
  static void assign(CIMProperty& property, const CIMValue<T>& value) {
    property.m_slots.assign(value);
  }
};

}  // namespace tvp::cim::fwf

namespace tvp::test {

using cim::fwf::CIMInstance;
using cim::fwf::CIMMethodParam;
using cim::fwf::CIMObjectPath;
using cim::fwf::CIMProperty;
using cim::fwf::CIMValue;

// Everything that a value of the model holds, as text: two values are the same when their texts are.
std::string describe(const CIMProperty& property);

inline std::string describe(const std::vector<CIMProperty>& properties) {
  std::string text = "{";
  for (const CIMProperty& property : properties) {
    text += describe(property) + " ";
  }
  return text + "}";
}

inline std::string describe(const CIMObjectPath& path) {
  return path.host() + "|" + path.nameSpace() + "|" + path.className() + describe(path.keyBindings());
}

inline std::string describe(const CIMInstance& instance) {
  return instance.host() + "|" + instance.nameSpace() + "|" + instance.className() +
         describe(instance.keyProperties()) + describe(instance.properties());
}

inline std::string describe(const CIMMethodParam& arguments) {
  return describe(arguments.arguments());
}

inline std::string describe(const std::string& text) {
  return '"' + text + '"';
}

/** Of a CIMValue<T> or the view of one. */
template <template <typename> class Value, typename T>
std::string describe(const Value<T>& value) {
  std::ostringstream text;
  text << value.m_isArray << value.m_isNull << "[";
  for (const auto& element : value.m_values) {
    if constexpr (std::is_arithmetic_v<T>) {
      text << +element << " ";
    } else {
      text << describe(element) << " ";
    }
  }
  text << "]";
  return text.str();
}

template <typename... T>
std::string describeEach(const CIMProperty& property) {
  return (describe(property.slot<T>()) + ...);
}

/** The values of a property, that is all but its name, type and flags. */
inline std::string describeSlots(const CIMProperty& property) {
  return describeEach<
      std::string, unsigned char, signed char, unsigned short, short, unsigned int, int, float, double,
      unsigned long long, long long, bool, CIMObjectPath, CIMInstance>(property);
}

inline std::string describe(const CIMProperty& property) {
  std::ostringstream text;
  text << property.name() << "/" << property.getType() << property.isKey() << property.extraFlag()
       << describeSlots(property);
  return text.str();
}

/** A property of one of the two commonest kinds. */
inline CIMProperty text(const std::string& name, const std::string& value, bool isKey = false) {
  return {name, CIMValue<std::string>(value, false, false), isKey, cim::fwf::PDT_STRING, false};
}
inline CIMProperty number(const std::string& name, unsigned int value, bool isKey = false) {
  return {name, CIMValue<unsigned int>(value, false, false), isKey, cim::fwf::PDT_UINT32, false};
}

}  // namespace tvp::test

#endif
