// SPDX-License-Identifier: Apache-2.0
#include "providers/FixedInstance.h"

#include <utility>

namespace tvp::cim::fwf {

void appendFixedInstance(
    const CIMObjectPath& path, std::vector<CIMProperty> keys, std::vector<CIMInstance>& instances) {
  CIMInstance instance;
  instance.setPath(path);
  for (CIMProperty& key : keys) {
    instance.addProperty(std::move(key));
  }
  instances.push_back(std::move(instance));
}

void appendEmptyRepositoryObject(std::vector<CIMInstance>& objects) {
  objects.emplace_back();
}

}  // namespace tvp::cim::fwf
