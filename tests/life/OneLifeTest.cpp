// SPDX-License-Identifier: Apache-2.0
// What the provider writes into its log and what it answers stay as they are: whole lives are compared with
// recordings, log.txt and answers.txt for the first. See Recording.h for how to record a change that is
// meant.
#include "life/Requests.h"
#include "life/UnusualRequests.h"

#include <gtest/gtest.h>

namespace tvp::test {
namespace {

using host::Provider;
using host::Value;

constexpr std::uint8_t HARD_DISK = 1;
constexpr std::uint8_t SSD = 3;
constexpr std::uint8_t TIERED = 1;
constexpr std::uint8_t CACHED = 2;
constexpr std::uint32_t NO_SUCH = 4711;

class OneLife : public testing::Test {
protected:
  std::uint8_t addDrive(const char* type, const char* size) {
    return static_cast<std::uint8_t>(
        std::stoul(m_life.voltvkctl({"drive", "add", "--type", type, "--size", size})));
  }
  void addDrives() {
    for (const char* type : {"hdd", "hdd", "hdd", "hdd", "hdd"}) {
      m_disks.push_back(addDrive(type, "1GiB"));
    }
    m_ssds = {addDrive("ssd", "1GiB"), addDrive("ssd", "1GiB")};
  }
  /** Pools and volumes of every kind. */
  void configure() {
    invoke(m_life, createPool("disks", {m_disks[0]}, HARD_DISK), "a pool of a disk");
    invoke(m_life, createPool("flash", {m_ssds[0]}, SSD), "a pool of an SSD");
    invoke(m_life, createPool("spare", {m_disks[1], m_disks[2]}, HARD_DISK), "a pool of two disks");
    const auto pools = enumerate(m_life, "TVP_VirtualPool", "the first pools");
    m_diskPool = identifierOf(pools, "disks");
    m_flashPool = identifierOf(pools, "flash");
    m_sparePool = identifierOf(pools, "spare");
    invoke(m_life, createVolume("tiered", TIERED, {m_flashPool, m_diskPool}), "tiered, the SSD pool first");
    invoke(m_life, createVolume("cached", CACHED, {m_diskPool, m_flashPool}), "cached");
    invoke(m_life, createVolume("plain", TIERED, {m_diskPool}), "of one pool");
    invoke(m_life, createCachedDrive("drive", m_flashPool, m_disks[3]), "with an internal pool");
    const auto volumes = enumerate(m_life, "TVP_VirtualVolume", "the first volumes");
    m_tiered = identifierOf(volumes, "tiered");
    m_cached = identifierOf(volumes, "cached");
    m_plain = identifierOf(volumes, "plain");
    m_drive = identifierOf(volumes, "drive");
  }

  void subscribe();
  void unsubscribe();
  void changePools();
  void changeVolumes();
  void watchVolumes();
  void refusePools();
  void refuseVolumes();
  void refuseCachedDrives();
  void refuseIdentifiers();
  void refuseArguments();
  void refuseUsers();
  void failDeliveries();
  void readEverythingWhile(const std::string& fault);
  void failOperations();
  void deleteEverything();

  Life m_life;
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

const std::vector<std::string> STORAGE_CLASSES = {
    "TVP_TarvexProIdentity", "TVP_LogicalDevice", "TVP_VirtualPool", "TVP_VirtualVolume"};
const std::vector<std::string> FIXED_CLASSES = {"TVP_LogicalDevices",      "TVP_VirtualPools",
                                                "TVP_VirtualPoolMember",   "TVP_VirtualVolumes",
                                                "TVP_VirtualVolumeSource", "TVP_TierService"};

/** The methods whose only argument is the volume. */
const std::vector<const char*> METHODS_OF_A_VOLUME = {
    "DeleteVirtualVolume", "FlushVirtualVolume", "GetVirtualVolumeStats", "ResetVirtualVolumeStats",
    "GetVirtualVolumeMembers"};

void OneLife::subscribe() {
  const host::IndicationFilter filter = tieringFilter();
  m_life.step("authorizeFilter", [&](Provider& provider) { return provider.authorizeFilter(filter); });
  m_life.step("mustPoll", [&](Provider& provider) { return provider.mustPoll(filter); });
  m_life.step("activateFilter", [&](Provider& provider) { return provider.activateFilter(filter); });
  m_life.round("a round with a filter, before indications are enabled");
  m_life.step("enableIndications", [](Provider& provider) { return provider.enableIndications(); });
  m_life.step(
      "activateFilter once more", [&](Provider& provider) { return provider.activateFilter(filter, false); });
  m_life.step("enableIndications once more", [](Provider& provider) { return provider.enableIndications(); });
}

void OneLife::unsubscribe() {
  const host::IndicationFilter filter = tieringFilter();
  m_life.step(
      "deActivateFilter", [&](Provider& provider) { return provider.deActivateFilter(filter, false); });
  m_life.step("disableIndications", [](Provider& provider) { return provider.disableIndications(); });
  addDrive("hdd", "2GiB");
  m_life.round("a round with one subscription left");
  m_life.step(
      "deActivateFilter, the last", [&](Provider& provider) { return provider.deActivateFilter(filter); });
  m_life.step(
      "disableIndications, the last", [](Provider& provider) { return provider.disableIndications(); });
  addDrive("hdd", "3GiB");
  m_life.round("a round without a subscription");
  m_life.step(
      "disableIndications, one too many", [](Provider& provider) { return provider.disableIndications(); });
}

void OneLife::changePools() {
  invoke(m_life, createPool("later", {m_ssds[1]}, SSD), "while indications are enabled");
  const auto pools = enumerate(m_life, "TVP_VirtualPool", "with a later one");
  invoke(m_life, ofPool("DeleteVirtualPool", identifierOf(pools, "later")), "the later one");
  invoke(m_life, modifyPool(m_sparePool, "reserve", HARD_DISK), "name and description");
  invoke(m_life, modifyPool(m_sparePool, "reserve", 0).with("Description", Value::string("")), "level 0");
  invoke(m_life, ofPool("GetVirtualPoolMembers", m_sparePool), "of two drives");
  invoke(m_life, ofPool("GetVirtualPoolMembers", m_sparePool), "through the pool class", "TVP_VirtualPool");
  m_life.round("a round after changes of pools");
}

void OneLife::changeVolumes() {
  invoke(m_life, createVolume("later", TIERED, {m_diskPool}), "while indications are enabled");
  invoke(m_life, createCachedDrive("later drive", m_flashPool, m_disks[4]), "while indications are enabled");
  const auto volumes = enumerate(m_life, "TVP_VirtualVolume", "with later ones");
  for (const char* name : {"later", "later drive"}) {
    invoke(m_life, ofVolume("DeleteVirtualVolume", identifierOf(volumes, name)), name);
  }
  invoke(m_life, modifyVolume(m_cached, "quick", 1), "name, description and knob");
  invoke(m_life, modifyVolume(m_cached, "quick", 3), "the knob");
  for (const std::uint32_t volume : {m_tiered, m_plain, m_drive}) {
    invoke(m_life, ofVolume("GetVirtualVolumeMembers", volume), "of volume " + std::to_string(volume));
  }
  invoke(
      m_life, ofVolume("GetVirtualVolumeMembers", m_tiered), "through the volume class", "TVP_VirtualVolume");
  m_life.round("a round after changes of volumes");
}

void OneLife::watchVolumes() {
  m_life.voltvkctl({"io", "quick", "--reads", "300", "--writes", "200", "--hot", "80"});
  m_life.voltvkctl({"io", "tiered", "--reads", "100", "--sequential"});
  m_life.voltvkctl({"policy", "run"});
  for (const std::uint32_t volume : {m_cached, m_tiered}) {
    invoke(m_life, ofVolume("GetVirtualVolumeStats", volume), "of volume " + std::to_string(volume));
  }
  invoke(m_life, ofVolume("FlushVirtualVolume", m_cached), "cached");
  invoke(m_life, ofVolume("ResetVirtualVolumeStats", m_cached), "cached");
  invoke(m_life, ofVolume("GetVirtualVolumeStats", m_cached), "after the reset");
  m_life.round("a round after input and output");
  m_life.voltvkctl({"policy", "stop"});
  m_life.round("a round after the policy engine stopped");
  enumerate(m_life, "TVP_TarvexProIdentity", "without the policy engine");
  m_life.voltvkctl({"policy", "start"});
  m_life.round("a round after the policy engine started");
  m_life.round("a round without an event");
}

void OneLife::refusePools() {
  const MethodCall good = createPool("new", {m_ssds[1]}, SSD);
  invoke(m_life, good.with("Name", Value::string("")), "no name");
  invoke(m_life, good.with("Name", Value::string(std::string(40, 'n'))), "a long name");
  invoke(m_life, good.with("Description", Value::string(std::string(70, 'd'))), "a long description");
  invoke(m_life, good.with("Name", Value::string("disks")), "a name in use");
  invoke(m_life, good.with("NumberOfLogicalDevice", Value::uint8(2)), "another number of drives");
  invoke(m_life, good.with("CapacityInSectors", Value::uint64(0)), "no capacity");
  invoke(m_life, good.with("CapacityInSectors", Value::uint64(9000 * MIB)), "too much capacity");
  invoke(m_life, good.with("ChunkSize", Value::uint64(1)), "a chunk of a sector");
  invoke(m_life, good.with("TierLevel", Value::uint8(2)), "no such level");
  invoke(m_life, good.with("TierLevel", Value::uint8(HARD_DISK)), "the level of other drives");
  invoke(m_life, createPool("new", {}, SSD), "no drive");
  invoke(m_life, createPool("new", {200}, SSD), "no such drive");
  invoke(m_life, createPool("new", {m_ssds[0]}, SSD), "a drive in use");
  invoke(m_life, createPool("new", {m_ssds[1], m_ssds[1]}, SSD), "a drive twice");
  invoke(m_life, createPool("new", {1}, SSD), "a drive of the machine");
  invoke(m_life, createPool("new", std::vector<std::uint8_t>(70, m_ssds[1]), SSD), "too many drives");
  invoke(m_life, modifyPool(m_sparePool, "disks", HARD_DISK), "a name in use");
  invoke(m_life, modifyPool(m_sparePool, "reserve", SSD), "the level of other drives");
  invoke(m_life, ofPool("DeleteVirtualPool", m_diskPool), "a pool in use");
  m_life.round("a round after refusals of pools");
}

void OneLife::refuseVolumes() {
  const MethodCall good = createVolume("new", TIERED, {m_diskPool, m_flashPool});
  invoke(m_life, good.with("VolumeName", Value::string("")), "no name");
  invoke(m_life, good.with("VolumeName", Value::string("tiered")), "a name in use");
  invoke(m_life, good.with("Description", Value::string(std::string(70, 'd'))), "a long description");
  invoke(m_life, good.with("VolumeType", Value::uint8(9)), "no such type");
  invoke(m_life, good.with("VirtualPoolsCount", Value::uint8(1)), "another number of pools");
  invoke(m_life, good.with("KnobSetting", Value::uint32(9)), "no such knob");
  invoke(
      m_life, good.with("UsedSizeInSectors", Value::array(CMPI_uint64, {Value::uint64(0), Value::uint64(0)})),
      "no capacity");
  invoke(
      m_life, good.with("UsedSizeInSectors", Value::array(CMPI_uint64, {Value::uint64(9000 * MIB)})),
      "one capacity");
  invoke(m_life, createVolume("new", CACHED, {m_diskPool}), "cached by nothing");
  invoke(m_life, createVolume("new", TIERED, {}), "no pool");
  invoke(m_life, createVolume("new", TIERED, {NO_SUCH}), "no such pool");
  invoke(m_life, createVolume("new", TIERED, {m_diskPool, m_diskPool}), "a pool twice");
  invoke(m_life, createVolume("new", TIERED, {m_diskPool, m_sparePool}), "pools of one kind");
  invoke(m_life, modifyVolume(m_cached, "tiered", 1), "a name in use");
  invoke(m_life, modifyVolume(m_cached, "quick", 9), "no such knob");
  invoke(m_life, ofVolume("FlushVirtualVolume", m_plain), "not cached");
  m_life.round("a round after refusals of volumes");
}

void OneLife::refuseCachedDrives() {
  const MethodCall good = createCachedDrive("new", m_flashPool, m_disks[3]);
  const Value two = Value::array(CMPI_uint8, {Value::uint8(m_disks[3]), Value::uint8(m_ssds[1])});
  invoke(m_life, good, "a drive in use");
  invoke(m_life, good.with("LDDeviceNumber", two), "two drives");
  invoke(m_life, good.with("VolumeType", Value::uint8(TIERED)), "tiered");
  invoke(m_life, good.with("SSDPoolId", Value::uint32(NO_SUCH)), "no such pool");
  invoke(m_life, createCachedDrive("new", m_flashPool, m_ssds[1]), "an SSD");
  invoke(m_life, createCachedDrive("drive", m_flashPool, m_ssds[1]), "a name in use");
  m_life.round("a round after refusals of cached drives");
}

void OneLife::refuseIdentifiers() {
  for (const char* method : METHODS_OF_A_VOLUME) {
    invoke(m_life, ofVolume(method, NO_SUCH), "no such volume");
  }
  for (const char* method : {"DeleteVirtualPool", "GetVirtualPoolMembers"}) {
    invoke(m_life, ofPool(method, NO_SUCH), "no such pool");
  }
  invoke(m_life, modifyPool(NO_SUCH, "new", SSD), "no such pool");
  invoke(m_life, modifyVolume(NO_SUCH, "new", 1), "no such volume");
  m_life.round("a round after refusals of identifiers");
}

void OneLife::refuseArguments() {
  for (const char* method :
       {"CreateVirtualPool", "DeleteVirtualPool", "CreateVirtualVolume", "DeleteVirtualVolume",
        "ModifyVirtualPool", "ModifyVirtualVolume", "FlushVirtualVolume", "GetVirtualVolumeStats",
        "ResetVirtualVolumeStats", "GetVirtualPoolMembers", "GetVirtualVolumeMembers",
        "CreateDataCacheVolume", "DeleteDataCacheVolume", "getRoutineList", "NoSuchMethod", ""}) {
    invoke(m_life, {method, {}}, "no argument");
    MethodCall other{method, {}};
    invoke(m_life, other.with("Other", Value::uint32(1)), "another argument");
  }
  MethodCall misnamed = createPool("new", {m_ssds[1]}, SSD);
  misnamed.arguments.values.back().name = "Level";
  invoke(m_life, misnamed, "an argument of another name");
  invoke(
      m_life, createPool("new", {m_ssds[1]}, SSD).with("TierLevel", Value::string("SSD")),
      "an argument of another type");
  invoke(
      m_life, createPool("new", {m_ssds[1]}, SSD).with("Name", Value::null(CMPI_string)),
      "an argument without a value");
  invoke(
      m_life, ofPool("GetVirtualPoolMembers", m_diskPool), "a class of other methods", "TVP_VirtualVolume");
  invoke(m_life, ofPool("GetVirtualPoolMembers", m_diskPool), "a class without methods", "TVP_VirtualPools");
  invoke(m_life, {"GetVirtualPoolMembers", {}}, "no argument", "TVP_VirtualPool");
  invoke(m_life, {"GetVirtualVolumeMembers", {}}, "no argument", "TVP_VirtualVolume");
  invoke(m_life, ofPool("GetVirtualPoolMembers", m_diskPool), "an unknown class", "TVP_NoSuchClass");
}

void OneLife::refuseUsers() {
  host::CallOptions user;
  const MethodCall call = ofPool("GetVirtualPoolMembers", m_diskPool);
  const auto invokeAs = [&](const std::string& title) {
    m_life.step("invokeMethod " + title, [&](Provider& provider) {
      return provider.invokeMethod(classPath("TVP_TierService"), call.method, call.arguments, &user);
    });
    m_life.step("modifyInstance " + title, [&](Provider& provider) {
      return provider.modifyInstance(
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

void OneLife::failDeliveries() {
  m_life.objectManager().takesIndications = false;
  addDrive("hdd", "4GiB");
  m_life.round("a round whose indication is refused");
  m_life.objectManager().takesIndications = true;
  m_life.objectManager().attachesThreads = false;
  addDrive("hdd", "5GiB");
  m_life.round("a round whose thread cannot be attached");
  m_life.objectManager().attachesThreads = true;
  m_life.objectManager().preparesThreads = false;
  m_life.step("activateFilter without a context for the listener", [](Provider& provider) {
    return provider.activateFilter(tieringFilter());
  });
  addDrive("hdd", "6GiB");
  m_life.round("a round without a context for the listener");
  m_life.objectManager().preparesThreads = true;
  m_life.step("activateFilter with a context again", [](Provider& provider) {
    return provider.activateFilter(tieringFilter());
  });
  addDrive("hdd", "7GiB");
  m_life.round("a round whose indication is taken again");
  m_life.failEachFunction([&](const std::string& addition) {
    addDrive("hdd", "8GiB");
    m_life.round("a round with an indication" + addition);
  });
}

void OneLife::readEverythingWhile(const std::string& fault) {
  m_life.voltvkctl({"fault", "set", fault});
  for (const auto& classes : {STORAGE_CLASSES, FIXED_CLASSES}) {
    for (const std::string& className : classes) {
      enumerate(m_life, className, fault);
    }
  }
  invoke(m_life, createPool("new", {m_ssds[1]}, SSD), fault);
  invoke(m_life, createVolume("new", TIERED, {m_diskPool}), fault);
  invoke(m_life, createCachedDrive("new", m_flashPool, m_ssds[1]), fault);
  invoke(m_life, modifyPool(m_sparePool, "new", SSD), fault);
  invoke(m_life, modifyVolume(m_cached, "new", 1), fault);
  for (const char* method : METHODS_OF_A_VOLUME) {
    invoke(m_life, ofVolume(method, m_cached), fault);
  }
  for (const char* method : {"DeleteVirtualPool", "GetVirtualPoolMembers"}) {
    invoke(m_life, ofPool(method, m_sparePool), fault);
  }
  m_life.round("a round with " + fault);
  m_life.voltvkctl({"fault", "clear"});
  m_life.round("a round after " + fault);
  enumerate(m_life, "TVP_VirtualPool", "after " + fault);
}

void OneLife::failOperations() {
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
      m_life.voltvkctl({"fault", "set", kind, operation});
      invoke(m_life, call, std::string(kind).append(" ").append(operation));
    }
    for (const char* operation : {"getIdentity", "refreshConfiguration"}) {
      m_life.voltvkctl({"fault", "set", kind, operation});
      enumerate(m_life, "TVP_TarvexProIdentity", kind + " " + operation);
    }
    m_life.round("a round after operations that " + kind);
  }
  m_life.voltvkctl({"fault", "set", "fail", "getEvents", "--status", "77"});
  m_life.round("a round whose getEvents fails");
  m_life.round("a round after that");
}

void OneLife::deleteEverything() {
  for (const std::uint32_t volume : {m_tiered, m_cached, m_plain, m_drive}) {
    invoke(m_life, ofVolume("DeleteVirtualVolume", volume), "volume " + std::to_string(volume));
  }
  for (const std::uint32_t pool : {m_diskPool, m_flashPool, m_sparePool}) {
    invoke(m_life, ofPool("DeleteVirtualPool", pool), "pool " + std::to_string(pool));
  }
  m_life.voltvkctl({"drive", "remove", std::to_string(m_disks[0])});
  m_life.round("a round after everything was deleted");
  for (const char* className : {"TVP_VirtualPool", "TVP_VirtualVolume", "TVP_TarvexProIdentity"}) {
    enumerate(m_life, className, "after everything was deleted");
  }
}

TEST_F(OneLife, IsLoggedAndAnsweredAsRecorded) {
  addDrives();
  m_life.start();
  for (const std::string& className : STORAGE_CLASSES) {
    enumerate(m_life, className, "before there are pools");
  }
  m_life.round();
  configure();
  m_life.round("a round before a subscription");
  for (const auto& classes : {STORAGE_CLASSES, FIXED_CLASSES}) {
    for (const std::string& className : classes) {
      askEverything(m_life, className);
    }
  }
  for (const char* className : {"TVP_CIMIndication", "TVP_NoSuchClass", "tvp_VIRTUALpool", ""}) {
    askEverything(m_life, className);
  }
  askNamedAssociations(m_life, "TVP_VirtualPool");
  askNamedAssociations(m_life, "TVP_NoSuchClass");
  askWithoutArguments(m_life);
  askWithEveryType(m_life);
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
  askWhileCallsFail(m_life);
  readEverythingWhile("driver-absent");
  readEverythingWhile("adapter-absent");
  failOperations();
  deleteEverything();
  unsubscribe();
  m_life.step("clean up for inactivity", [](Provider& provider) { return provider.cleanup(false); });
  m_life.stop();
  m_life.step("clean up once more", [](Provider& provider) { return provider.cleanup(true); });
  enumerate(m_life, "TVP_VirtualPool", "after the stop");
  invoke(m_life, ofPool("GetVirtualPoolMembers", 1), "after the stop");
  m_life.startAgain();
  enumerate(m_life, "TVP_VirtualPool", "after a start that came too late");
  m_life.step("clean up after that", [](Provider& provider) { return provider.cleanup(true); });
  m_life.unload();
  m_life.expectAsRecorded("");
}

/** A life that begins without a driver, profiles and the texts of events, and whose listener ends early. */
TEST_F(OneLife, OfMisfortuneIsLoggedAndAnsweredAsRecorded) {
  m_life.objectManager().hasProfiles = false;
  m_life.removeCatalogue();
  m_life.voltvkctl({"fault", "set", "driver-absent"});
  m_life.start();
  enumerate(m_life, "TVP_LogicalDevice", "without a driver");
  m_life.round("a round without a driver");
  m_life.voltvkctl({"fault", "clear"});
  enumerate(m_life, "TVP_LogicalDevice", "with a driver");
  m_life.step("enableIndications", [](Provider& provider) { return provider.enableIndications(); });
  m_life.step("activateFilter", [](Provider& provider) { return provider.activateFilter(tieringFilter()); });
  addDrive("ssd", "1GiB");
  m_life.round("a round without texts of events");
  m_life.voltvkctl({"fault", "set", "throw", "getEvents"});
  m_life.lastRound();
  enumerate(m_life, "TVP_TarvexProIdentity", "without a listener");
  m_life.stop();
  m_life.unload();
  m_life.expectAsRecorded("misfortune-");
}

}  // namespace
}  // namespace tvp::test
