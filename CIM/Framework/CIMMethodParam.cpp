// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMMethodParam.h"

#include "CIM/Framework/PropertyLookup.h"

#include <utility>

namespace tvp::cim::fwf {

CIMMethodParam::CIMMethodParam() = default;
CIMMethodParam::CIMMethodParam(const CIMMethodParam& other) = default;
CIMMethodParam::CIMMethodParam(CIMMethodParam&& other) noexcept = default;
CIMMethodParam::~CIMMethodParam() = default;

// The whole list is replaced, since assigning a property can keep old elements.
CIMMethodParam& CIMMethodParam::operator=(const CIMMethodParam& other) {
  std::vector<CIMProperty> copy(other.m_arguments);
  m_arguments.swap(copy);
  return *this;
}

CIMMethodParam& CIMMethodParam::operator=(CIMMethodParam&& other) noexcept {
  std::vector<CIMProperty> taken(std::move(other.m_arguments));
  m_arguments.swap(taken);
  return *this;
}

CIMProperty* CIMMethodParam::getArgumentByName(const std::string& name) {
  return findProperty(m_arguments, name);
}

const CIMProperty* CIMMethodParam::getArgumentByName(const std::string& name) const {
  return findProperty(m_arguments, name);
}

std::string CIMMethodParam::toString() const {
  std::string names;
  for (const CIMProperty& argument : m_arguments) {
    names += argument.name();
  }
  return names;
}

}  // namespace tvp::cim::fwf
