// SPDX-License-Identifier: Apache-2.0
// What the provider writes into its log and what it answers stay as they are: whole lives are compared with
// recordings, log.txt and answers.txt for the first. See Life::expectAsRecorded for how to record a change
// that is meant.
#include "host/schema/MofReader.h"
#include "life/Requests.h"
#include "support/Lines.h"

#include <gtest/gtest.h>

namespace tvp::test {
namespace {

using host::Value;

constexpr std::uint8_t HARD_DISK = 1;
constexpr std::uint8_t SSD = 3;
constexpr std::uint8_t TIERED = 1;
constexpr std::uint8_t CACHED = 2;
constexpr std::uint32_t NO_SUCH = 4711;

const std::vector<std::string> STORAGE_CLASSES = {
    "TVP_TarvexProIdentity", "TVP_LogicalDevice", "TVP_VirtualPool", "TVP_VirtualVolume"};
const std::vector<std::string> FIXED_CLASSES = {"TVP_LogicalDevices",      "TVP_VirtualPools",
                                                "TVP_VirtualPoolMember",   "TVP_VirtualVolumes",
                                                "TVP_VirtualVolumeSource", "TVP_TierService"};

class OneLife : public testing::Test, public Life {
protected:
  std::uint8_t addDrive(const char* type, const char* size) {
    return static_cast<std::uint8_t>(std::stoul(voltvkctl({"drive", "add", "--type", type, "--size", size})));
  }
  void addDrives() {
    for (const char* type : {"hdd", "hdd", "hdd", "hdd", "hdd"}) {
      m_disks.push_back(addDrive(type, "1GiB"));
    }
    m_ssds = {addDrive("ssd", "1GiB"), addDrive("ssd", "1GiB")};
  }
  /** Pools and volumes of every kind. */
  void configure() {
    invoke(createPool("disks", {m_disks[0]}, HARD_DISK), "a pool of a disk");
    invoke(createPool("flash", {m_ssds[0]}, SSD), "a pool of an SSD");
    invoke(createPool("spare", {m_disks[1], m_disks[2]}, HARD_DISK), "a pool of two disks");
    const auto pools = enumerate("TVP_VirtualPool", "the first pools");
    m_diskPool = identifierOf(pools, "disks");
    m_flashPool = identifierOf(pools, "flash");
    m_sparePool = identifierOf(pools, "spare");
    invoke(createVolume("tiered", TIERED, {m_flashPool, m_diskPool}), "tiered, the SSD pool first");
    invoke(createVolume("cached", CACHED, {m_diskPool, m_flashPool}), "cached");
    invoke(createVolume("plain", TIERED, {m_diskPool}), "of one pool");
    invoke(createCachedDrive("drive", m_flashPool, m_disks[3]), "with an internal pool");
    const auto volumes = enumerate("TVP_VirtualVolume", "the first volumes");
    m_tiered = identifierOf(volumes, "tiered");
    m_cached = identifierOf(volumes, "cached");
    m_plain = identifierOf(volumes, "plain");
    m_drive = identifierOf(volumes, "drive");
  }

  void subscribe() {
    const host::IndicationFilter filter = tieringFilter();
    step("authorizeFilter", [&] { return provider().authorizeFilter(filter); });
    step("mustPoll", [&] { return provider().mustPoll(filter); });
    step("activateFilter", [&] { return provider().activateFilter(filter); });
    round("a round with a filter, before indications are enabled");
    step("enableIndications", [&] { return provider().enableIndications(); });
    step("activateFilter once more", [&] { return provider().activateFilter(filter, false); });
    step("enableIndications once more", [&] { return provider().enableIndications(); });
  }

  void unsubscribe() {
    const host::IndicationFilter filter = tieringFilter();
    step("deActivateFilter", [&] { return provider().deActivateFilter(filter, false); });
    step("disableIndications", [&] { return provider().disableIndications(); });
    addDrive("hdd", "2GiB");
    round("a round with one subscription left");
    step("deActivateFilter, the last", [&] { return provider().deActivateFilter(filter); });
    step("disableIndications, the last", [&] { return provider().disableIndications(); });
    addDrive("hdd", "3GiB");
    round("a round without a subscription");
    step("disableIndications, one too many", [&] { return provider().disableIndications(); });
  }

  void changePools() {
    invoke(createPool("later", {m_ssds[1]}, SSD), "while indications are enabled");
    const auto pools = enumerate("TVP_VirtualPool", "with a later one");
    invoke(ofPool("DeleteVirtualPool", identifierOf(pools, "later")), "the later one");
    invoke(modifyPool(m_sparePool, "reserve", HARD_DISK), "name and description");
    invoke(modifyPool(m_sparePool, "reserve", 0).with("Description", Value::string("")), "level 0");
    invoke(ofPool("GetVirtualPoolMembers", m_sparePool), "of two drives");
    invoke(ofPool("GetVirtualPoolMembers", m_sparePool), "through the pool class", "TVP_VirtualPool");
    round("a round after changes of pools");
  }

  void changeVolumes() {
    invoke(createVolume("later", TIERED, {m_diskPool}), "while indications are enabled");
    invoke(createCachedDrive("later drive", m_flashPool, m_disks[4]), "while indications are enabled");
    const auto volumes = enumerate("TVP_VirtualVolume", "with later ones");
    for (const char* name : {"later", "later drive"}) {
      invoke(ofVolume("DeleteVirtualVolume", identifierOf(volumes, name)), name);
    }
    invoke(modifyVolume(m_cached, "quick", 1), "name, description and knob");
    invoke(modifyVolume(m_cached, "quick", 3), "the knob");
    for (const std::uint32_t volume : {m_tiered, m_plain, m_drive}) {
      invoke(ofVolume("GetVirtualVolumeMembers", volume), "of volume " + std::to_string(volume));
    }
    invoke(ofVolume("GetVirtualVolumeMembers", m_tiered), "through the volume class", "TVP_VirtualVolume");
    round("a round after changes of volumes");
  }

  void watchVolumes() {
    voltvkctl({"io", "quick", "--reads", "300", "--writes", "200", "--hot", "80"});
    voltvkctl({"io", "tiered", "--reads", "100", "--sequential"});
    voltvkctl({"policy", "run"});
    for (const std::uint32_t volume : {m_cached, m_tiered}) {
      invoke(ofVolume("GetVirtualVolumeStats", volume), "of volume " + std::to_string(volume));
    }
    invoke(ofVolume("FlushVirtualVolume", m_cached), "cached");
    invoke(ofVolume("ResetVirtualVolumeStats", m_cached), "cached");
    invoke(ofVolume("GetVirtualVolumeStats", m_cached), "after the reset");
    round("a round after input and output");
    voltvkctl({"policy", "stop"});
    round("a round after the policy engine stopped");
    enumerate("TVP_TarvexProIdentity", "without the policy engine");
    voltvkctl({"policy", "start"});
    round("a round after the policy engine started");
    round("a round without an event");
  }

  void refusePools() {
    const MethodCall good = createPool("new", {m_ssds[1]}, SSD);
    invoke(good.with("Name", Value::string("")), "no name");
    invoke(good.with("Name", Value::string(std::string(40, 'n'))), "a long name");
    invoke(good.with("Description", Value::string(std::string(70, 'd'))), "a long description");
    invoke(good.with("Name", Value::string("disks")), "a name in use");
    invoke(good.with("NumberOfLogicalDevice", Value::uint8(2)), "another number of drives");
    invoke(good.with("CapacityInSectors", Value::uint64(0)), "no capacity");
    invoke(good.with("CapacityInSectors", Value::uint64(9000 * MIB)), "too much capacity");
    invoke(good.with("ChunkSize", Value::uint64(1)), "a chunk of a sector");
    invoke(good.with("TierLevel", Value::uint8(2)), "no such level");
    invoke(good.with("TierLevel", Value::uint8(HARD_DISK)), "the level of other drives");
    invoke(createPool("new", {}, SSD), "no drive");
    invoke(createPool("new", {200}, SSD), "no such drive");
    invoke(createPool("new", {m_ssds[0]}, SSD), "a drive in use");
    invoke(createPool("new", {m_ssds[1], m_ssds[1]}, SSD), "a drive twice");
    invoke(createPool("new", {1}, SSD), "a drive of the machine");
    invoke(createPool("new", std::vector<std::uint8_t>(70, m_ssds[1]), SSD), "too many drives");
    invoke(modifyPool(m_sparePool, "disks", HARD_DISK), "a name in use");
    invoke(modifyPool(m_sparePool, "reserve", SSD), "the level of other drives");
    invoke(ofPool("DeleteVirtualPool", m_diskPool), "a pool in use");
    round("a round after refusals of pools");
  }

  void refuseVolumes() {
    const MethodCall good = createVolume("new", TIERED, {m_diskPool, m_flashPool});
    invoke(good.with("VolumeName", Value::string("")), "no name");
    invoke(good.with("VolumeName", Value::string("tiered")), "a name in use");
    invoke(good.with("Description", Value::string(std::string(70, 'd'))), "a long description");
    invoke(good.with("VolumeType", Value::uint8(9)), "no such type");
    invoke(good.with("VirtualPoolsCount", Value::uint8(1)), "another number of pools");
    invoke(good.with("KnobSetting", Value::uint32(9)), "no such knob");
    invoke(
        good.with("UsedSizeInSectors", Value::array(CMPI_uint64, {Value::uint64(0), Value::uint64(0)})),
        "no capacity");
    invoke(
        good.with("UsedSizeInSectors", Value::array(CMPI_uint64, {Value::uint64(9000 * MIB)})),
        "one capacity");
    invoke(createVolume("new", CACHED, {m_diskPool}), "cached by nothing");
    invoke(createVolume("new", TIERED, {}), "no pool");
    invoke(createVolume("new", TIERED, {NO_SUCH}), "no such pool");
    invoke(createVolume("new", TIERED, {m_diskPool, m_diskPool}), "a pool twice");
    invoke(createVolume("new", TIERED, {m_diskPool, m_sparePool}), "pools of one kind");
    invoke(modifyVolume(m_cached, "tiered", 1), "a name in use");
    invoke(modifyVolume(m_cached, "quick", 9), "no such knob");
    invoke(ofVolume("FlushVirtualVolume", m_plain), "not cached");
    round("a round after refusals of volumes");
  }

  void refuseCachedDrives() {
    const MethodCall good = createCachedDrive("new", m_flashPool, m_disks[3]);
    const Value two = Value::array(CMPI_uint8, {Value::uint8(m_disks[3]), Value::uint8(m_ssds[1])});
    invoke(good, "a drive in use");
    invoke(good.with("LDDeviceNumber", two), "two drives");
    invoke(good.with("VolumeType", Value::uint8(TIERED)), "tiered");
    invoke(good.with("SSDPoolId", Value::uint32(NO_SUCH)), "no such pool");
    invoke(createCachedDrive("new", m_flashPool, m_ssds[1]), "an SSD");
    invoke(createCachedDrive("drive", m_flashPool, m_ssds[1]), "a name in use");
    round("a round after refusals of cached drives");
  }

  void refuseIdentifiers() {
    for (const char* method :
         {"DeleteVirtualVolume", "FlushVirtualVolume", "GetVirtualVolumeStats", "ResetVirtualVolumeStats",
          "GetVirtualVolumeMembers"}) {
      invoke(ofVolume(method, NO_SUCH), "no such volume");
    }
    for (const char* method : {"DeleteVirtualPool", "GetVirtualPoolMembers"}) {
      invoke(ofPool(method, NO_SUCH), "no such pool");
    }
    invoke(modifyPool(NO_SUCH, "new", SSD), "no such pool");
    invoke(modifyVolume(NO_SUCH, "new", 1), "no such volume");
    round("a round after refusals of identifiers");
  }

  void refuseArguments() {
    for (const char* method :
         {"CreateVirtualPool", "DeleteVirtualPool", "CreateVirtualVolume", "DeleteVirtualVolume",
          "ModifyVirtualPool", "ModifyVirtualVolume", "FlushVirtualVolume", "GetVirtualVolumeStats",
          "ResetVirtualVolumeStats", "GetVirtualPoolMembers", "GetVirtualVolumeMembers",
          "CreateDataCacheVolume", "DeleteDataCacheVolume", "getRoutineList", "NoSuchMethod", ""}) {
      invoke({method, {}}, "no argument");
      MethodCall other{method, {}};
      invoke(other.with("Other", Value::uint32(1)), "another argument");
    }
    MethodCall misnamed = createPool("new", {m_ssds[1]}, SSD);
    misnamed.arguments.values.back().name = "Level";
    invoke(misnamed, "an argument of another name");
    invoke(
        createPool("new", {m_ssds[1]}, SSD).with("TierLevel", Value::string("SSD")),
        "an argument of another type");
    invoke(
        createPool("new", {m_ssds[1]}, SSD).with("Name", Value::null(CMPI_string)),
        "an argument without a value");
    invoke(ofPool("GetVirtualPoolMembers", m_diskPool), "a class of other methods", "TVP_VirtualVolume");
    invoke(ofPool("GetVirtualPoolMembers", m_diskPool), "a class without methods", "TVP_VirtualPools");
    invoke({"GetVirtualPoolMembers", {}}, "no argument", "TVP_VirtualPool");
    invoke({"GetVirtualVolumeMembers", {}}, "no argument", "TVP_VirtualVolume");
    invoke(ofPool("GetVirtualPoolMembers", m_diskPool), "an unknown class", "TVP_NoSuchClass");
  }

  void refuseUsers() {
    host::CallOptions user;
    const MethodCall call = ofPool("GetVirtualPoolMembers", m_diskPool);
    const auto invokeAs = [&](const std::string& title) {
      step("invokeMethod " + title, [&] {
        return provider().invokeMethod(classPath("TVP_TierService"), call.method, call.arguments, &user);
      });
      step("modifyInstance " + title, [&] {
        return provider().modifyInstance(
            classPath("TVP_TierService"), {classPath("TVP_TierService"), {}}, {}, &user);
      });
    };
    for (const char* name : {"nobody", "a user that nobody knows", ""}) {
      user.principal = name;
      invokeAs("as \"" + std::string(name) + "\"");
    }
    user.principal.reset();
    invokeAs("as a user without a name");
    user.withPrincipal = false;
    invokeAs("without a user");
  }

  void failDeliveries() {
    objectManager().takesIndications = false;
    addDrive("hdd", "4GiB");
    round("a round whose indication is refused");
    objectManager().takesIndications = true;
    objectManager().attachesThreads = false;
    addDrive("hdd", "5GiB");
    round("a round whose thread cannot be attached");
    objectManager().attachesThreads = true;
    objectManager().preparesThreads = false;
    step("activateFilter without a context for the listener", [&] {
      return provider().activateFilter(tieringFilter());
    });
    addDrive("hdd", "6GiB");
    round("a round without a context for the listener");
    objectManager().preparesThreads = true;
    step("activateFilter with a context again", [&] { return provider().activateFilter(tieringFilter()); });
    addDrive("hdd", "7GiB");
    round("a round whose indication is taken again");
    failEachFunction([&](const std::string& addition) {
      addDrive("hdd", "8GiB");
      round("a round with an indication" + addition);
    });
  }

  void readEverythingWhile(const std::string& fault) {
    voltvkctl({"fault", "set", fault});
    for (const auto& classes : {STORAGE_CLASSES, FIXED_CLASSES}) {
      for (const std::string& className : classes) {
        enumerate(className, fault);
      }
    }
    invoke(createPool("new", {m_ssds[1]}, SSD), fault);
    invoke(createVolume("new", TIERED, {m_diskPool}), fault);
    invoke(createCachedDrive("new", m_flashPool, m_ssds[1]), fault);
    invoke(modifyPool(m_sparePool, "new", SSD), fault);
    invoke(modifyVolume(m_cached, "new", 1), fault);
    for (const char* method :
         {"DeleteVirtualVolume", "FlushVirtualVolume", "GetVirtualVolumeStats", "ResetVirtualVolumeStats",
          "GetVirtualVolumeMembers"}) {
      invoke(ofVolume(method, m_cached), fault);
    }
    for (const char* method : {"DeleteVirtualPool", "GetVirtualPoolMembers"}) {
      invoke(ofPool(method, m_sparePool), fault);
    }
    round("a round with " + fault);
    voltvkctl({"fault", "clear"});
    round("a round after " + fault);
    enumerate("TVP_VirtualPool", "after " + fault);
  }

  void failOperations() {
    const std::vector<std::pair<std::string, MethodCall>> calls = {
        {"createVirtualPool", createPool("new", {m_ssds[1]}, SSD)},
        {"createVirtualVolume", createVolume("new", TIERED, {m_diskPool})},
        {"createCachedLD", createCachedDrive("new", m_flashPool, m_disks[3])},
        {"modifyVirtualPool", modifyPool(m_sparePool, "other", HARD_DISK)},
        {"modifyVirtualVolume", modifyVolume(m_cached, "other", 1)},
        {"deleteVirtualPool", ofPool("DeleteVirtualPool", m_sparePool)},
        {"deleteVirtualVolume", ofVolume("DeleteVirtualVolume", m_plain)},
        {"flushVirtualVolume", ofVolume("FlushVirtualVolume", m_cached)},
        {"getVirtualVolumeStats", ofVolume("GetVirtualVolumeStats", m_cached)},
        {"resetVirtualVolumeStats", ofVolume("ResetVirtualVolumeStats", m_cached)},
        {"refreshConfiguration", ofPool("GetVirtualPoolMembers", m_diskPool)},
    };
    for (const std::string kind : {"fail", "throw"}) {
      for (const auto& [operation, call] : calls) {
        voltvkctl({"fault", "set", kind, operation});
        invoke(call, std::string(kind).append(" ").append(operation));
      }
      for (const char* operation : {"getIdentity", "refreshConfiguration"}) {
        voltvkctl({"fault", "set", kind, operation});
        enumerate("TVP_TarvexProIdentity", kind + " " + operation);
      }
      round("a round after operations that " + kind);
    }
    voltvkctl({"fault", "set", "fail", "getEvents", "--status", "77"});
    round("a round whose getEvents fails");
    round("a round after that");
  }

  void deleteEverything() {
    for (const std::uint32_t volume : {m_tiered, m_cached, m_plain, m_drive}) {
      invoke(ofVolume("DeleteVirtualVolume", volume), "volume " + std::to_string(volume));
    }
    for (const std::uint32_t pool : {m_diskPool, m_flashPool, m_sparePool}) {
      invoke(ofPool("DeleteVirtualPool", pool), "pool " + std::to_string(pool));
    }
    voltvkctl({"drive", "remove", std::to_string(m_disks[0])});
    round("a round after everything was deleted");
    for (const char* className : {"TVP_VirtualPool", "TVP_VirtualVolume", "TVP_TarvexProIdentity"}) {
      enumerate(className, "after everything was deleted");
    }
  }

  std::vector<std::uint8_t> m_disks;
  std::vector<std::uint8_t> m_ssds;
  std::uint32_t m_diskPool = 0;
  std::uint32_t m_flashPool = 0;
  std::uint32_t m_sparePool = 0;
  std::uint32_t m_tiered = 0;
  std::uint32_t m_cached = 0;
  std::uint32_t m_plain = 0;
  std::uint32_t m_drive = 0;
};

TEST_F(OneLife, IsLoggedAndAnsweredAsRecorded) {
  addDrives();
  start();
  for (const std::string& className : STORAGE_CLASSES) {
    enumerate(className, "before there are pools");
  }
  round();
  configure();
  round("a round before a subscription");
  for (const auto& classes : {STORAGE_CLASSES, FIXED_CLASSES}) {
    for (const std::string& className : classes) {
      askEverything(*this, className);
    }
  }
  for (const char* className : {"TVP_CIMIndication", "TVP_NoSuchClass", "tvp_VIRTUALpool", ""}) {
    askEverything(*this, className);
  }
  askNamedAssociations(*this, "TVP_VirtualPool");
  askNamedAssociations(*this, "TVP_NoSuchClass");
  askWithoutArguments(*this);
  askWithEveryType(*this);
  subscribe();
  changePools();
  changeVolumes();
  watchVolumes();
  refusePools();
  refuseVolumes();
  refuseCachedDrives();
  refuseIdentifiers();
  refuseArguments();
  refuseUsers();
  failDeliveries();
  askWhileCallsFail(*this);
  readEverythingWhile("driver-absent");
  readEverythingWhile("adapter-absent");
  failOperations();
  deleteEverything();
  unsubscribe();
  step("clean up for inactivity", [&] { return provider().cleanup(false); });
  stop();
  step("clean up once more", [&] { return provider().cleanup(true); });
  enumerate("TVP_VirtualPool", "after the stop");
  invoke(ofPool("GetVirtualPoolMembers", 1), "after the stop");
  startAgain();
  enumerate("TVP_VirtualPool", "after a start that came too late");
  step("clean up after that", [&] { return provider().cleanup(true); });
  unload();
  expectAsRecorded("");
}

/** A life that begins without a driver, profiles and the texts of events, and whose listener ends early. */
TEST_F(OneLife, OfMisfortuneIsLoggedAndAnsweredAsRecorded) {
  objectManager().hasProfiles = false;
  removeCatalogue();
  voltvkctl({"fault", "set", "driver-absent"});
  start();
  enumerate("TVP_LogicalDevice", "without a driver");
  round("a round without a driver");
  voltvkctl({"fault", "clear"});
  enumerate("TVP_LogicalDevice", "with a driver");
  step("enableIndications", [&] { return provider().enableIndications(); });
  step("activateFilter", [&] { return provider().activateFilter(tieringFilter()); });
  addDrive("ssd", "1GiB");
  round("a round without texts of events");
  voltvkctl({"fault", "set", "throw", "getEvents"});
  lastRound();
  enumerate("TVP_TarvexProIdentity", "without a listener");
  stop();
  unload();
  expectAsRecorded("misfortune-");
}

/** Everything that the product has is part of the recorded life; otherwise a change of it would go unnoticed.
 */
TEST(RecordedLife, HasEveryClassMethodAndOperation) {
  const std::string answers = readFile(TVP_SOURCE_DIR "/tests/life/answers.txt");
  const auto expectStep = [&answers](const std::string& title) {
    EXPECT_NE(answers.find("=== " + title), std::string::npos)
        << "OneLifeTest.cpp has no step '" << title << "': add it, then record the life again";
  };
  const auto schema = host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  for (const host::SchemaClass* schemaClass : schema->classes()) {
    expectStep("enumerateInstances of " + schemaClass->name + ":");
    for (const host::SchemaMethod& method : schemaClass->methods) {
      expectStep(schemaClass->name + "." + method.name + ":");
    }
  }
#define TVK_OPERATION(name) expectStep("voltvkctl fault set fail " #name);
#include "voltvk/engine/contract/Operations.def"
}

}  // namespace
}  // namespace tvp::test
