// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_CIMOBJECTPATH_H
#define CIM_FRAMEWORK_CIMOBJECTPATH_H

#include "CIM/Framework/CIMProperty.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/** The name of one instance: host, namespace, class and key bindings in the order added. A value. */
class CIMObjectPath {
public:
  CIMObjectPath();
  CIMObjectPath(
      std::string host, std::string nameSpace, std::string className, std::vector<CIMProperty> keyBindings);
  CIMObjectPath(const CIMObjectPath& other);
  CIMObjectPath(CIMObjectPath&& other) noexcept;
  /** Makes this equal to the source in every part. */
  CIMObjectPath& operator=(const CIMObjectPath& other);
  CIMObjectPath& operator=(CIMObjectPath&& other) noexcept;
  ~CIMObjectPath();

  /** Clears all parts. */
  void clearObjectPath();

  std::string getHostName() const { return m_host; }
  std::string getNameSpace() const { return m_nameSpace; }
  std::string getClassName() const { return m_className; }
  const std::string& host() const noexcept { return m_host; }
  const std::string& nameSpace() const noexcept { return m_nameSpace; }
  const std::string& className() const noexcept { return m_className; }
  void setHost(const std::string& host) { m_host = host; }
  void setNameSpace(std::string nameSpace) { m_nameSpace = std::move(nameSpace); }
  void setClassName(std::string className) { m_className = std::move(className); }

  std::vector<CIMProperty> getKeyBindings() const { return m_keyBindings; }
  const std::vector<CIMProperty>& keyBindings() const noexcept { return m_keyBindings; }
  /** Replaces all key bindings. */
  void setKeyBindings(std::vector<CIMProperty> keyBindings) { m_keyBindings = std::move(keyBindings); }

  /** @return a copy of the first key of exactly this name; an empty property if there is no such key. */
  CIMProperty getKey(const std::string& name) const;

  /**
   * Whether both name the same instance: namespace and class are compared ignoring case, keys by their exact
   * names and CIMProperty::equals in any order. Hosts are ignored.
   */
  bool operator==(const CIMObjectPath& other) const;
  bool operator!=(const CIMObjectPath& other) const { return !(*this == other); }

  /**
   * @return //HOST/NAMESPACE:CLASS.KEY="text",KEY=//path... COMPAT: keys that are neither strings nor
   *         references show no value; logs are searched for the text.
   */
  std::string toString() const;

private:
  void swap(CIMObjectPath& other) noexcept;

  std::string m_host;
  std::string m_nameSpace;
  std::string m_className;
  std::vector<CIMProperty> m_keyBindings;
};

}  // namespace tvp::cim::fwf

#endif
