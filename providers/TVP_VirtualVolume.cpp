// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_VirtualVolume.h"

#include "backend/TarvexProInterface.h"
#include "backend/TarvexProVirtualVolume.h"
#include "oslib/KVSLog.h"
#include "providers/FixedInstance.h"
#include "providers/LibraryEnumeration.h"
#include "voltvk/VirtualVolume.h"

namespace tvp::cim::fwf {

void TVP_VirtualVolume::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  enumerateLibraryObjects(
      {"VirtualVolume", nullptr, nullptr,
       [](RaidObject& object, int, tvpCIMInstanceWrapper& working) {
         // A volume is listed whatever becomes of its properties: its result is not
         // looked at.
         TarvexProVirtualVolume::InsertVirtualVolumeInfo(static_cast<VirtualVolume*>(&object), working);
         return true;
       }},
      path, instances);
}

unsigned int TVP_VirtualVolume::invokeMethod(
    const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in, CIMMethodParam& out) {
  KvsTrace("Entering TVP_VirtualVolume::invokeMethod()");
  if (methodName == "GetVirtualVolumeMembers") {
    if (TVPInterface* gateway = TVPInterface::getInstance()) {
      gateway->execute(path, methodName, in, out);
    }
  }
  KvsTrace("Exiting TVP_VirtualVolume::invokeMethod()");
  return 0;
}

void TVP_VirtualVolume::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_VirtualVolume::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualVolume::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_VirtualVolume::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& objects) {
  appendEmptyRepositoryObject(objects);
}

}  // namespace tvp::cim::fwf
