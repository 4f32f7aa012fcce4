// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"
#include "host/schema/MofReader.h"

#include <functional>
#include <random>

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

/** A method, and the arguments of its routine, which is called TvpIf and the method. */
struct RoutineCase {
  std::string method;
  Strings arguments;
};

/** The methods that the schema declares and the one routine that is not offered. */
const std::vector<RoutineCase>& routines() {
  static const std::vector<RoutineCase> cases = [] {
    std::vector<RoutineCase> found = {{"DeleteDataCacheVolume", {"VirtualVolumeId", "VirtualPoolId"}}};
    const auto schema = host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
    for (const host::SchemaMethod& method : schema->find("TVP_TierService")->methods) {
      if (method.parameter("Members") != nullptr) {
        continue;  // returns no status and does not count its arguments
      }
      found.push_back({method.name, {}});
      for (const host::SchemaParameter& parameter : method.parameters) {
        if (parameter.in) {
          found.back().arguments.push_back(parameter.name);
        }
      }
    }
    return found;
  }();
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
    const std::string name = "TvpIf" + routine.method;
    Strings tooMany = routine.arguments;
    tooMany.emplace_back("Extra");
    for (const Strings& wrong : {Strings(), tooMany}) {
      log.clear();
      EXPECT_EQ(call(routine.method.c_str(), named(wrong)), 3U);
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
      EXPECT_EQ(call(routine.method.c_str(), named(renamed)), 3U);
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
    EXPECT_EQ(call(routine.method.c_str(), named(routine.arguments)), 3U);
    if (routine.method != "CreateDataCacheVolume") {
      const char* status = routine.method == "ResetVirtualVolumeStats" ? "ReturnCode" : "RetStat";
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
      const unsigned int result = call(routine.method.c_str(), in);
      EXPECT_TRUE(result == 0 || result == 3) << routine.method;
    }
  }
}

// The embedded library is always up to date; one that needs refreshing would offer a name that is taken.
TEST_F(MethodRoutines, TheConfigurationIsRefreshedBeforeAnInternalPoolIsNamed) {
  CIMMethodParam in = named(
      {"VolumeName", "Description", "VolumeType", "SSDPoolId", "reqCapacityFromSSDPool",
       "LDCapacityInSectors", "ChunkSize", "KnobSetting"});
  in.addArgument(makeProperty("LDDeviceNumber", std::vector<unsigned char>{0}));
  voltvk::Faults().throwFrom("refreshConfiguration");
  log.clear();
  call("CreateDataCacheVolume", in);
  const Strings lines = log.lines();
  const auto refreshed = std::find(
      lines.begin(), lines.end(),
      LogCapture::trace("Exception caught in Tvk Lib method: TvkLib::refreshConfiguration() "));
  ASSERT_LE(2, lines.end() - refreshed);
  EXPECT_EQ(
      refreshed[1],
      LogCapture::message(4, "TvpIfCreateDataCacheVolume() - Internal Pool Name: InternalPool0"));
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
