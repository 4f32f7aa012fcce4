// SPDX-License-Identifier: Apache-2.0
#include "providers/ModelPlugin.h"

namespace tvp::cim::fwf {

void ModelPlugin::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void ModelPlugin::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void ModelPlugin::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void ModelPlugin::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  objects.emplace_back();
}

}  // namespace tvp::cim::fwf
