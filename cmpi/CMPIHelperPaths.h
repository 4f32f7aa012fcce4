// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIHELPERPATHS_H
#define CMPI_CMPIHELPERPATHS_H

#include "CIM/Framework/CIMProperty.h"
#include "cmpidt.h"

#include <string>
#include <vector>

namespace tvp::cim::adap::cmpi {

/** Which key bindings a CMPI path is made with. */
enum class KeySelection {
  All,
  WithoutArrays  ///< for paths that an instance is made on
};

/**
 * The core of CMPIHelper::FrameworkObjectPathToCMPIObjectPath, which takes the parts of a path so that an
 * instance need not be copied into one.
 * @return a new path that the caller owns; null if the broker returns neither a path nor an error
 */
CMPIObjectPath* makeObjectPath(
    const std::string& nameSpace, const std::string& className, const std::vector<fwf::CIMProperty>& keys,
    KeySelection selection, const CMPIBroker* broker);

}  // namespace tvp::cim::adap::cmpi

#endif
