// SPDX-License-Identifier: Apache-2.0
#include "backend/BackendResult.h"
#include "backend/RoutineArguments.h"
#include "backend/RoutineSupport.h"
#include "backend/TarvexProExecute.h"
#include "backend/TarvexProVirtualPool.h"
#include "oslib/KVSLog.h"

#include <algorithm>

namespace tvp::cim::fwf {

namespace {

unsigned int TvpIfCreateVirtualPool(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfCreateVirtualPool");
  const RoutineArguments arguments("TvpIfCreateVirtualPool", in);
  if (!arguments.areExactly(
          {"Name", "Description", "NumberOfLogicalDevice", "LDDeviceNumbers", "CapacityInSectors",
           "ChunkSize", "TierLevel"})) {
    return BACKEND_FAILED;
  }
  const std::string name = arguments.text("Name");
  const std::string description = arguments.text("Description");
  const std::vector<unsigned char> drives = arguments.array<unsigned char>("LDDeviceNumbers");
  VirtualPoolSpec spec;
  fillTexts(spec, name, description);
  spec.numLogicalDevices = arguments.uint8("NumberOfLogicalDevice");
  spec.numDeviceNumbers = static_cast<std::uint32_t>(drives.size());
  std::copy_n(drives.begin(), std::min<std::size_t>(drives.size(), TVK_SPEC_DEVICES), spec.deviceNumbers);
  spec.capacityInSectors = arguments.uint64("CapacityInSectors");
  spec.chunkSizeInSectors = arguments.uint64("ChunkSize");
  spec.tierLevel = arguments.uint8("TierLevel");

  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - Pool Name: %s", name.c_str());
  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - Description: %s", description.c_str());
  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - Number of LDs: %u", spec.numLogicalDevices);
  for (const unsigned char drive : drives) {
    KvsLogMsg(KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - LD# %d", drive);
  }
  KvsLogMsg(
      KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - Capacity in sectors: %llu",
      static_cast<unsigned long long>(spec.capacityInSectors));
  KvsLogMsg(
      KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - Chunk size: %llu",
      static_cast<unsigned long long>(spec.chunkSizeInSectors));
  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfCreateVirtualPool() - TierLevel: %d", spec.tierLevel);

  Ret ret;
  const unsigned int result = TarvexProVirtualPool::CreateVirtualPool(spec, ret);
  returnStatus("TarvexProVirtualPool::CreateVirtualPool", ret, out);
  return result;
}

unsigned int TvpIfDeleteVirtualPool(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  KvsTrace("Entering TvpIfDeleteVirtualPool()");
  return runIdentifierRoutine(
      IdentifierRoutine("TvpIfDeleteVirtualPool", "VirtualPoolId")
          .calledAs("TarvexProVirtualPool::DeleteVirtualPool"),
      TarvexProVirtualPool::DeleteVirtualPool, in, out);
}

unsigned int TvpIfModifyVirtualPool(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfModifyVirtualPool");
  const RoutineArguments arguments("TvpIfModifyVirtualPool", in);
  if (!arguments.areExactly({"VirtualPoolId", "Name", "TierLevel", "Description"})) {
    return BACKEND_FAILED;
  }
  const unsigned int poolId = arguments.identifier("VirtualPoolId");
  const std::string name = arguments.text("Name");
  const std::string description = arguments.text("Description");
  VirtualPoolSpec spec;
  spec.poolId = poolId;
  fillTexts(spec, name, description);
  spec.tierLevel = arguments.uint8("TierLevel");

  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfModifyVirtualPool() - Pool Id: %d", static_cast<int>(poolId));
  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfModifyVirtualPool() - Pool Name: %s", name.c_str());
  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfModifyVirtualPool() - TierLevel: %d", spec.tierLevel);
  KvsLogMsg(KVS_LOG_DEBUG, "TvpIfModifyVirtualPool() - Description: %s", description.c_str());

  Ret ret;
  const unsigned int result = TarvexProVirtualPool::ModifyVirtualPool(poolId, spec, ret);
  returnStatus(" TvpIfModifyVirtualPool", ret, out);
  return result;
}

unsigned int
TvpIfGetVirtualPoolMembers(const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out) {
  MemberRoutine members;
  members.routine = "TvpIfGetVirtualPoolMembers";
  members.argument = "VirtualPoolId";
  members.className = "TVP_VirtualPoolMember";
  members.farewell = "Returning Logical Device instances";
  members.collect = TarvexProVirtualPool::GetPoolMembers;
  return runMemberRoutine(members, path, in, out);
}

constexpr RoutineRow POOL_ROUTINES[] = {
    {"CreateVirtualPool", TvpIfCreateVirtualPool},
    {"DeleteVirtualPool", TvpIfDeleteVirtualPool},
    {"ModifyVirtualPool", TvpIfModifyVirtualPool},
    {"GetVirtualPoolMembers", TvpIfGetVirtualPoolMembers},
};

}  // namespace

RoutineRows poolRoutines() {
  return RoutineRows(POOL_ROUTINES);
}

}  // namespace tvp::cim::fwf
