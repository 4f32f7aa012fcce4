// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_TarvexProIdentity.h"

#include "backend/TarvexProIdentity.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "providers/FixedInstance.h"
#include "providers/LibraryEnumeration.h"

#include <utility>

namespace tvp::cim::fwf {

void TVP_TarvexProIdentity::enumerateInstances(
    CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  KvsTrace("Entering TVP_TarvexProIdentity::enumerateInstances()");
  tvpCIMInstanceWrapper working;
  if (!isDriverAvailable()) {
    KvsTrace("TVP_TarvexProIdentity : Driver is not available");
  } else if (InsertFeatureIdentityInfo(working) == 0) {
    working.instance().setPath(path);
    instances.push_back(std::move(working.instance()));
  }
  KvsTrace("Exiting TVP_TarvexProIdentity::enumerateInstances()");
}

void TVP_TarvexProIdentity::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_TarvexProIdentity::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_TarvexProIdentity::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_TarvexProIdentity::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
