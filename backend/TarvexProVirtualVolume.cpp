// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProVirtualVolume.h"

#include "backend/AdapterOperation.h"
#include "backend/BackendResult.h"
#include "backend/MemberWalk.h"
#include "backend/TarvexProUtil.h"
#include "backend/TvkUtil.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"
#include "voltvk/VirtualPool.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tvp::cim::fwf {

namespace {

constexpr auto CREATE = AdapterOperation("TarvexProVirtualVolume::CreateVirtualVolume", "createVirtualVolume")
                            .exitingAs("TarvexProVirtualPool::CreateVirtualVolume");
constexpr AdapterOperation MODIFY("TarvexProVirtualVolume::ModifyVirtualVolume", "modifyVirtualVolume");
constexpr AdapterOperation FLUSH("TarvexProVirtualVolume::FlushVirtualVolume", "flushVirtualVolume");
constexpr AdapterOperation DELETE("TarvexProVirtualVolume::DeleteVirtualVolume", "deleteVirtualVolume");
constexpr AdapterOperation RESET_STATS("TarvexProVirtualVolume::ResetVolumeStats", "resetVirtualVolumeStats");
constexpr AdapterOperation GET_STATS("TarvexProVirtualVolume::GetVolumeStats", "getVirtualVolumeStats");
constexpr auto CREATE_DATA_CACHE =
    AdapterOperation("TarvexProVirtualVolume::CreateDataCacheVirtualVolume", "CreateDataCacheVolume")
        .exitingAs("TarvexProVirtualVolume::CreateDataCacheVolume")
        .callingAs("createDataCacheVolume");
constexpr AdapterOperation
    DELETE_DATA_CACHE("TarvexProVirtualVolume::DeleteDataCacheVolume", "DeleteDataCacheVolume");

/** Whether a spec begins with the SSD pool. A pool that does not exist is left to the library. */
bool beginsWithSsd(TvkAdapter& adapter, const VirtualVolumeSpec& spec) {
  if (spec.numValidPools == 0) {
    return false;
  }
  for (const VirtualPool& pool : FilteredObjects<VirtualPool>(&adapter)) {
    if (pool.getPoolId() == spec.pools[0].poolId) {
      return pool.getHardDiskFlag() == 0;
    }
  }
  return false;
}

/** Sum of two capacities; a sum that overflows becomes the largest number, which no pool can provide. */
std::uint64_t addCapacities(std::uint64_t first, std::uint64_t second) {
  const std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();
  return second > largest - first ? largest : first + second;
}

void orderPools(TvkAdapter& adapter, VirtualVolumeSpec& spec) {
  refreshTarvexProObjects();
  KvsLogMsg(
      KVS_LOG_DEBUG,
      "Processing to sort Virtual Pool IDs in the order of HDD and then SSD pool \t\t\t\t\t\t\t\t for total "
      "pools: %d",
      static_cast<int>(spec.numValidPools));
  if (beginsWithSsd(adapter, spec)) {
    std::swap(spec.pools[0], spec.pools[1]);
    KvsTrace("Changed the pool sequence order");
  }
  KvsLogMsg(
      KVS_LOG_DEBUG, "The pool sequence order as: HDD %d  and SSD %ld",
      static_cast<int>(spec.pools[0].poolId), static_cast<long>(spec.pools[1].poolId));
  spec.capacityInSectors = spec.pools[0].capacityInSectors;
  if (spec.featureType1 == TVK_VOLUME_TIERED) {
    spec.capacityInSectors = addCapacities(spec.capacityInSectors, spec.pools[1].capacityInSectors);
  }
  KvsLogMsg(
      KVS_LOG_DEBUG, "The requested Volume capacity in sectors: %lld",
      static_cast<long long>(spec.capacityInSectors));
}

bool describeMember(const Chunk& chunk, tvpCIMInstanceWrapper& member) {
  const VirtualPool* pool = chunk.getProviderVirtualPool();
  if (pool == nullptr) {
    return false;
  }
  // COMPAT: clients read the providing pool's name under "VolumeName".
  KvsLogMsg(KVS_LOG_DEBUG, "TarvexProVirtualVolume::GetVolumeMembers VolumeName : %s", pool->getName());
  member.tvpAddProp<std::string>("VolumeName", pool->getName(), false, false);
  KvsLogMsg(
      KVS_LOG_DEBUG, "TarvexProVirtualVolume::GetVolumeMembers VirtualPoolId : %d",
      static_cast<int>(pool->getPoolId()));
  member.tvpAddProp<unsigned int>("VirtualPoolId", pool->getPoolId(), false, false);
  KvsLogMsg(
      KVS_LOG_DEBUG, "TarvexProVirtualVolume::GetVolumeMembers MaxAllowedChunks : %ld",
      static_cast<long>(chunk.getMaxAllowedChunks()));
  member.tvpAddProp<unsigned long long>("MaxAllowedChunks", chunk.getMaxAllowedChunks(), false, false);
  return true;
}

}  // namespace

unsigned int TarvexProVirtualVolume::CreateVirtualVolume(VirtualVolumeSpec& spec, Ret& ret) {
  return CREATE.run(
      ret, [&](TvkAdapter& adapter) { return adapter.createVirtualVolume(spec); },
      [&](TvkAdapter& adapter) { orderPools(adapter, spec); });
}

unsigned int TarvexProVirtualVolume::CreateDataCacheVirtualVolume(
    std::string volumeName, std::string text, unsigned char kind, unsigned int ssdPoolId,
    unsigned long long ssdCapacity, unsigned int knobSetting, VirtualPoolSpec& internalPool, Ret& ret) {
  KvsLogMsg(KVS_LOG_DEBUG, "Entering TarvexProVirtualVolume::CreateDataCacheVolume :");
  return CREATE_DATA_CACHE.carryOut(ret, [&](TvkAdapter&) {
    VirtualPoolSpec ssdPool;
    ssdPool.poolId = ssdPoolId;
    ssdPool.capacityInSectors = ssdCapacity;
    VirtualVolumeSpec volume;
    tvkSetText(volume.name, TVK_NAME_SIZE, cutToSize(std::move(volumeName), TVK_LONGEST_NAME).c_str());
    tvkSetText(
        volume.description, TVK_DESCRIPTION_SIZE,
        cutToSize(std::move(text), TVK_LONGEST_DESCRIPTION).c_str());
    volume.featureType1 = kind;
    volume.knobSetting = knobSetting;
    // A separate adapter, so that nothing held by the shared one can interfere.
    TvkAdapter adapter;
    return adapter.createCachedLD(ssdPool, internalPool, volume);
  });
}

unsigned int
TarvexProVirtualVolume::DeleteDataCacheVolume(unsigned int volumeId, unsigned int poolId, Ret& ret) {
  KvsLogMsg(
      KVS_LOG_DEBUG,
      "Entering TarvexProVirtualVolume::DeleteDataCacheVolume :- VirtualVolumeId : %d.\t\tVirtualPoolID = %d",
      static_cast<int>(volumeId), static_cast<int>(poolId));
  // Only the status: the reason was reported when deleting the pool or the volume was refused.
  return DELETE_DATA_CACHE.carryOut(ret, [&](TvkAdapter&) { return Ret(ret.getReturn()); });
}

unsigned int
TarvexProVirtualVolume::ModifyVirtualVolume(unsigned int volumeId, VirtualVolumeSpec& spec, Ret& ret) {
  return MODIFY.run(ret, [&](TvkAdapter& adapter) { return adapter.modifyVirtualVolume(volumeId, spec); });
}

unsigned int TarvexProVirtualVolume::FlushVirtualVolume(unsigned int volumeId, Ret& ret) {
  return FLUSH.run(ret, [&](TvkAdapter& adapter) { return adapter.flushVirtualVolume(volumeId); });
}

unsigned int TarvexProVirtualVolume::DeleteVirtualVolume(unsigned int volumeId, Ret& ret) {
  return DELETE.run(ret, [&](TvkAdapter& adapter) { return adapter.deleteVirtualVolume(volumeId); });
}

unsigned int TarvexProVirtualVolume::ResetVolumeStats(unsigned int volumeId, Ret& ret) {
  return RESET_STATS.run(ret, [&](TvkAdapter& adapter) { return adapter.resetVirtualVolumeStats(volumeId); });
}

unsigned int
TarvexProVirtualVolume::GetVolumeStats(unsigned int volumeId, d_ioctl_user_stat* stats, Ret& ret) {
  return GET_STATS.run(
      ret, [&](TvkAdapter& adapter) { return adapter.getVirtualVolumeStats(stats, volumeId); });
}

unsigned int
TarvexProVirtualVolume::GetVolumeMembers(unsigned int volumeId, std::vector<CIMInstance>& members) {
  KvsLogMsg(
      KVS_LOG_DEBUG, "Entering TarvexProVirtualVolume::GetVolumeMembers :- volId : %d",
      static_cast<int>(volumeId));
  return collectMembers(
      "TarvexProVirtualVolume::GetVolumeMembers", volumeId, &VirtualVolume::getVolumeId, describeMember,
      members);
}

unsigned int
TarvexProVirtualVolume::InsertVirtualVolumeInfo(VirtualVolume* volume, tvpCIMInstanceWrapper& wrapper) {
  tvpMethodTrace trace("TarvexProVirtualVolume::InsertVirtualVolumeInfo");
  if (volume == nullptr) {
    return BACKEND_FAILED;
  }
  std::vector<unsigned char> features;
  getTarvexFeatures(volume->getFeatures(), features);
  wrapper.tvpAddProp<std::string>("CreationClassName", "TVP_VirtualVolume", true, true);
  wrapper.tvpAddProp<std::string>("VolumeName", volume->getName(), true, true);
  wrapper.tvpAddProp<std::string>("Description", volume->getDescription(), false, false);
  wrapper.tvpAddProp<unsigned int>("VirtualVolumeId", volume->getVolumeId(), false, false);
  wrapper.tvpAddProp<unsigned char>("VirtualPoolsCount", volume->getVirtualPoolsCount(), false, false);
  wrapper.tvpAddProp("Features", features, false, false);
  wrapper.tvpAddProp<unsigned char>("VolumeType", TvkUtil::getVolumeType(volume), false, false);
  wrapper.tvpAddProp<unsigned char>("CacheMode", TvkUtil::getCacheType(volume), false, false);
  wrapper.tvpAddProp<unsigned int>("MaxMoveChunks", volume->getMaxMoveChunks(), false, false);
  wrapper.tvpAddProp<unsigned int>("MoveThreshold", volume->getMoveThreshold(), false, false);
  wrapper.tvpAddProp<unsigned int>("StatsSetting", volume->getStatsSetting(), false, false);
  wrapper.tvpAddProp<unsigned int>(
      "NumberOfVirtualPoolsSupported", volume->getNumberOfVirtualPoolsSupported(), false, false);
  wrapper.tvpAddProp<unsigned short>("DeviceNumber", volume->getDeviceNumber(), false, false);
  wrapper.tvpAddProp<unsigned char>("State", volume->getState(), false, false);
  wrapper.tvpAddProp<unsigned char>("KnobSetting", volume->getKnobSetting(), false, false);
  wrapper.tvpAddProp<unsigned long long>("CapacityInSectors", volume->getCapacityInSectors(), false, false);
  return BACKEND_DONE;
}

}  // namespace tvp::cim::fwf
