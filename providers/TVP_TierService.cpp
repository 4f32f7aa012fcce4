// SPDX-License-Identifier: Apache-2.0
#include "providers/TVP_TierService.h"

#include "backend/TarvexProInterface.h"
#include "oslib/KVSLog.h"
#include "providers/FixedInstance.h"

#include <algorithm>
#include <array>

namespace tvp::cim::fwf {

namespace {

constexpr std::array<const char*, 12> METHODS = {
    "CreateVirtualPool",       "DeleteVirtualPool",     "CreateVirtualVolume",     "DeleteVirtualVolume",
    "ModifyVirtualPool",       "ModifyVirtualVolume",   "FlushVirtualVolume",      "GetVirtualVolumeStats",
    "ResetVirtualVolumeStats", "GetVirtualPoolMembers", "GetVirtualVolumeMembers", "CreateDataCacheVolume"};

constexpr unsigned int NOT_SERVED = 1;
constexpr unsigned int FAILURE = 4;

}  // namespace

void TVP_TierService::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool) {
  // "enuermate" is how log readers know these two lines.
  KvsTrace("Entering TVP_TierService::enuermateInstances");
  appendFixedInstance(
      path,
      {keyProperty("CreationClassName", "TVP_TierService"), keyProperty("Name", "TVP_TierServiceInstance1")},
      instances);
  KvsTrace("Exiting TVP_TierService::enuermateInstances");
}

unsigned int TVP_TierService::invokeMethod(
    const CIMObjectPath& path, const std::string& methodName, const CIMMethodParam& in, CIMMethodParam& out) {
  KvsTrace("Entering TVP_TierService::invokeMethod()");
  if (std::find(METHODS.begin(), METHODS.end(), methodName) == METHODS.end()) {
    KvsLogMsg(KVS_LOG_DEBUG, "TVP_TierService::invokeMethod() - Unsupported Method: %s", methodName.c_str());
    KvsTrace("Exiting TVP_TierService::invokeMethod()");
    return NOT_SERVED;
  }
  // The two lines that say "TierServices" are intended: log readers know them so.
  TVPInterface* gateway = TVPInterface::getInstance();
  if (gateway == nullptr) {
    KvsTrace("TierServices::invokeMethod() : Unable to get TVPInterface instance");
    return FAILURE;
  }
  KvsLogMsg(KVS_LOG_DEBUG, "TVP_TierService::invokeMethod() - calling %s", methodName.c_str());
  const unsigned int result = gateway->execute(path, methodName, in, out);
  KvsLogMsg(KVS_LOG_DEBUG, "TVP_TierService::invokeMethod() - return %d", static_cast<int>(result));
  if (result != 0) {
    KvsTrace("Exiting TVP_TierService::invokeMethod() with Failure");
    return FAILURE;
  }
  KvsTrace("Exiting TierServices::invokeMethod()");
  return 0;
}

void TVP_TierService::enumerateInstanceNames(CIMObjectPath&, std::vector<CIMObjectPath>&) {}

void TVP_TierService::getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_TierService::getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>&) {}

void TVP_TierService::getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>&) {}

}  // namespace tvp::cim::fwf
