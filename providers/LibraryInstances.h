// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_LIBRARYINSTANCES_H
#define PROVIDERS_LIBRARYINSTANCES_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "backend/LibraryAccess.h"
#include "backend/tvpCIMInstanceWrapper.h"

#include <vector>

namespace tvp::cim::fwf {

/**
 * Appends one instance, with the path of the request, for every object of the storage library.
 *
 * COMPAT: one working instance serves the whole enumeration and fill only appends to it, so each instance
 * also has the properties of those before it, with its own last. Object managers apply properties by name in
 * order and end with the object's own values.
 * @param fill bool(Object& object, int index, tvpCIMInstanceWrapper& working): appends the object's
 *        properties; false leaves the object out. The index is the object's position in the collection.
 */
template <typename Object, typename Fill>
void appendLibraryInstances(
    const FilteredObjects<Object>& objects, const CIMObjectPath& path, std::vector<CIMInstance>& instances,
    Fill fill) {
  tvpCIMInstanceWrapper working;
  for (auto object = objects.begin(); object != objects.end(); ++object) {
    if (fill(*object, object.index(), working)) {
      working.instance().setPath(path);
      instances.push_back(working.instance());
    }
  }
}

}  // namespace tvp::cim::fwf

#endif
