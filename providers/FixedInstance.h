// SPDX-License-Identifier: Apache-2.0
#ifndef PROVIDERS_FIXEDINSTANCE_H
#define PROVIDERS_FIXEDINSTANCE_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "backend/tvpCIMInstanceWrapper.h"

#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * A key property of the CIM type that matches T: std::string, unsigned char, unsigned int, unsigned long
 * long, or a vector of such.
 */
template <typename T>
CIMProperty keyProperty(const char* name, const T& value) {
  return makeProperty(name, value, true);
}
inline CIMProperty keyProperty(const char* name, const char* text) {
  return keyProperty(name, std::string(text));
}

/** Appends the one instance of a class whose content is fixed: the path of the request and its keys. */
void appendFixedInstance(
    const CIMObjectPath& path, std::vector<CIMProperty> keys, std::vector<CIMInstance>& instances);

/** Appends an empty instance: what a class says of itself when it has something to answer for a path. */
void appendEmptyRepositoryObject(std::vector<CIMInstance>& objects);

}  // namespace tvp::cim::fwf

#endif
