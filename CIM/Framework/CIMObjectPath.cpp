// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMObjectPath.h"

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/PropertyLookup.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace tvp::cim::fwf {

namespace {

std::string valueText(const CIMProperty& key) {
  if (key.getType() == PDT_STRING) {
    const auto texts = key.stringSlot().m_values;
    return '"' + (texts.empty() ? std::string() : texts.front()) + '"';
  }
  if (key.getType() == PDT_REFERENCE) {
    const auto paths = key.objectPathSlot().m_values;
    return paths.empty() ? std::string() : paths.front().toString();
  }
  return {};
}

}  // namespace

CIMObjectPath::CIMObjectPath() = default;
CIMObjectPath::CIMObjectPath(
    std::string host, std::string nameSpace, std::string className, std::vector<CIMProperty> keyBindings)
    : m_host(std::move(host)), m_nameSpace(std::move(nameSpace)), m_className(std::move(className)),
      m_keyBindings(std::move(keyBindings)) {}
CIMObjectPath::CIMObjectPath(const CIMObjectPath& other) = default;
CIMObjectPath::CIMObjectPath(CIMObjectPath&& other) noexcept = default;
CIMObjectPath::~CIMObjectPath() = default;

// By copy and swap: assigning the key lists would assign property to property, and assigning a property can
// keep old elements.
CIMObjectPath& CIMObjectPath::operator=(const CIMObjectPath& other) {
  CIMObjectPath copy(other);
  swap(copy);
  return *this;
}

CIMObjectPath& CIMObjectPath::operator=(CIMObjectPath&& other) noexcept {
  CIMObjectPath taken(std::move(other));
  swap(taken);
  return *this;
}

void CIMObjectPath::swap(CIMObjectPath& other) noexcept {
  m_host.swap(other.m_host);
  m_nameSpace.swap(other.m_nameSpace);
  m_className.swap(other.m_className);
  m_keyBindings.swap(other.m_keyBindings);
}

void CIMObjectPath::clearObjectPath() {
  m_host.clear();
  m_nameSpace.clear();
  m_className.clear();
  m_keyBindings.clear();
}

CIMProperty CIMObjectPath::getKey(const std::string& name) const {
  const CIMProperty* key = findProperty(m_keyBindings, name);
  return key == nullptr ? CIMProperty() : *key;
}

bool CIMObjectPath::operator==(const CIMObjectPath& other) const {
  if (!CommonFunctions::equalsIgnoringCase(m_nameSpace, other.m_nameSpace) ||
      !CommonFunctions::equalsIgnoringCase(m_className, other.m_className) ||
      m_keyBindings.size() != other.m_keyBindings.size()) {
    return false;
  }
  // On the other side, only the first key with a given name counts.
  return std::all_of(m_keyBindings.begin(), m_keyBindings.end(), [&other](const CIMProperty& key) {
    const CIMProperty* match = findProperty(other.m_keyBindings, key.name());
    return match != nullptr && key.equals(*match);
  });
}

std::string CIMObjectPath::toString() const {
  std::string text = "//" + m_host + "/" + m_nameSpace + ":" + m_className + ".";
  for (std::size_t position = 0; position < m_keyBindings.size(); ++position) {
    const CIMProperty& key = m_keyBindings[position];
    text += (position == 0 ? "" : ",") + key.name() + "=" + valueText(key);
  }
  return text;
}

}  // namespace tvp::cim::fwf
