// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_MODELPLUGIN_H
#define PROVIDERS_MODELPLUGIN_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"
#include "backend/tvpCIMInstanceWrapper.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * What the classes of the model have in common. A class defines how it enumerates; unless it overrides more,
 * it returns no instance names, and getting an instance returns the path of the request without properties.
 */
class ModelPlugin : public AbstractInstanceProviderPlugin {
public:
  void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override = 0;
  void enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) override;
  void getKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& keys) override;
  void getNonKeyAttributes(const CIMInstance& object, std::vector<CIMProperty>& properties) override;
  /** Appends one empty instance, so that every path yields an instance. */
  void getRepositoryObjects(const CIMObjectPath& path, std::vector<CIMInstance>& objects) override;
};

/**
 * A key property of the CIM type that matches T: std::string, unsigned char, unsigned int, unsigned long
 * long, or a vector of these.
 */
template <typename T>
CIMProperty keyProperty(const char* name, const T& value) {
  return makeProperty(name, value, true);
}
inline CIMProperty keyProperty(const char* name, const char* text) {
  return keyProperty(name, std::string(text));
}

}  // namespace tvp::cim::fwf

#endif
