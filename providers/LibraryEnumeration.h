// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_LIBRARYENUMERATION_H
#define PROVIDERS_LIBRARYENUMERATION_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "backend/tvpCIMInstanceWrapper.h"

#include <functional>
#include <vector>

class RaidObject;

namespace tvp::cim::fwf {

/** Refreshes the storage library's configuration. @return whether there is a driver to ask */
bool isDriverAvailable();

/** How the classes that stand for objects of the storage library differ when they enumerate. */
struct LibraryEnumeration {
  const char* typeName;        ///< the library's name of the type, such as "VirtualPool"
  const char* adapterMissing;  ///< debug message when there is no adapter; null: nothing is said
  const char* unreadable;      ///< trace line when the objects cannot be read; null: nothing is said

  /**
   * Fills the working instance from one object. @param index the object's place in the collection
   * @return false to leave the object out of the answer
   */
  std::function<bool(RaidObject& object, int index, tvpCIMInstanceWrapper& working)> fill;
};

/**
 * Appends one instance, with the path of the request, for every object of the type; none without a
 * driver.
 *
 * One working instance serves the whole enumeration and the fill functions only append to it, so that
 * each instance carries the properties of those before it as well, its own last. This is intended:
 * object managers apply properties by name in order and end with the object's own values.
 */
void enumerateLibraryObjects(
    const LibraryEnumeration& enumeration, const CIMObjectPath& path, std::vector<CIMInstance>& instances);

}  // namespace tvp::cim::fwf

#endif
