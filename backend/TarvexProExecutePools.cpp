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
  return runStatusRoutine(
      StatusRoutine("TvpIfCreateVirtualPool").calledAs("TarvexProVirtualPool::CreateVirtualPool"),
      {"Name", "Description", "NumberOfLogicalDevice", "LDDeviceNumbers", "CapacityInSectors", "ChunkSize",
       "TierLevel"},
      [](const RoutineArguments& arguments, Ret& ret) {
        const std::string name = arguments.text("Name");
        const std::string description = arguments.text("Description");
        const std::vector<unsigned char> drives = arguments.array<unsigned char>("LDDeviceNumbers");
        VirtualPoolSpec spec;
        fillTexts(spec, name, description);
        spec.numLogicalDevices = arguments.uint8("NumberOfLogicalDevice");
        spec.numDeviceNumbers = static_cast<std::uint32_t>(drives.size());
        std::copy_n(
            drives.begin(), std::min<std::size_t>(drives.size(), TVK_SPEC_DEVICES), spec.deviceNumbers);
        spec.capacityInSectors = arguments.uint64("CapacityInSectors");
        spec.chunkSizeInSectors = arguments.uint64("ChunkSize");
        spec.tierLevel = arguments.uint8("TierLevel");

        arguments.log("Pool Name:", name);
        arguments.log("Description:", description);
        arguments.log("Number of LDs:", spec.numLogicalDevices);
        for (const unsigned char drive : drives) {
          arguments.log("LD#", drive);
        }
        arguments.log("Capacity in sectors:", spec.capacityInSectors);
        arguments.log("Chunk size:", spec.chunkSizeInSectors);
        arguments.log("TierLevel:", spec.tierLevel);

        return TarvexProVirtualPool::CreateVirtualPool(spec, ret);
      },
      in, out);
}

unsigned int TvpIfDeleteVirtualPool(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  KvsTrace("Entering TvpIfDeleteVirtualPool()");
  return runIdentifierRoutine(
      StatusRoutine("TvpIfDeleteVirtualPool").calledAs("TarvexProVirtualPool::DeleteVirtualPool"),
      "VirtualPoolId", TarvexProVirtualPool::DeleteVirtualPool, in, out);
}

unsigned int TvpIfModifyVirtualPool(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfModifyVirtualPool");
  return runStatusRoutine(
      StatusRoutine("TvpIfModifyVirtualPool"), {"VirtualPoolId", "Name", "TierLevel", "Description"},
      [](const RoutineArguments& arguments, Ret& ret) {
        const unsigned int poolId = arguments.identifier("VirtualPoolId");
        const std::string name = arguments.text("Name");
        const std::string description = arguments.text("Description");
        VirtualPoolSpec spec;
        spec.poolId = poolId;
        fillTexts(spec, name, description);
        spec.tierLevel = arguments.uint8("TierLevel");

        arguments.logIdentifier("Pool Id:", poolId);
        arguments.log("Pool Name:", name);
        arguments.log("TierLevel:", spec.tierLevel);
        arguments.log("Description:", description);

        return TarvexProVirtualPool::ModifyVirtualPool(poolId, spec, ret);
      },
      in, out);
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
