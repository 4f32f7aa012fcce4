// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_FIXEDPLUGIN_H
#define PROVIDERS_FIXEDPLUGIN_H

#include "providers/ModelPlugin.h"

#include <vector>

namespace tvp::cim::fwf {

/** A class with one instance of fixed content, with or without a driver. The content never changes. */
class FixedPlugin : public ModelPlugin {
public:
  /**
   * @param enumerated the key properties of the instance in an enumeration
   * @param got the key bindings of the instance returned when it is got
   */
  FixedPlugin(std::vector<CIMProperty> enumerated, std::vector<CIMProperty> got);

  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override;
  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;

private:
  const std::vector<CIMProperty> m_enumerated;
  const std::vector<CIMProperty> m_got;
};

}  // namespace tvp::cim::fwf

#endif
