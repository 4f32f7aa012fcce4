// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"
#include "voltvk/UserStatistics.h"

#include <functional>
#include <random>

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

struct RoutineCase {
  const char* method;
  const char* routine;
  Strings arguments;
};

const std::vector<RoutineCase>& routines() {
  static const std::vector<RoutineCase> cases = {
      {"CreateVirtualPool",
       "TvpIfCreateVirtualPool",
       {"Name", "Description", "NumberOfLogicalDevice", "LDDeviceNumbers", "CapacityInSectors", "ChunkSize",
        "TierLevel"}},
      {"DeleteVirtualPool", "TvpIfDeleteVirtualPool", {"VirtualPoolId"}},
      {"ModifyVirtualPool", "TvpIfModifyVirtualPool", {"VirtualPoolId", "Name", "TierLevel", "Description"}},
      {"CreateVirtualVolume",
       "TvpIfCreateVirtualVolume",
       {"VolumeName", "Description", "VolumeType", "VirtualPoolsCount", "ListOfVirtualPoolIds",
        "UsedSizeInSectors", "KnobSetting"}},
      {"DeleteVirtualVolume", "TvpIfDeleteVirtualVolume", {"VirtualVolumeId"}},
      {"ModifyVirtualVolume",
       "TvpIfModifyVirtualVolume",
       {"VirtualVolumeId", "VolumeName", "Description", "KnobSetting"}},
      {"FlushVirtualVolume", "TvpIfFlushVirtualVolume", {"VirtualVolumeId"}},
      {"GetVirtualVolumeStats", "TvpIfGetVirtualVolumeStats", {"VirtualVolumeId"}},
      {"ResetVirtualVolumeStats", "TvpIfResetVirtualVolumeStats", {"VirtualVolumeId"}},
      {"CreateDataCacheVolume",
       "TvpIfCreateDataCacheVolume",
       {"VolumeName", "Description", "VolumeType", "SSDPoolId", "reqCapacityFromSSDPool", "LDDeviceNumber",
        "LDCapacityInSectors", "ChunkSize", "KnobSetting"}},
      {"DeleteDataCacheVolume", "TvpIfDeleteDataCacheVolume", {"VirtualVolumeId", "VirtualPoolId"}},
  };
  return cases;
}

/** Null strings with the given names: right in number and name, wrong in everything else. */
CIMMethodParam named(const Strings& names) {
  CIMMethodParam list;
  for (const std::string& name : names) {
    list.addArgument(
        CIMProperty(name, CIMValue<std::string>(std::string(), false, true), false, PDT_STRING, false));
  }
  return list;
}

CIMMethodParam identifier(const char* name, unsigned int value) {
  return arguments(makeProperty<unsigned int>(name, value));
}

class MethodRoutines : public StorageTest {
protected:
  std::vector<CIMInstance> members() const {
    const CIMProperty* argument = out.getArgumentByName("Members");
    if (argument == nullptr || argument->getType() != PDT_INSTANCE_ARRAY) {
      ADD_FAILURE() << "no Members in the output " << out.toString();
      return {};
    }
    return argument->instanceSlot().m_values;
  }
  static Strings namesOfProperties(const CIMInstance& instance) {
    Strings names;
    for (const CIMProperty& property : instance.properties()) {
      names.push_back(property.name());
    }
    return names;
  }
};

TEST_F(MethodRoutines, ArgumentsAreCountedThenLookedUpInOrder) {
  for (const RoutineCase& routine : routines()) {
    SCOPED_TRACE(routine.method);
    const std::string name = routine.routine;
    Strings tooMany = routine.arguments;
    tooMany.emplace_back("Extra");
    for (const Strings& wrong : {Strings(), tooMany}) {
      log.clear();
      EXPECT_EQ(call(routine.method, named(wrong)), 3U);
      EXPECT_EQ(
          log.lines().at(2), LogCapture::message(
                                 4, name + " FAILURE : " + std::to_string(routine.arguments.size()) +
                                        " input parameters required"));
      EXPECT_EQ(out.getArgumentCount(), 0U);
    }
    for (const std::string& missing : routine.arguments) {
      Strings renamed = routine.arguments;
      std::replace(renamed.begin(), renamed.end(), missing, "x" + missing);
      log.clear();
      EXPECT_EQ(call(routine.method, named(renamed)), 3U);
      const std::string entry = name == "TvpIfDeleteVirtualPool" ? "Entering " + name + "()"
                                                                 : "Entering TVPIfExecute::" + name + "()";
      EXPECT_EQ(
          log.lines(),
          (Strings{
              LogCapture::trace("ENTER : TVPInterface::execute"), LogCapture::trace(entry),
              LogCapture::message(
                  4, std::string(name).append(" : No ").append(missing).append(" parameter passed in")),
              LogCapture::trace("EXIT  : TVPInterface::execute")}));
    }
  }
}

TEST_F(MethodRoutines, ArgumentsWithoutValuesAreRefusedByTheLibrary) {
  makePool("First", TVK_DEVICE_HDD);
  for (const RoutineCase& routine : routines()) {
    SCOPED_TRACE(routine.method);
    EXPECT_EQ(call(routine.method, named(routine.arguments)), 3U);
    if (std::string(routine.method) != "CreateDataCacheVolume") {
      const char* status =
          std::string(routine.method) == "ResetVirtualVolumeStats" ? "ReturnCode" : "RetStat";
      EXPECT_NE(answered(status), 0U);
    }
  }
  EXPECT_EQ(pools(), Strings{"First"}) << "a missing identifier is nobody's";
}

TEST_F(MethodRoutines, RandomArgumentsNeverCrash) {
  std::mt19937 random(20240131);
  const auto number = [&](unsigned int limit) { return static_cast<unsigned int>(random() % limit); };
  const std::vector<std::function<CIMProperty(const char*)>> makers = {
      [&](const char* name) { return makeProperty<std::string>(name, std::string(number(300), '%')); },
      [&](const char* name) {
        return makeProperty<unsigned char>(name, static_cast<unsigned char>(number(256)));
      },
      [&](const char* name) { return makeProperty<unsigned int>(name, number(4)); },
      [&](const char* name) { return makeProperty<unsigned long long>(name, ~0ULL >> number(64)); },
      [&](const char* name) { return makeProperty(name, std::vector<unsigned char>(number(600), 1)); },
      [&](const char* name) { return makeProperty(name, std::vector<unsigned int>(number(5), 1)); },
      [&](const char* name) { return makeProperty(name, std::vector<unsigned long long>(number(5), ~0ULL)); },
      [&](const char* name) { return makeProperty<CIMInstance>(name, CIMInstance("C")); },
      [&](const char* name) {
        CIMProperty empty;
        empty.setName(name);
        empty.setType(static_cast<Primitive_DataType>(number(40)));
        return empty;
      },
  };
  for (int round = 0; round < 40; ++round) {
    for (const RoutineCase& routine : routines()) {
      CIMMethodParam in;
      for (const std::string& name : routine.arguments) {
        in.addArgument(makers[number(static_cast<unsigned int>(makers.size()))](name.c_str()));
      }
      const unsigned int result = call(routine.method, in);
      EXPECT_TRUE(result == 0 || result == 3) << routine.method;
    }
  }
}

TEST_F(MethodRoutines, PoolsAreCreatedChangedAndDeleted) {
  const unsigned char first = addDrive(TVK_DEVICE_HDD);
  const unsigned char second = addDrive(TVK_DEVICE_HDD);
  EXPECT_EQ(call("CreateVirtualPool", poolArguments("Archive", {first, second}, TVK_TIER_HDD)), 0U);
  EXPECT_EQ(answered("RetStat"), 0U);
  EXPECT_TRUE(log.has(LogCapture::message(4, "TvpIfCreateVirtualPool() - Pool Name: Archive")));
  EXPECT_TRUE(log.has(
      LogCapture::message(4, "TarvexProVirtualPool::CreateVirtualPool() returned Ret.getReturn() = 0")));
  const unsigned int pool = idOf("Archive", &VirtualPool::getPoolId);

  EXPECT_EQ(call("CreateVirtualPool", poolArguments("Archive", {first}, TVK_TIER_HDD)), 3U);
  const unsigned int refused = answered("RetStat");
  EXPECT_TRUE(refused == TVK_NAME_IN_USE || refused == TVK_DEVICE_IN_USE);
  EXPECT_EQ(
      call(
          "CreateVirtualPool",
          poolArguments(std::string(TVK_LONGEST_NAME + 1, 'n'), {addDrive(TVK_DEVICE_HDD)}, TVK_TIER_HDD)),
      3U);
  EXPECT_EQ(answered("RetStat"), static_cast<unsigned int>(TVK_INVALID_NAME)) << "a long name is not cut";

  EXPECT_EQ(
      call(
          "ModifyVirtualPool", arguments(
                                   makeProperty<unsigned int>("VirtualPoolId", pool),
                                   makeProperty<std::string>("Name", "100% \"new\""),
                                   makeProperty<unsigned char>("TierLevel", TVK_TIER_HDD),
                                   makeProperty<std::string>("Description", "%s%n"))),
      0U);
  EXPECT_TRUE(log.has(LogCapture::message(4, " TvpIfModifyVirtualPool() returned Ret.getReturn() = 0")));
  EXPECT_EQ(pools(), Strings{"100% \"new\""});

  voltvk::Faults().throwFrom("refreshConfiguration");
  EXPECT_EQ(call("GetVirtualPoolMembers", identifier("VirtualPoolId", pool)), 0U);
  const std::vector<CIMInstance> drives = members();
  ASSERT_FALSE(drives.empty());
  for (const CIMInstance& drive : drives) {
    EXPECT_EQ(drive.className(), "TVP_VirtualPoolMember");
    EXPECT_EQ(drive.nameSpace(), "root/test");
    EXPECT_EQ(namesOfProperties(drive), (Strings{"Name", "DeviceNumber", "LDStartRange", "LDEndRange"}));
  }
  EXPECT_EQ(log.count(LogCapture::message(4, "adding instance")), drives.size());
  EXPECT_TRUE(log.has(LogCapture::message(4, "Returning Logical Device instances")));

  EXPECT_EQ(call("DeleteVirtualPool", identifier("VirtualPoolId", pool)), 0U);
  EXPECT_TRUE(log.has(
      LogCapture::message(4, "TarvexProVirtualPool::DeleteVirtualPool() returned Ret.getReturn() = 0")));
  EXPECT_EQ(call("DeleteVirtualPool", identifier("VirtualPoolId", pool)), 3U);
  EXPECT_EQ(answered("RetStat"), static_cast<unsigned int>(TVK_NO_SUCH_POOL));
}

TEST_F(MethodRoutines, VolumesAreCreatedChangedMeasuredAndDeleted) {
  const unsigned int ssd = makePool("Fast", TVK_DEVICE_SSD);
  const unsigned int hdd = makePool("Slow", TVK_DEVICE_HDD);
  EXPECT_EQ(
      call("CreateVirtualVolume", volumeArguments("Data", TVK_VOLUME_TIERED, {ssd, hdd}, {GIB, 2 * GIB})),
      0U);
  ASSERT_EQ(answered("RetStat"), 0U);
  EXPECT_TRUE(log.has(LogCapture::message(4, " tvpCreateVirtualVolume() returned Ret.getReturn() = 0")));
  const unsigned int volume = volumeId("Data");

  EXPECT_EQ(
      call(
          "ModifyVirtualVolume",
          arguments(
              makeProperty<unsigned int>("VirtualVolumeId", volume),
              makeProperty<std::string>("VolumeName", "Data 2"), makeProperty<std::string>("Description", ""),
              makeProperty<unsigned int>("KnobSetting", 1))),
      0U);
  EXPECT_TRUE(log.has(LogCapture::message(4, "Before TvpIfModifyVirtualPool() call")));
  EXPECT_EQ(volumes(), Strings{"Data 2"});

  EXPECT_EQ(call("GetVirtualVolumeStats", identifier("VirtualVolumeId", volume)), 0U);
  EXPECT_EQ(
      out.toString(), "RetStatSSD_VDTotalChunksSSD_VDExtraChunksHDD_VDTotalChunksReadIO_CountWriteIO_Count"
                      "SeqIO_CountRanIO_CountSSD_RIO_CountSSD_WIO_CountVD_ChunkSizeVD_TotalChunksVD_Feature");
  EXPECT_EQ(
      out.getArgumentByName("VD_TotalChunks")->uint64Slot().m_values,
      std::vector<unsigned long long>{3 * GIB / MIB});
  EXPECT_EQ(answered("VD_Feature"), 2U);
  EXPECT_EQ(call("ResetVirtualVolumeStats", identifier("VirtualVolumeId", volume)), 0U);
  EXPECT_EQ(out.toString(), "ReturnCode");

  EXPECT_EQ(call("GetVirtualVolumeMembers", identifier("VirtualVolumeId", volume)), 0U);
  Strings providers;
  for (const CIMInstance& source : members()) {
    EXPECT_EQ(source.className(), "TVP_VirtualVolumeSource");
    EXPECT_EQ(namesOfProperties(source), (Strings{"VolumeName", "VirtualPoolId", "MaxAllowedChunks"}));
    providers.push_back(source.properties().front().stringSlot().m_values.front());
  }
  std::sort(providers.begin(), providers.end());
  EXPECT_EQ(providers, (Strings{"Fast", "Slow"})) << "the providing pools stand under VolumeName";

  log.clear();
  EXPECT_EQ(call("FlushVirtualVolume", identifier("VirtualVolumeId", volume)), 3U);
  EXPECT_EQ(answered("RetStat"), static_cast<unsigned int>(TVK_NOT_CACHED));
  EXPECT_TRUE(log.has(LogCapture::message(
      4, " TvpIfFlushVirtualVolume() returned Ret.getReturn() = " + std::to_string(TVK_NOT_CACHED))));
  EXPECT_EQ(call("DeleteVirtualVolume", identifier("VirtualVolumeId", volume)), 0U);
  for (const unsigned int pool : {ssd, hdd}) {
    EXPECT_EQ(call("CreateVirtualVolume", volumeArguments("Alone", TVK_VOLUME_TIERED, {pool}, {GIB})), 0U);
    EXPECT_EQ(answered("RetStat"), 0U) << "one pool is enough";
    EXPECT_EQ(call("DeleteVirtualVolume", identifier("VirtualVolumeId", volumeId("Alone"))), 0U);
  }
  EXPECT_TRUE(volumes().empty());
}

TEST_F(MethodRoutines, CachedVolumesCreateAndDeleteTheirInternalPool) {
  const unsigned int ssd = makePool("Fast", TVK_DEVICE_SSD);
  const unsigned char drive = addDrive(TVK_DEVICE_HDD);
  log.clear();
  EXPECT_EQ(call("CreateDataCacheVolume", dataCacheArguments("Cached", ssd, {drive, 4})), 3U);
  EXPECT_EQ(out.getArgumentCount(), 0U);
  EXPECT_TRUE(log.has(LogCapture::message(
      4, "TvpIfCreateDataCacheVolume() - !!ERROR!! - Only one LD is required for DataCache volume")));
  EXPECT_FALSE(log.has(LogCapture::trace("Calling TvkAdapter::createDataCacheVolume()")));

  EXPECT_EQ(call("CreateDataCacheVolume", dataCacheArguments("Cached", ssd, {drive})), 0U);
  ASSERT_EQ(answered("RetStat"), 0U);
  const Strings both = pools();
  ASSERT_EQ(both.size(), 2U);
  for (const char* line : {"LD TierLevel: 1", "Internal Pool Flag: 16"}) {
    EXPECT_TRUE(log.has(LogCapture::message(4, std::string("TvpIfCreateDataCacheVolume() - ") + line)));
  }
  EXPECT_TRUE(
      log.has(LogCapture::message(4, "TvpIfCreateDataCacheVolume() - Internal Pool Name: " + both[1])));
  EXPECT_EQ(call("FlushVirtualVolume", identifier("VirtualVolumeId", volumeId("Cached"))), 0U);

  const unsigned int internal = idOf(both[1], &VirtualPool::getPoolId);
  EXPECT_EQ(
      call(
          "DeleteDataCacheVolume", arguments(
                                       makeProperty<unsigned int>("VirtualVolumeId", 4711),
                                       makeProperty<unsigned int>("VirtualPoolId", internal))),
      3U);
  EXPECT_EQ(answered("RetStat"), static_cast<unsigned int>(TVK_NO_SUCH_VOLUME));
  EXPECT_EQ(pools(), both);
  EXPECT_EQ(
      call(
          "DeleteDataCacheVolume", arguments(
                                       makeProperty<unsigned int>("VirtualVolumeId", volumeId("Cached")),
                                       makeProperty<unsigned int>("VirtualPoolId", internal))),
      0U);
  EXPECT_EQ(answered("RetStat"), 0U);
  EXPECT_TRUE(volumes().empty());
  EXPECT_EQ(pools(), Strings{"Fast"});
}

TEST_F(MethodRoutines, PoolsAndVolumesThatDoNotExistHaveNoMembers) {
  const struct {
    const char* method;
    const char* argument;
  } cases[] = {{"GetVirtualPoolMembers", "VirtualPoolId"}, {"GetVirtualVolumeMembers", "VirtualVolumeId"}};
  for (const auto& sample : cases) {
    SCOPED_TRACE(sample.method);
    const std::string routine = std::string("TvpIf") + sample.method;
    EXPECT_EQ(call(sample.method, identifier(sample.argument, 4711)), 0U);
    EXPECT_TRUE(members().empty());
    EXPECT_EQ(call(sample.method, {}), 3U);
    EXPECT_TRUE(log.has(LogCapture::message(4, routine + " Enter")));
    EXPECT_TRUE(log.has(LogCapture::message(4, routine + " exits with without calling TVP Func")));
    EXPECT_EQ(call(sample.method, identifier("Other", 1)), 3U);
    EXPECT_TRUE(
        log.has(LogCapture::message(4, routine + " : No " + sample.argument + " parameter passed in")));
    EXPECT_EQ(out.getArgumentCount(), 0U);
  }
}

}  // namespace
}  // namespace tvp::test
