// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_ABSTRACTASSOCIATIONPROVIDERPLUGIN_H
#define CIM_FRAMEWORK_ABSTRACTASSOCIATIONPROVIDERPLUGIN_H

#include "CIM/Framework/AbstractInstanceProviderPlugin.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * A plugin for an association class. It serves the association's instances as any instance plugin does, and
 * derives the association operations from them: a concrete class only has to enumerate instances that have a
 * reference property for each end.
 *
 * An instance takes part when one of its scalar reference properties equals the path of the request
 * (CIMObjectPath's equality); its other references are then the far ends. Role filters compare reference
 * names, class filters compare class names, both ignoring case; an empty filter accepts everything. No far
 * end is returned twice. A CIMException thrown by the enumeration is passed on.
 */
class AbstractAssociationProviderPlugin : public AbstractInstanceProviderPlugin {
public:
  /**
   * @param associationClass class whose instances this plugin serves
   * @param antecedent class at the antecedent end
   * @param dependent class at the dependent end
   */
  AbstractAssociationProviderPlugin(
      std::string associationClass, std::string antecedent, std::string dependent);

  const std::string& getAssociationClassName() const { return m_associationClass; }
  const std::string& getAntecedentName() const { return m_antecedent; }
  const std::string& getDependentName() const { return m_dependent; }

  /**
   * The instances at the far ends, as the plugin of the far end's class returns them; for a class without a
   * plugin, an instance that has the keys of the far end's path. Keys are returned even when the property
   * list does not name them, since they are part of the path. assocClass was used to choose this plugin and
   * is not checked again.
   */
  void associators(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMInstance>& instances,
      std::string& resultClass, std::string& role, std::string& resultRole,
      const char** propertyList) override;
  void associatorNames(
      CIMObjectPath& path, std::string& assocClass, std::vector<CIMObjectPath>& names,
      std::string& resultClass, std::string& role, std::string& resultRole) override;
  void references(
      CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
      const std::string& role) override;
  void referencesNames(
      CIMObjectPath& path, const std::string& resultClass, const std::string& role,
      std::vector<CIMObjectPath>& names) override;

private:
  std::vector<CIMInstance> associationInstances(const CIMObjectPath& path);
  std::vector<CIMInstance>
  referencing(const CIMObjectPath& path, const std::string& resultClass, const std::string& role);
  std::vector<CIMObjectPath> farEnds(
      const CIMObjectPath& path, const std::string& resultClass, const std::string& role,
      const std::string& resultRole);

  std::string m_associationClass;
  std::string m_antecedent;
  std::string m_dependent;
};

}  // namespace tvp::cim::fwf

#endif
