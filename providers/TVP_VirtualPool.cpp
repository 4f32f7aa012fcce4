// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_VirtualPool.h"

#include "backend/TarvexProInterface.h"
#include "backend/TarvexProVirtualPool.h"
#include "oslib/KVSLog.h"
#include "providers/FixedInstance.h"
#include "providers/LibraryEnumeration.h"
#include "voltvk/VirtualPool.h"

namespace tvp::cim::fwf {

void TVP_VirtualPool::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  enumerateLibraryObjects(
      {"VirtualPool", "TVP_VirtualPool::enumerateInstances() - !!ERROR!! - TvkAdapter object is NULL",
       nullptr,
       [](RaidObject& object, int, tvpCIMInstanceWrapper& working) {
         return TarvexProVirtualPool::InsertVirtualPoolInfo(static_cast<VirtualPool*>(&object), working) == 0;
       }},
      path, instances);
}

unsigned int TVP_VirtualPool::invokeMethod(
    const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in, CIMMethodParam& out) {
  KvsTrace("Entering TVP_VirtualPool::invokeMethod()");
  if (methodName == "GetVirtualPoolMembers") {
    TVPInterface* gateway = TVPInterface::getInstance();
    if (gateway != nullptr && gateway->execute(path, methodName, in, out) != 0) {
      KvsTrace("Exiting TVP_VirtualPool::invokeMethod() with failure");
      return 1;
    }
  }
  KvsTrace("Exiting TVP_VirtualPool::invokeMethod()");
  return 0;
}

void TVP_VirtualPool::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_VirtualPool::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) {
  keys.push_back(keyProperty("CreationClassName", "TVP_VirtualPool"));
  keys.push_back(keyProperty("Name", "VP1"));
  keys.push_back(keyProperty("Description", "Virtual Pool 1"));
  keys.push_back(keyProperty("VirtualPoolId", 110U));
  keys.push_back(keyProperty<unsigned char>("NumberOfLogicalDevice", 10));
  keys.push_back(keyProperty<unsigned char>("NumberOfVirtualVolume", 10));
  keys.push_back(keyProperty("CapacityInSectors", 1150ULL));
  keys.push_back(keyProperty<unsigned char>("TierLevel", 126));
}

void TVP_VirtualPool::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualPool::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
