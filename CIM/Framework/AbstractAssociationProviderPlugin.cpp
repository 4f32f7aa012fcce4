// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractAssociationProviderPlugin.h"

#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/FrameworkFacade.h"
#include "CIM/Framework/PropertyLookup.h"

#include <algorithm>
#include <utility>

namespace tvp::cim::fwf {

namespace {

/** Whether a filter accepts a name; CIM names are case-insensitive. */
bool passes(const std::string& filter, const std::string& name) {
  return filter.empty() || CommonFunctions::equalsIgnoringCase(filter, name);
}

/** One reference of an association instance. */
struct Reference {
  std::string name;
  CIMObjectPath target;
};

std::vector<Reference> referencesOf(const CIMInstance& association) {
  std::vector<Reference> references;
  for (const CIMProperty& property : association.properties()) {
    if (property.getType() != PDT_REFERENCE) {
      continue;
    }
    const std::vector<CIMObjectPath> targets = elementsOf<CIMObjectPath>(&property);
    if (!targets.empty()) {
      references.push_back({property.name(), targets.front()});
    }
  }
  return references;
}

bool pointsAt(const Reference& reference, const CIMObjectPath& path, const std::string& role) {
  return reference.target == path && passes(role, reference.name);
}

void appendOnce(std::vector<CIMObjectPath>& paths, const CIMObjectPath& path) {
  if (std::find(paths.begin(), paths.end(), path) == paths.end()) {
    paths.push_back(path);
  }
}

bool isListed(const char** propertyList, const std::string& name) {
  for (const char** listed = propertyList; *listed != nullptr; ++listed) {
    if (CommonFunctions::equalsIgnoringCase(name, *listed)) {
      return true;
    }
  }
  return false;
}

/** The instance with only its keys and the listed properties. */
CIMInstance narrowed(const CIMInstance& instance, const char** propertyList) {
  CIMInstance result;
  result.setPath(instance.getPath());
  for (const CIMProperty& property : instance.properties()) {
    if (property.isKey() || isListed(propertyList, property.name())) {
      result.addProperty(property);
    }
  }
  return result;
}

/**
 * The instance that the plugin of the path's class returns; for a class without a plugin, the keys of the
 * path.
 */
std::vector<CIMInstance> instancesAt(CIMObjectPath& path) {
  std::vector<CIMInstance> found;
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  if (facade != nullptr && facade->getPlugIn(path.className()) != nullptr) {
    facade->getCIMInstance(path, found);
    return found;
  }
  CIMInstance instance;
  instance.setPath(path);
  for (const CIMProperty& key : path.keyBindings()) {
    instance.addCimKeyBinding(key);
  }
  found.push_back(std::move(instance));
  return found;
}

}  // namespace

AbstractAssociationProviderPlugin::AbstractAssociationProviderPlugin(
    std::string associationClass, std::string antecedent, std::string dependent)
    : m_associationClass(std::move(associationClass)), m_antecedent(std::move(antecedent)),
      m_dependent(std::move(dependent)) {}

std::vector<CIMInstance> AbstractAssociationProviderPlugin::associationInstances(const CIMObjectPath& path) {
  CIMObjectPath classPath(path.host(), path.nameSpace(), m_associationClass, {});
  std::vector<CIMInstance> instances;
  enumerateInstances(classPath, instances, false);
  return instances;
}

std::vector<CIMInstance> AbstractAssociationProviderPlugin::referencing(
    const CIMObjectPath& path, const std::string& resultClass, const std::string& role) {
  std::vector<CIMInstance> result;
  if (!passes(resultClass, m_associationClass)) {
    return result;
  }
  for (CIMInstance& association : associationInstances(path)) {
    const std::vector<Reference> ends = referencesOf(association);
    if (std::any_of(
            ends.begin(), ends.end(), [&](const Reference& end) { return pointsAt(end, path, role); })) {
      result.push_back(std::move(association));
    }
  }
  return result;
}

std::vector<CIMObjectPath> AbstractAssociationProviderPlugin::farEnds(
    const CIMObjectPath& path, const std::string& resultClass, const std::string& role,
    const std::string& resultRole) {
  std::vector<CIMObjectPath> result;
  for (const CIMInstance& association : associationInstances(path)) {
    const std::vector<Reference> ends = referencesOf(association);
    for (const Reference& near : ends) {
      if (!pointsAt(near, path, role)) {
        continue;
      }
      for (const Reference& far : ends) {
        if (&far != &near && passes(resultRole, far.name) && passes(resultClass, far.target.className())) {
          appendOnce(result, far.target);
        }
      }
    }
  }
  return result;
}

void AbstractAssociationProviderPlugin::associators(
    CIMObjectPath& path, std::string&, std::vector<CIMInstance>& instances, std::string& resultClass,
    std::string& role, std::string& resultRole, const char** propertyList) {
  for (CIMObjectPath& far : farEnds(path, resultClass, role, resultRole)) {
    for (CIMInstance& instance : instancesAt(far)) {
      instances.push_back(propertyList == nullptr ? std::move(instance) : narrowed(instance, propertyList));
    }
  }
}

void AbstractAssociationProviderPlugin::associatorNames(
    CIMObjectPath& path, std::string&, std::vector<CIMObjectPath>& names, std::string& resultClass,
    std::string& role, std::string& resultRole) {
  for (CIMObjectPath& far : farEnds(path, resultClass, role, resultRole)) {
    names.push_back(std::move(far));
  }
}

void AbstractAssociationProviderPlugin::references(
    CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
    const std::string& role) {
  for (CIMInstance& association : referencing(path, resultClass, role)) {
    instances.push_back(std::move(association));
  }
}

void AbstractAssociationProviderPlugin::referencesNames(
    CIMObjectPath& path, const std::string& resultClass, const std::string& role,
    std::vector<CIMObjectPath>& names) {
  for (const CIMInstance& association : referencing(path, resultClass, role)) {
    names.push_back(association.getPath());
  }
}

}  // namespace tvp::cim::fwf
