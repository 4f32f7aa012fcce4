// SPDX-License-Identifier: Apache-2.0
#include "backend/BackendResult.h"
#include "backend/LibraryAccess.h"
#include "backend/RoutineArguments.h"
#include "backend/RoutineSupport.h"
#include "backend/TarvexProExecute.h"
#include "backend/TarvexProVirtualPool.h"
#include "backend/TarvexProVirtualVolume.h"
#include "backend/TvkUtil.h"
#include "oslib/KVSLog.h"
#include "voltvk/VirtualPool.h"

namespace tvp::cim::fwf {

namespace {

/** The one-drive pool that the library creates together with the volume. */
VirtualPoolSpec describeInternalPool(const RoutineArguments& arguments, unsigned char drive) {
  VirtualPoolSpec pool;
  pool.numLogicalDevices = 1;
  pool.numDeviceNumbers = 1;
  pool.deviceNumbers[0] = drive;
  pool.capacityInSectors = arguments.uint64("LDCapacityInSectors");
  pool.chunkSizeInSectors = arguments.uint64("ChunkSize");
  refreshTarvexProObjects();
  const std::string name = TvkUtil::buildDeviceName(getTvkAdapter(), TVK_NAME_INTERNAL_POOL);
  fillTexts(pool, name, "");
  arguments.log("Internal Pool Name:", name);
  pool.tierLevel = TVK_TIER_HDD;
  arguments.log("LD TierLevel:", pool.tierLevel);
  pool.poolFlag = TVK_POOL_INTERNAL;
  arguments.log("Internal Pool Flag:", pool.poolFlag);
  return pool;
}

bool poolExists(unsigned int poolId) {
  refreshTarvexProObjects();
  for (const VirtualPool& pool : FilteredObjects<VirtualPool>(getTvkAdapter())) {
    if (pool.getPoolId() == poolId) {
      return true;
    }
  }
  return false;
}

unsigned int TvpIfCreateDataCacheVolume(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfCreateDataCacheVolume");
  const RoutineArguments arguments("TvpIfCreateDataCacheVolume", in);
  if (!arguments.areExactly(
          {"VolumeName", "Description", "VolumeType", "SSDPoolId", "reqCapacityFromSSDPool", "LDDeviceNumber",
           "LDCapacityInSectors", "ChunkSize", "KnobSetting"})) {
    return BACKEND_FAILED;
  }
  const std::string name = arguments.text("VolumeName");
  const std::string description = arguments.text("Description");
  const unsigned char kind = arguments.uint8("VolumeType");
  const unsigned int ssdPoolId = arguments.identifier("SSDPoolId");
  const unsigned long long ssdCapacity = arguments.uint64("reqCapacityFromSSDPool");
  const std::vector<unsigned char> drives = arguments.array<unsigned char>("LDDeviceNumber");
  const unsigned int knobSetting = arguments.uint32("KnobSetting");

  arguments.log("Volume Name:", name);
  arguments.log("Description:", description);
  arguments.log("Volume Type:", kind);
  arguments.logIdentifier("SSD Pool#", ssdPoolId);
  arguments.log("Capacity from SSD pool:", ssdCapacity);
  arguments.log("Knob Setting:", knobSetting);

  if (drives.size() != 1) {
    KvsLogMsg(
        KVS_LOG_DEBUG,
        "TvpIfCreateDataCacheVolume() - !!ERROR!! - Only one LD is required for DataCache volume");
    return BACKEND_FAILED;
  }
  VirtualPoolSpec internalPool = describeInternalPool(arguments, drives.front());
  Ret ret;
  const unsigned int result = TarvexProVirtualVolume::CreateDataCacheVirtualVolume(
      name, description, kind, ssdPoolId, ssdCapacity, knobSetting, internalPool, ret);
  returnStatus(" TvpIfCreateDataCacheVolume", ret, out);
  return result;
}

unsigned int TvpIfDeleteDataCacheVolume(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfDeleteDataCacheVolume");
  return runStatusRoutine(
      StatusRoutine("TvpIfDeleteDataCacheVolume"), {"VirtualVolumeId", "VirtualPoolId"},
      [](const RoutineArguments& arguments, Ret& ret) {
        const unsigned int volumeId = arguments.identifier("VirtualVolumeId");
        const unsigned int poolId = arguments.identifier("VirtualPoolId");
        arguments.logIdentifier("Volume Id:", volumeId);
        arguments.logIdentifier("Pool Id:", poolId);

        TarvexProVirtualVolume::DeleteVirtualVolume(volumeId, ret);
        // An internal pool is deleted with its volume; a pool that still exists is deleted as requested.
        if (ret.getReturn() == 0 && poolExists(poolId)) {
          TarvexProVirtualPool::DeleteVirtualPool(poolId, ret);
        }
        return TarvexProVirtualVolume::DeleteDataCacheVolume(volumeId, poolId, ret);
      },
      in, out);
}

constexpr RoutineRow DATA_CACHE_ROUTINES[] = {
    {"CreateDataCacheVolume", TvpIfCreateDataCacheVolume},
    {"DeleteDataCacheVolume", TvpIfDeleteDataCacheVolume, 0, false},
};

}  // namespace

RoutineRows dataCacheRoutines() {
  return RoutineRows(DATA_CACHE_ROUTINES);
}

}  // namespace tvp::cim::fwf
