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
 * The inner part of CMPIHelper::FrameworkObjectPathToCMPIObjectPath, on parts of a path, so that an
 * instance need not be copied into one.
 * @return a new path that the caller owns; null when the broker gives no path and no error
 */
CMPIObjectPath* makeObjectPath(
    const std::string& nameSpace, const std::string& className, const std::vector<fwf::CIMProperty>& keys,
    KeySelection selection, const CMPIBroker* broker);

}  // namespace tvp::cim::adap::cmpi

#endif
