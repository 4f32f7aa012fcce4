// SPDX-License-Identifier: Apache-2.0
// The classes that show and change the state of the storage library, with the real library.
#include "ProviderTest.h"
#include "Shown.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "host/schema/MofReader.h"
#include "voltvk/LogicalDevice.h"
#include "voltvk/Specs.h"
#include "voltvk/VirtualPool.h"
#include "voltvk/engine/contract/Faults.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

using namespace tvp::cim::fwf;
using testing::ElementsAre;
using testing::IsEmpty;
using tvp::test::CHUNK;
using tvp::test::GIB;
using tvp::test::LogCapture;
using tvp::test::shown;

namespace {

class StorageClasses : public tvp::test::ProviderTest {
protected:
  /** @return the numbers of the drives, in the order of their kinds */
  std::vector<unsigned char> addDrives(const std::vector<TvkDeviceType>& kinds) {
    std::vector<unsigned char> numbers;
    for (const TvkDeviceType kind : kinds) {
      numbers.push_back(tvp::test::Storage::addDrive(kind, 100 * GIB));
    }
    return numbers;
  }

  unsigned int createPool(const std::string& name, unsigned char drive, TvkTierLevel level) {
    CIMMethodParam in;
    in.addArgument(makeProperty("Name", name));
    in.addArgument(makeProperty("Description", std::string("made by a test")));
    in.addArgument(makeProperty<unsigned char>("NumberOfLogicalDevice", 1));
    in.addArgument(makeProperty("LDDeviceNumbers", std::vector<unsigned char>{drive}));
    in.addArgument(makeProperty<unsigned long long>("CapacityInSectors", 50 * GIB));
    in.addArgument(makeProperty<unsigned long long>("ChunkSize", CHUNK));
    in.addArgument(makeProperty<unsigned char>("TierLevel", level));
    return invoke("TVP_TierService", "CreateVirtualPool", in);
  }

  unsigned int createVolume(const std::string& name, const std::vector<unsigned int>& pools) {
    CIMMethodParam in;
    in.addArgument(makeProperty("VolumeName", name));
    in.addArgument(makeProperty("Description", std::string()));
    in.addArgument(makeProperty<unsigned char>("VolumeType", 1));
    in.addArgument(makeProperty("VirtualPoolsCount", static_cast<unsigned char>(pools.size())));
    in.addArgument(makeProperty("ListOfVirtualPoolIds", pools));
    in.addArgument(makeProperty("UsedSizeInSectors", std::vector<unsigned long long>(pools.size(), 5 * GIB)));
    in.addArgument(makeProperty("KnobSetting", 2U));
    return invoke("TVP_TierService", "CreateVirtualVolume", in);
  }

  unsigned int createCachedVolume(const std::string& name, unsigned char drive, unsigned int ssdPool) {
    CIMMethodParam in;
    in.addArgument(makeProperty("VolumeName", name));
    in.addArgument(makeProperty("Description", std::string()));
    in.addArgument(makeProperty<unsigned char>("VolumeType", 2));
    in.addArgument(makeProperty("SSDPoolId", ssdPool));
    in.addArgument(makeProperty<unsigned long long>("reqCapacityFromSSDPool", 5 * GIB));
    in.addArgument(makeProperty("LDDeviceNumber", std::vector<unsigned char>{drive}));
    in.addArgument(makeProperty<unsigned long long>("LDCapacityInSectors", 50 * GIB));
    in.addArgument(makeProperty<unsigned long long>("ChunkSize", CHUNK));
    in.addArgument(makeProperty("KnobSetting", 2U));
    return invoke("TVP_TierService", "CreateDataCacheVolume", in);
  }

  static CIMMethodParam identifier(const char* name, unsigned int id) {
    CIMMethodParam in;
    in.addArgument(makeProperty(name, id));
    return in;
  }
};

/** The value that an object manager ends with when it applies properties in order: the last of the name. */
std::string lastValue(const CIMInstance& instance, const std::string& name) {
  std::string value;
  for (const CIMProperty& property : instance.properties()) {
    if (property.name() == name) {
      value = shown(property);
    }
  }
  return value;
}

unsigned int lastId(const CIMInstance& instance, const std::string& name) {
  unsigned int id = TVK_NO_ID;
  for (const CIMProperty& property : instance.properties()) {
    if (property.name() == name) {
      id = property.uint32Slot().m_values.at(0);
    }
  }
  return id;
}

const char* const LIBRARY_CLASSES[] = {
    "TVP_TarvexProIdentity", "TVP_LogicalDevice", "TVP_VirtualPool", "TVP_VirtualVolume"};

}  // namespace

TEST_F(StorageClasses, AreEmptyWithoutADriver) {
  addDrives({TVK_DEVICE_HDD});
  voltvk::Faults().driverAbsent();
  for (const std::string name : LIBRARY_CLASSES) {
    const LogCapture log;
    EXPECT_THAT(enumerate(name), IsEmpty()) << name;
    // Only the identity logs it; the drives do not.
    EXPECT_EQ(
        name == "TVP_TarvexProIdentity" ? 1U : 0U,
        log.count(LogCapture::trace(name + " : Driver is not available")));
    EXPECT_FALSE(log.has(
        LogCapture::message(4, name + "::enumerateInstances() - !!ERROR!! - TvkAdapter object is NULL")));
  }
  EXPECT_EQ(1U, enumerate("TVP_TierService").size());
  EXPECT_EQ(1U, enumerate("TVP_VirtualPoolMember").size());
}

TEST_F(StorageClasses, AreEmptyWithoutAnAdapter) {
  addDrives({TVK_DEVICE_HDD});
  voltvk::Faults().adapterAbsent();
  for (const std::string name : LIBRARY_CLASSES) {
    const LogCapture log;
    EXPECT_THAT(enumerate(name), IsEmpty()) << name;
    const bool tells = name == "TVP_LogicalDevice" || name == "TVP_VirtualPool";
    EXPECT_EQ(
        tells ? 1U : 0U, log.count(LogCapture::message(
                             4, name + "::enumerateInstances() - !!ERROR!! - TvkAdapter object is NULL")));
    EXPECT_EQ(
        name == "TVP_LogicalDevice" ? 1U : 0U,
        log.count(LogCapture::trace(name + " : Driver is not available")));
  }
}

TEST_F(StorageClasses, ShowTheProductOnce) {
  const LogCapture log;
  const std::vector<CIMInstance> found = enumerate("TVP_TarvexProIdentity");
  ASSERT_EQ(1U, found.size());
  EXPECT_EQ(24U, found[0].getPropertyCount());
  EXPECT_EQ("TVP_TarvexProIdentity", found[0].className());
  EXPECT_EQ("root/kvs/tvp/smi_15", found[0].nameSpace());
  EXPECT_TRUE(log.has(LogCapture::trace("Entering TVP_TarvexProIdentity::enumerateInstances()")));
  EXPECT_TRUE(log.has(LogCapture::trace("Exiting TVP_TarvexProIdentity::enumerateInstances()")));
}

TEST_F(StorageClasses, AccumulateThePropertiesOfTheDrivesBefore) {
  addDrives({TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_HDD});
  const LogCapture log;
  const std::vector<CIMInstance> found = enumerate("TVP_LogicalDevice");
  ASSERT_EQ(3U, found.size());
  const std::vector<std::string> kinds = {"DeviceType uint8 1", "DeviceType uint8 2", "DeviceType uint8 1"};
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_EQ(15 * (i + 1), found[i].getPropertyCount());
    EXPECT_EQ(kinds[i], lastValue(found[i], "DeviceType"));
    EXPECT_EQ("TVP_LogicalDevice", found[i].className());
    EXPECT_EQ("host", found[i].host());
    EXPECT_EQ(
        1U, log.count(LogCapture::message(
                4, "TVP_LogicalDevice::enumerateInstances() - LD# " + std::to_string(i))));
  }
  // What the earlier drives left precedes the values of the last one.
  EXPECT_EQ(
      shown(found[1].properties()),
      shown(std::vector<CIMProperty>(found[2].properties().begin(), found[2].properties().begin() + 30)));
  EXPECT_TRUE(log.has(LogCapture::trace("Entering TVP_LogicalDevice::enumerateInstances()")));
  EXPECT_TRUE(log.has(LogCapture::trace("Exiting TVP_LogicalDevice::enumerateInstances()")));
}

TEST_F(StorageClasses, LeaveOutInternalPoolsButNoVolume) {
  const std::vector<unsigned char> drives = addDrives({TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_HDD});
  ASSERT_EQ(0U, createPool("slow", drives[0], TVK_TIER_HDD));
  ASSERT_EQ(0U, createPool("fast", drives[1], TVK_TIER_SSD));
  std::vector<CIMInstance> pools = enumerate("TVP_VirtualPool");
  ASSERT_EQ(2U, pools.size());
  const unsigned int slow = lastId(pools[0], "VirtualPoolId");
  const unsigned int fast = lastId(pools[1], "VirtualPoolId");
  ASSERT_EQ(0U, createVolume("tiered", {slow, fast}));
  ASSERT_EQ(0U, createCachedVolume("cached", drives[2], fast));

  const LogCapture log;
  pools = enumerate("TVP_VirtualPool");
  ASSERT_EQ(2U, pools.size());
  EXPECT_EQ("*Name string slow", lastValue(pools[0], "Name"));
  EXPECT_EQ("*Name string fast", lastValue(pools[1], "Name"));
  EXPECT_EQ(2 * pools[0].getPropertyCount(), pools[1].getPropertyCount());
  std::size_t ignored = 0;
  for (const std::string& line : log.lines()) {
    ignored +=
        line.find("is an internal pool created for CachedLD, hence ignoring it") == std::string::npos ? 0 : 1;
  }
  EXPECT_EQ(1U, ignored);

  const std::vector<CIMInstance> volumes = enumerate("TVP_VirtualVolume");
  ASSERT_EQ(2U, volumes.size());
  EXPECT_EQ("*VolumeName string tiered", lastValue(volumes[0], "VolumeName"));
  EXPECT_EQ("*VolumeName string cached", lastValue(volumes[1], "VolumeName"));
  EXPECT_EQ(2 * volumes[0].getPropertyCount(), volumes[1].getPropertyCount());
  EXPECT_EQ("TVP_VirtualVolume", volumes[1].className());
}

TEST_F(StorageClasses, RunTheMethodsOfTheService) {
  const std::vector<unsigned char> drives = addDrives({TVK_DEVICE_HDD});
  LogCapture log;
  EXPECT_EQ(0U, createPool("pool", drives[0], TVK_TIER_HDD));
  EXPECT_TRUE(log.has(LogCapture::trace("Entering TVP_TierService::invokeMethod()")));
  EXPECT_TRUE(log.has(LogCapture::message(4, "TVP_TierService::invokeMethod() - calling CreateVirtualPool")));
  EXPECT_TRUE(log.has(LogCapture::message(4, "TVP_TierService::invokeMethod() - return 0")));
  EXPECT_TRUE(log.has(LogCapture::trace("Exiting TierServices::invokeMethod()")));
  EXPECT_NE(nullptr, m_out.getArgumentByName("RetStat"));

  const auto schema = tvp::host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof");
  const auto& declared = schema->find("TVP_TierService")->methods;
  EXPECT_GE(declared.size(), 12U);
  for (const tvp::host::SchemaMethod& declaration : declared) {
    const std::string& method = declaration.name;
    log.clear();
    EXPECT_EQ(4U, invoke("TVP_TierService", method)) << method;
    EXPECT_TRUE(log.has(LogCapture::message(4, "TVP_TierService::invokeMethod() - calling " + method)));
    EXPECT_TRUE(log.has(LogCapture::message(4, "TVP_TierService::invokeMethod() - return 3")));
    EXPECT_TRUE(log.has(LogCapture::trace("Exiting TVP_TierService::invokeMethod() with Failure")));
  }

  for (const std::string method :
       {"createvirtualpool", "DeleteDataCacheVolume", "getRoutineList", "%s%n", ""}) {
    const CIMObjectPath path = classPath("TVP_TierService");
    AbstractProviderPlugin* plugin = m_facade->getPlugIn("TVP_TierService");
    log.clear();
    EXPECT_EQ(1U, plugin->invokeMethod(path, method, CIMMethodParam(), m_out)) << method;
    EXPECT_THAT(
        log.lines(),
        ElementsAre(
            LogCapture::trace("Entering TVP_TierService::invokeMethod()"),
            LogCapture::message(4, "TVP_TierService::invokeMethod() - Unsupported Method: " + method),
            LogCapture::trace("Exiting TVP_TierService::invokeMethod()")));
  }
}

TEST_F(StorageClasses, ListMembersAndIgnoreOtherMethods) {
  const std::vector<unsigned char> drives = addDrives({TVK_DEVICE_HDD});
  ASSERT_EQ(0U, createPool("pool", drives[0], TVK_TIER_HDD));
  const unsigned int pool = lastId(enumerate("TVP_VirtualPool").at(0), "VirtualPoolId");
  ASSERT_EQ(0U, createVolume("volume", {pool}));
  const unsigned int volume = lastId(enumerate("TVP_VirtualVolume").at(0), "VirtualVolumeId");
  struct Case {
    const char* className;
    const char* method;
    CIMMethodParam in;
    unsigned int result;
    const char* lastLine;
    std::size_t members;
  };
  const char* const poolExit = "Exiting TVP_VirtualPool::invokeMethod()";
  const char* const volumeExit = "Exiting TVP_VirtualVolume::invokeMethod()";
  const std::vector<Case> cases = {
      {"TVP_VirtualPool", "GetVirtualPoolMembers", identifier("VirtualPoolId", pool), 0, poolExit, 1},
      {"TVP_VirtualPool",
       "GetVirtualPoolMembers",
       {},
       1,
       "Exiting TVP_VirtualPool::invokeMethod() with failure",
       0},
      {"TVP_VirtualPool", "DeleteVirtualPool", identifier("VirtualPoolId", pool), 0, poolExit, 0},
      {"TVP_VirtualVolume", "GetVirtualVolumeMembers", identifier("VirtualVolumeId", volume), 0, volumeExit,
       1},
      {"TVP_VirtualVolume", "GetVirtualVolumeMembers", {}, 0, volumeExit, 0},
      {"TVP_VirtualVolume", "DeleteVirtualVolume", identifier("VirtualVolumeId", volume), 0, volumeExit, 0}};
  for (const Case& tested : cases) {
    SCOPED_TRACE(std::string(tested.className) + " " + tested.method);
    AbstractProviderPlugin* plugin = m_facade->getPlugIn(tested.className);
    const LogCapture log;
    CIMMethodParam answer;
    EXPECT_EQ(
        tested.result, plugin->invokeMethod(classPath(tested.className), tested.method, tested.in, answer));
    EXPECT_EQ(
        LogCapture::trace(std::string("Entering ") + tested.className + "::invokeMethod()"),
        log.lines().front());
    EXPECT_EQ(LogCapture::trace(tested.lastLine), log.lines().back());
    const CIMProperty* members = answer.getArgumentByName("Members");
    EXPECT_EQ(tested.members, members == nullptr ? 0U : members->instanceSlot().m_values.size());
  }
  EXPECT_EQ(1U, enumerate("TVP_VirtualPool").size());
  EXPECT_EQ(1U, enumerate("TVP_VirtualVolume").size());
}

TEST_F(StorageClasses, StaySoundWhileTheStateChanges) {
  const std::vector<unsigned char> drives = addDrives({TVK_DEVICE_HDD, TVK_DEVICE_SSD, TVK_DEVICE_HDD});
  ASSERT_EQ(0U, createPool("lasting", drives[0], TVK_TIER_HDD));
  std::atomic<bool> finished{false};
  std::atomic<unsigned int> rounds{0};
  std::vector<std::thread> readers;
  for (const char* name : {"TVP_LogicalDevice", "TVP_VirtualPool", "TVP_VirtualPool"}) {
    readers.emplace_back([&, name] {
      while (!finished.load()) {
        const std::vector<CIMInstance> found = enumerate(name);
        ASSERT_FALSE(found.empty());
        if (std::string(name) == "TVP_LogicalDevice") {
          EXPECT_EQ(3U, found.size());
        } else {
          EXPECT_EQ("*Name string lasting", lastValue(found[0], "Name"));
          EXPECT_GE(2U, found.size());
        }
        ++rounds;
      }
    });
  }
  for (int i = 0; i < 25 || (rounds.load() < 25 && i < 1000); ++i) {
    EXPECT_EQ(0U, createPool("passing", drives[1], TVK_TIER_SSD));
    const std::vector<CIMInstance> pools = enumerate("TVP_VirtualPool");
    EXPECT_EQ(2U, pools.size());
    EXPECT_EQ(
        0U, invoke(
                "TVP_TierService", "DeleteVirtualPool",
                identifier("VirtualPoolId", lastId(pools.back(), "VirtualPoolId"))));
  }
  finished.store(true);
  for (std::thread& reader : readers) {
    reader.join();
  }
}
