// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_CIMINSTANCE_H
#define CIM_FRAMEWORK_CIMINSTANCE_H

#include "CIM/Framework/CIMObjectPath.h"
#include "CIM/Framework/CIMProperty.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * One instance: host, namespace, class, all properties, and the keys among them a second time. Every key is
 * in both lists, as separate copies, in the order added. A value.
 */
class CIMInstance {
public:
  CIMInstance();
  explicit CIMInstance(std::string className);
  CIMInstance(const CIMInstance& other);
  CIMInstance(CIMInstance&& other) noexcept;
  /** Makes this equal to the source in every part. */
  CIMInstance& operator=(const CIMInstance& other);
  CIMInstance& operator=(CIMInstance&& other) noexcept;
  ~CIMInstance();

  /** Copies host, namespace and class. COMPAT: plugins rely on the path's keys not being copied. */
  void setPath(const CIMObjectPath& path);
  /** @return the path of this instance, with a copy of its keys. */
  CIMObjectPath getPath() const;

  std::string getClassName() const { return m_className; }
  const std::string& host() const noexcept { return m_host; }
  const std::string& nameSpace() const noexcept { return m_nameSpace; }
  const std::string& className() const noexcept { return m_className; }

  /** Appends a property, and a second copy to the keys when its key flag is set. */
  void addProperty(const CIMProperty& property);
  void addProperty(CIMProperty&& property);
  /** Appends a property and a key, with the key flag set. */
  void addCimKeyBinding(const CIMProperty& property);
  void addCimKeyBinding(CIMProperty&& property);

  std::size_t getPropertyCount() const noexcept { return m_properties.size(); }
  /** @return a copy of one property. @throws std::out_of_range for an index past the last. */
  CIMProperty getProperty(unsigned int index) const;
  std::vector<CIMProperty> getPropertyList() const { return m_properties; }
  std::vector<CIMProperty> getKeyPropertyList() const { return m_keyProperties; }
  const std::vector<CIMProperty>& properties() const noexcept { return m_properties; }
  const std::vector<CIMProperty>& keyProperties() const noexcept { return m_keyProperties; }

  /**
   * @return the first property (key) of exactly this name, owned by the instance; null if there is no such
   *   one.
   */
  CIMProperty* getPropertyByName(const std::string& name);
  const CIMProperty* getPropertyByName(const std::string& name) const;
  CIMProperty* getKeyPropertyByName(const std::string& name);
  const CIMProperty* getKeyPropertyByName(const std::string& name) const;

  /** Empties both lists. */
  void removeAllProperties();

private:
  void swap(CIMInstance& other) noexcept;

  std::string m_host;
  std::string m_nameSpace;
  std::string m_className;
  std::vector<CIMProperty> m_keyProperties;
  std::vector<CIMProperty> m_properties;
};

}  // namespace tvp::cim::fwf

#endif
