// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PROVIDERS_SHOWN_H
#define TESTS_PROVIDERS_SHOWN_H

#include "CIM/Framework/CIMInstance.h"

#include <sstream>
#include <string>
#include <vector>

namespace tvp::test {

/** Names, types and values of properties as texts that are easy to compare: "*Name string VP1" for a key. */
inline std::string shown(const cim::fwf::CIMProperty& property) {
  std::ostringstream text;
  const auto write = [&](const char* type, const auto& values) {
    text << (property.isKey() ? "*" : "") << property.name() << ' ' << type;
    for (const auto& value : values) {
      text << ' ' << +value;
    }
  };
  switch (property.getType()) {
  case cim::fwf::PDT_STRING:
    text << (property.isKey() ? "*" : "") << property.name() << " string";
    for (const std::string& value : property.slot<std::string>().m_values) {
      text << ' ' << value;
    }
    break;
  case cim::fwf::PDT_UINT8:
    write("uint8", property.uint8Slot().m_values);
    break;
  case cim::fwf::PDT_UINT32:
    write("uint32", property.uint32Slot().m_values);
    break;
  case cim::fwf::PDT_UINT64:
    write("uint64", property.uint64Slot().m_values);
    break;
  case cim::fwf::PDT_UINT64_ARRAY:
    write("uint64[]", property.uint64Slot().m_values);
    break;
  default:
    text << property.name() << " of type " << static_cast<unsigned int>(property.getType());
    break;
  }
  return text.str();
}

inline std::vector<std::string> shown(const std::vector<cim::fwf::CIMProperty>& properties) {
  std::vector<std::string> result;
  result.reserve(properties.size());
  for (const cim::fwf::CIMProperty& property : properties) {
    result.push_back(shown(property));
  }
  return result;
}

}  // namespace tvp::test

#endif
