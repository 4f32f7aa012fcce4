// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"

#include <functional>
#include <random>

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

/** A method, and the arguments of its routine, which is called TvpIf and the method. */
struct RoutineCase {
  const char* method;
  Strings arguments;
};

const std::vector<RoutineCase>& routines() {
  static const std::vector<RoutineCase> cases = {
      {"CreateVirtualPool",
       {"Name", "Description", "NumberOfLogicalDevice", "LDDeviceNumbers", "CapacityInSectors", "ChunkSize",
        "TierLevel"}},
      {"DeleteVirtualPool", {"VirtualPoolId"}},
      {"ModifyVirtualPool", {"VirtualPoolId", "Name", "TierLevel", "Description"}},
      {"CreateVirtualVolume",
       {"VolumeName", "Description", "VolumeType", "VirtualPoolsCount", "ListOfVirtualPoolIds",
        "UsedSizeInSectors", "KnobSetting"}},
      {"DeleteVirtualVolume", {"VirtualVolumeId"}},
      {"ModifyVirtualVolume", {"VirtualVolumeId", "VolumeName", "Description", "KnobSetting"}},
      {"FlushVirtualVolume", {"VirtualVolumeId"}},
      {"GetVirtualVolumeStats", {"VirtualVolumeId"}},
      {"ResetVirtualVolumeStats", {"VirtualVolumeId"}},
      {"CreateDataCacheVolume",
       {"VolumeName", "Description", "VolumeType", "SSDPoolId", "reqCapacityFromSSDPool", "LDDeviceNumber",
        "LDCapacityInSectors", "ChunkSize", "KnobSetting"}},
      {"DeleteDataCacheVolume", {"VirtualVolumeId", "VirtualPoolId"}},
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

using MethodRoutines = StorageTest;

TEST_F(MethodRoutines, ArgumentsAreCountedThenLookedUpInOrder) {
  for (const RoutineCase& routine : routines()) {
    SCOPED_TRACE(routine.method);
    const std::string name = std::string("TvpIf") + routine.method;
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

// TVP_TierService does not offer this routine.
TEST_F(MethodRoutines, DeletingADataCacheVolumeDeletesItsInternalPool) {
  VirtualPoolSpec cache;
  cache.poolId = makePool("Fast", TVK_DEVICE_SSD);
  cache.capacityInSectors = GIB;
  VirtualPoolSpec internal = poolSpec("Internal", {addDrive(TVK_DEVICE_HDD)}, 4 * GIB);
  VirtualVolumeSpec volume = volumeSpec("Cached", TVK_VOLUME_CACHED, {});
  ASSERT_EQ(TvkAdapter().createCachedLD(cache, internal, volume).getReturn(), 0U);
  const struct {
    unsigned int volume;
    unsigned int result;
    unsigned int status;
    Strings pools;
  } cases[] = {{4711, 3, TVK_NO_SUCH_VOLUME, {"Fast", "Internal"}}, {volume.volumeId, 0, 0, {"Fast"}}};
  for (const auto& sample : cases) {
    EXPECT_EQ(
        call(
            "DeleteDataCacheVolume", arguments(
                                         makeProperty<unsigned int>("VirtualVolumeId", sample.volume),
                                         makeProperty<unsigned int>("VirtualPoolId", internal.poolId))),
        sample.result);
    EXPECT_EQ(answered("RetStat"), sample.status);
    EXPECT_TRUE(log.has(LogCapture::message(
        4, "Entering TarvexProVirtualVolume::DeleteDataCacheVolume :- VirtualVolumeId : " +
               std::to_string(sample.volume) + ".\t\tVirtualPoolID = " + std::to_string(internal.poolId))));
    EXPECT_EQ(pools(), sample.pools);
  }
  EXPECT_TRUE(volumes().empty());
}

}  // namespace
}  // namespace tvp::test
