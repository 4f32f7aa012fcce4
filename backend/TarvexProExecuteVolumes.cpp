// SPDX-License-Identifier: Apache-2.0
#include "backend/BackendResult.h"
#include "backend/RoutineArguments.h"
#include "backend/RoutineSupport.h"
#include "backend/TarvexProExecute.h"
#include "backend/TarvexProVirtualVolume.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "voltvk/UserStatistics.h"

#include <algorithm>
#include <optional>

namespace tvp::cim::fwf {

namespace {

/** One pool entry per identifier, with the capacity at the same position; the library compares the counts. */
void fillPools(
    VirtualVolumeSpec& spec, const std::vector<unsigned int>& poolIds,
    const std::vector<unsigned long long>& sizes) {
  spec.numPoolIds = static_cast<std::uint32_t>(poolIds.size());
  spec.numPoolSizes = static_cast<std::uint32_t>(sizes.size());
  for (std::size_t index = 0; index < std::min<std::size_t>(poolIds.size(), TVK_SPEC_POOLS); ++index) {
    spec.pools[index].poolId = poolIds[index];
    spec.pools[index].capacityInSectors = index < sizes.size() ? sizes[index] : 0;
  }
}

void returnStatistics(const d_ioctl_user_stat& statistics, CIMMethodParam& out) {
  const struct {
    const char* name;
    std::uint64_t value;
  } counters[] = {
      {"SSD_VDTotalChunks", statistics.ssdTotalChunks}, {"SSD_VDExtraChunks", statistics.ssdExtraChunks},
      {"HDD_VDTotalChunks", statistics.hddTotalChunks}, {"ReadIO_Count", statistics.readIoCount},
      {"WriteIO_Count", statistics.writeIoCount},       {"SeqIO_Count", statistics.sequentialIoCount},
      {"RanIO_Count", statistics.randomIoCount},        {"SSD_RIO_Count", statistics.ssdReadIoCount},
      {"SSD_WIO_Count", statistics.ssdWriteIoCount},    {"VD_ChunkSize", statistics.chunkSize},
      {"VD_TotalChunks", statistics.totalChunks},
  };
  for (const auto& counter : counters) {
    out.addArgument(makeProperty<unsigned long long>(counter.name, counter.value));
  }
  out.addArgument(makeProperty<unsigned int>("VD_Feature", statistics.feature));
}

unsigned int TvpIfCreateVirtualVolume(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfCreateVirtualVolume");
  // COMPAT: logs are searched for the name in the line about the status, which only that line has.
  return runStatusRoutine(
      StatusRoutine("TvpIfCreateVirtualVolume").calledAs(" tvpCreateVirtualVolume"),
      {"VolumeName", "Description", "VolumeType", "VirtualPoolsCount", "ListOfVirtualPoolIds",
       "UsedSizeInSectors", "KnobSetting"},
      [](const RoutineArguments& arguments, Ret& ret) {
        const std::string name = arguments.text("VolumeName");
        const std::string description = arguments.text("Description");
        const std::vector<unsigned int> poolIds = arguments.array<unsigned int>("ListOfVirtualPoolIds");
        const std::vector<unsigned long long> sizes =
            arguments.array<unsigned long long>("UsedSizeInSectors");
        VirtualVolumeSpec spec;
        fillTexts(spec, name, description);
        spec.featureType1 = arguments.uint8("VolumeType");
        spec.numValidPools = arguments.uint8("VirtualPoolsCount");
        fillPools(spec, poolIds, sizes);
        spec.knobSetting = arguments.uint32("KnobSetting");

        arguments.log("Volume Name:", name);
        arguments.log("Description:", description);
        arguments.log("Volume Type:", spec.featureType1);
        arguments.log("Number of Pools:", spec.numValidPools);
        for (const unsigned int poolId : poolIds) {
          arguments.logIdentifier("Pool#", poolId);
        }
        for (const unsigned long long size : sizes) {
          arguments.log("Used size in sectors:", size);
        }
        arguments.log("Knob Setting:", spec.knobSetting);

        return TarvexProVirtualVolume::CreateVirtualVolume(spec, ret);
      },
      in, out);
}

unsigned int TvpIfDeleteVirtualVolume(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfDeleteVirtualVolume");
  return runIdentifierRoutine(
      StatusRoutine("TvpIfDeleteVirtualVolume"), "VirtualVolumeId",
      TarvexProVirtualVolume::DeleteVirtualVolume, in, out);
}

unsigned int TvpIfModifyVirtualVolume(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfModifyVirtualVolume");
  return runStatusRoutine(
      StatusRoutine("TvpIfModifyVirtualVolume").calledAs(" TvpIfModifyVirtualPool"),
      {"VirtualVolumeId", "VolumeName", "Description", "KnobSetting"},
      [](const RoutineArguments& arguments, Ret& ret) {
        const unsigned int volumeId = arguments.identifier("VirtualVolumeId");
        const std::string name = arguments.text("VolumeName");
        const std::string description = arguments.text("Description");
        VirtualVolumeSpec spec;
        spec.volumeId = volumeId;
        fillTexts(spec, name, description);
        spec.knobSetting = arguments.uint32("KnobSetting");

        arguments.logIdentifier("Volume Id:", volumeId);
        arguments.log("Volume Name:", name);
        arguments.log("Description:", description);
        arguments.log("Knob Setting:", spec.knobSetting);

        // COMPAT: this line and the one about the status name the pool routine; logs are searched for them.
        KvsLogMsg(KVS_LOG_DEBUG, "Before TvpIfModifyVirtualPool() call");
        return TarvexProVirtualVolume::ModifyVirtualVolume(volumeId, spec, ret);
      },
      in, out);
}

unsigned int TvpIfFlushVirtualVolume(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfFlushVirtualVolume");
  return runIdentifierRoutine(
      StatusRoutine("TvpIfFlushVirtualVolume"), "VirtualVolumeId", TarvexProVirtualVolume::FlushVirtualVolume,
      in, out);
}

unsigned int TvpIfGetVirtualVolumeStats(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfGetVirtualVolumeStats");
  std::optional<d_ioctl_user_stat> statistics;
  const unsigned int result = runIdentifierRoutine(
      StatusRoutine("TvpIfGetVirtualVolumeStats"), "VirtualVolumeId",
      [&statistics](unsigned int volumeId, Ret& ret) {
        return TarvexProVirtualVolume::GetVolumeStats(volumeId, &statistics.emplace(), ret);
      },
      in, out);
  if (statistics) {
    returnStatistics(*statistics, out);
  }
  return result;
}

unsigned int
TvpIfResetVirtualVolumeStats(const CIMObjectPath&, const CIMMethodParam& in, CIMMethodParam& out) {
  traceRoutineEntry("TvpIfResetVirtualVolumeStats");
  // COMPAT: only for this routine, clients read the status as "ReturnCode".
  return runIdentifierRoutine(
      StatusRoutine("TvpIfResetVirtualVolumeStats").returning("ReturnCode"), "VirtualVolumeId",
      TarvexProVirtualVolume::ResetVolumeStats, in, out);
}

unsigned int
TvpIfGetVirtualVolumeMembers(const CIMObjectPath& path, const CIMMethodParam& in, CIMMethodParam& out) {
  MemberRoutine members;
  members.routine = "TvpIfGetVirtualVolumeMembers";
  members.argument = "VirtualVolumeId";
  members.className = "TVP_VirtualVolumeSource";
  members.farewell = "Returning pool instances";
  members.collect = TarvexProVirtualVolume::GetVolumeMembers;
  return runMemberRoutine(members, path, in, out);
}

constexpr RoutineRow VOLUME_ROUTINES[] = {
    {"CreateVirtualVolume", TvpIfCreateVirtualVolume, 1},
    {"DeleteVirtualVolume", TvpIfDeleteVirtualVolume, 1},
    {"ModifyVirtualVolume", TvpIfModifyVirtualVolume},
    {"FlushVirtualVolume", TvpIfFlushVirtualVolume},
    {"GetVirtualVolumeStats", TvpIfGetVirtualVolumeStats},
    {"ResetVirtualVolumeStats", TvpIfResetVirtualVolumeStats},
    {"GetVirtualVolumeMembers", TvpIfGetVirtualVolumeMembers},
};

}  // namespace

RoutineRows volumeRoutines() {
  return RoutineRows(VOLUME_ROUTINES);
}

}  // namespace tvp::cim::fwf
