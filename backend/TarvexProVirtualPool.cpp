// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProVirtualPool.h"

#include "backend/AdapterOperation.h"
#include "backend/BackendResult.h"
#include "backend/MemberWalk.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/VirtualPool.h"

namespace tvp::cim::fwf {

namespace {

constexpr AdapterOperation CREATE("TarvexProVirtualPool::CreateVirtualPool", "createVirtualPool");
constexpr AdapterOperation DELETE("TarvexProVirtualPool::DeleteVirtualPool", "deleteVirtualPool");
constexpr auto MODIFY = AdapterOperation("TarvexProVirtualPool::ModifyVirtualPool", "modifyVirtualPool")
                            .throwingAs("ModifyVirtualPool");

bool describeMember(const Chunk& chunk, tvpCIMInstanceWrapper& member) {
  const LogicalDevice* drive = chunk.getProviderLogical();
  if (drive == nullptr) {
    return false;
  }
  KvsLogMsg(KVS_LOG_DEBUG, "TarvexProVirtualPool::GetPoolMembers memberName : %s", drive->getDeviceName());
  member.tvpAddProp<std::string>("Name", drive->getDeviceName(), false, false);
  KvsLogMsg(
      KVS_LOG_DEBUG, "TarvexProVirtualPool::GetPoolMembers DeviceNumber : %d", drive->getDeviceNumber());
  member.tvpAddProp<unsigned short>("DeviceNumber", drive->getDeviceNumber(), false, false);
  KvsLogMsg(
      KVS_LOG_DEBUG, "TarvexProVirtualPool::GetPoolMembers startRange : %ld",
      static_cast<long>(chunk.getStartRange()));
  member.tvpAddProp<unsigned long long>("LDStartRange", chunk.getStartRange(), false, false);
  KvsLogMsg(
      KVS_LOG_DEBUG, "TarvexProVirtualPool::GetPoolMembers endRange : %ld",
      static_cast<long>(chunk.getEndRange()));
  member.tvpAddProp<unsigned long long>("LDEndRange", chunk.getEndRange(), false, false);
  return true;
}

}  // namespace

unsigned int TarvexProVirtualPool::CreateVirtualPool(VirtualPoolSpec& spec, Ret& ret) {
  return CREATE.run(ret, [&](TvkAdapter& adapter) { return adapter.createVirtualPool(spec); });
}

unsigned int
TarvexProVirtualPool::ModifyVirtualPool(unsigned int poolId, const VirtualPoolSpec& spec, Ret& ret) {
  return MODIFY.run(ret, [&](TvkAdapter& adapter) { return adapter.modifyVirtualPool(poolId, spec); });
}

unsigned int TarvexProVirtualPool::DeleteVirtualPool(unsigned int poolId, Ret& ret) {
  return DELETE.run(ret, [&](TvkAdapter& adapter) { return adapter.deleteVirtualPool(poolId); });
}

unsigned int TarvexProVirtualPool::GetPoolMembers(unsigned int poolId, std::vector<CIMInstance>& members) {
  KvsLogMsg(
      KVS_LOG_DEBUG, "Entering TarvexProVirtualPool::GetPoolMembers :- poolId : %d",
      static_cast<int>(poolId));
  return collectMembers(
      "TarvexProVirtualPool::GetPoolMembers", poolId, &VirtualPool::getPoolId, describeMember, members);
}

unsigned int TarvexProVirtualPool::InsertVirtualPoolInfo(VirtualPool* pool, tvpCIMInstanceWrapper& wrapper) {
  tvpMethodTrace trace("TarvexProVirtualPool::InsertVirtualPoolInfo");
  if (pool == nullptr) {
    return BACKEND_FAILED;
  }
  if (pool->isInternal()) {
    KvsLogMsg(
        KVS_LOG_DEBUG, "The Pool %s is an internal pool created for CachedLD, hence ignoring it",
        pool->getName());
    return BACKEND_FAILED;
  }
  wrapper.tvpAddProp<std::string>("CreationClassName", "TVP_VirtualPool", true, true);
  wrapper.tvpAddProp<std::string>("Name", pool->getName(), true, true);
  wrapper.tvpAddProp<unsigned int>("PoolStatus", pool->getPoolStatus(), false, false);
  wrapper.tvpAddProp<std::string>("Description", pool->getDescription(), false, false);
  wrapper.tvpAddProp<unsigned int>("VirtualPoolId", pool->getPoolId(), false, false);
  wrapper.tvpAddProp<unsigned char>("NumberOfLogicalDevice", pool->getNumberOfLogicalDevices(), false, false);
  wrapper.tvpAddProp<unsigned char>("NumberOfVirtualVolume", pool->getNumberOfVirtualVolumes(), false, false);
  wrapper.tvpAddProp<unsigned long long>("ChunkSize", pool->getChunkSize(), false, false);
  wrapper.tvpAddProp<unsigned char>("TierLevel", pool->getTierLevel(), false, false);
  wrapper.tvpAddProp<unsigned long long>("CapacityInSectors", pool->getCapacityInSectors(), false, false);
  wrapper.tvpAddProp<unsigned long long>(
      "UsedCapacityInSectors", pool->getUsedCapacityInSectors(), false, false);
  return BACKEND_DONE;
}

}  // namespace tvp::cim::fwf
