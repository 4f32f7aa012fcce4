// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMInstance.h"

#include "CIM/Framework/PropertyLookup.h"

#include <utility>

namespace tvp::cim::fwf {

CIMInstance::CIMInstance() = default;
CIMInstance::CIMInstance(std::string className) : m_className(std::move(className)) {}
CIMInstance::CIMInstance(const CIMInstance& other) = default;
CIMInstance::CIMInstance(CIMInstance&& other) noexcept = default;
CIMInstance::~CIMInstance() = default;

// By copy and swap, like the object path.
CIMInstance& CIMInstance::operator=(const CIMInstance& other) {
  CIMInstance copy(other);
  swap(copy);
  return *this;
}

CIMInstance& CIMInstance::operator=(CIMInstance&& other) noexcept {
  CIMInstance taken(std::move(other));
  swap(taken);
  return *this;
}

void CIMInstance::swap(CIMInstance& other) noexcept {
  m_host.swap(other.m_host);
  m_nameSpace.swap(other.m_nameSpace);
  m_className.swap(other.m_className);
  m_keyProperties.swap(other.m_keyProperties);
  m_properties.swap(other.m_properties);
}

void CIMInstance::setPath(const CIMObjectPath& path) {
  m_host = path.host();
  m_nameSpace = path.nameSpace();
  m_className = path.className();
}

CIMObjectPath CIMInstance::getPath() const {
  return {m_host, m_nameSpace, m_className, m_keyProperties};
}

void CIMInstance::addProperty(const CIMProperty& property) {
  addProperty(CIMProperty(property));
}

void CIMInstance::addProperty(CIMProperty&& property) {
  m_properties.push_back(std::move(property));
  if (m_properties.back().isKey()) {
    m_keyProperties.push_back(m_properties.back());
  }
}

void CIMInstance::addCimKeyBinding(const CIMProperty& property) {
  addCimKeyBinding(CIMProperty(property));
}

void CIMInstance::addCimKeyBinding(CIMProperty&& property) {
  property.setKey(true);
  addProperty(std::move(property));
}

CIMProperty CIMInstance::getProperty(unsigned int index) const {
  return m_properties.at(index);
}

CIMProperty* CIMInstance::getPropertyByName(const std::string& name) {
  return findProperty(m_properties, name);
}

const CIMProperty* CIMInstance::getPropertyByName(const std::string& name) const {
  return findProperty(m_properties, name);
}

CIMProperty* CIMInstance::getKeyPropertyByName(const std::string& name) {
  return findProperty(m_keyProperties, name);
}

const CIMProperty* CIMInstance::getKeyPropertyByName(const std::string& name) const {
  return findProperty(m_keyProperties, name);
}

void CIMInstance::removeAllProperties() {
  m_properties.clear();
  m_keyProperties.clear();
}

}  // namespace tvp::cim::fwf
