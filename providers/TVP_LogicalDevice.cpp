// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_LogicalDevice.h"

#include "backend/TarvexProLogicalDevice.h"
#include "oslib/KVSLog.h"
#include "providers/FixedInstance.h"
#include "providers/LibraryEnumeration.h"
#include "voltvk/LogicalDevice.h"

namespace tvp::cim::fwf {

void TVP_LogicalDevice::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  KvsTrace("Entering TVP_LogicalDevice::enumerateInstances()");
  enumerateLibraryObjects(
      {"LogicalDevice", "TVP_LogicalDevice::enumerateInstances() - !!ERROR!! - TvkAdapter object is NULL",
       "TVP_LogicalDevice : Driver is not available",
       [](RaidObject& object, int index, tvpCIMInstanceWrapper& working) {
         KvsLogMsg(KVS_LOG_DEBUG, "TVP_LogicalDevice::enumerateInstances() - LD# %d", index);
         TarvexProLogicalDevice::InsertLogicalDriveInfo(static_cast<LogicalDevice*>(&object), working);
         return true;
       }},
      path, instances);
  KvsTrace("Exiting TVP_LogicalDevice::enumerateInstances()");
}

void TVP_LogicalDevice::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_LogicalDevice::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_LogicalDevice::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_LogicalDevice::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
