// SPDX-License-Identifier: Apache-2.0
// The classes with fixed content: their instances, what getting one returns, and that they have no instance
// names.
#include "CIM/Framework/PluginsManager.h"
#include "ProviderTest.h"
#include "Shown.h"

#include <gmock/gmock.h>

using namespace tvp::cim::fwf;
using testing::ElementsAre;
using testing::IsEmpty;
using tvp::test::LogCapture;
using tvp::test::shown;

namespace {

using FixedClasses = tvp::test::ProviderTest;

struct FixedClass {
  const char* name;
  std::vector<std::string> enumerated;
  std::vector<std::string> got;
};

}  // namespace

TEST_F(FixedClasses, AreTheSameClassesInEveryNamespace) {
  for (const char* nameSpace : {"root/kvs/tvp/smi_15", "root/PG_InterOp", "ROOT/KVS/TVP/SMI_15"}) {
    std::vector<std::string> names;
    m_facade->getAllPluginNames(names, nameSpace);
    EXPECT_THAT(
        names, ElementsAre(
                   "tvp_logicaldevice", "tvp_logicaldevices", "tvp_tarvexproidentity", "tvp_tierservice",
                   "tvp_virtualpool", "tvp_virtualpoolmember", "tvp_virtualpools", "tvp_virtualvolume",
                   "tvp_virtualvolumes", "tvp_virtualvolumesource"));
  }
}

TEST_F(FixedClasses, EnumerateAndGetTheirConstants) {
  const std::vector<FixedClass> classes = {
      {"TVP_LogicalDevices",
       {"*CreationClassName string TVP_LogicalDevices", "*NumberOfLogicalDevices uint32 2"},
       {"*CreationClassName string TVP_LogicalDevices", "*NumberOfLogicalDevices uint32 10"}},
      {"TVP_VirtualPools",
       {"*CreationClassName string TVP_VirtualPools", "*NumberOfStoragePool uint8 2"},
       {"*CreationClassName string TVP_VirtualPools", "*NumberOfStoragePool uint8 5"}},
      {"TVP_VirtualPoolMember",
       {"*CreationClassName string TVP_VirtualPoolMember", "*SerialNumber string 23432125",
        "*StartRange uint64[] 0 51", "*EndRange uint64[] 40 79", "*NumberOfValidLDExtn uint8 2"},
       {"*CreationClassName string TVP_VirtualPoolMember", "*SerialNumber string 23432125",
        "*NumberOfValidLDExtn uint8 2"}},
      {"TVP_VirtualVolumes",
       {"*CreationClassName string TVP_LogicalDevice", "*NumberOfVirtualVolumesPresent uint8 2"},
       {"*CreationClassName string TVP_LogicalDevice", "*NumberOfVirtualVolumesPresent uint8 8"}},
      {"TVP_VirtualVolumeSource",
       {"*CreationClassName string TVP_VirtualVolumeSource", "*VirtualPoolId uint32 21",
        "*MaxAllowedChunks uint64 512"},
       {"*CreationClassName string TVP_VirtualVolumeSource", "*VirtualVolumeSourceId uint8 21",
        "*MaxAllowedChunks uint64 512"}}};
  for (const FixedClass& expected : classes) {
    SCOPED_TRACE(expected.name);
    for (const bool isGet : {false, true}) {
      const std::vector<CIMInstance> found = isGet ? get(expected.name) : enumerate(expected.name);
      ASSERT_EQ(1U, found.size());
      EXPECT_EQ(isGet ? expected.got : expected.enumerated, shown(found[0].properties()));
      EXPECT_EQ(expected.name, found[0].className());
      EXPECT_EQ("root/kvs/tvp/smi_15", found[0].nameSpace());
      EXPECT_EQ("host", found[0].host());
    }
  }
}

TEST_F(FixedClasses, ReturnASampleAnEmptyInstanceOrNothing) {
  const std::vector<CIMInstance> pool = get("TVP_VirtualPool");
  ASSERT_EQ(1U, pool.size());
  EXPECT_THAT(
      shown(pool[0].keyProperties()),
      ElementsAre(
          "*CreationClassName string TVP_VirtualPool", "*Name string VP1",
          "*Description string Virtual Pool 1", "*VirtualPoolId uint32 110",
          "*NumberOfLogicalDevice uint8 10", "*NumberOfVirtualVolume uint8 10",
          "*CapacityInSectors uint64 1150", "*TierLevel uint8 126"));
  for (const char* bare : {"TVP_TarvexProIdentity", "TVP_LogicalDevice", "TVP_VirtualVolume"}) {
    const std::vector<CIMInstance> found = get(bare);
    ASSERT_EQ(1U, found.size()) << bare;
    EXPECT_EQ(0U, found[0].getPropertyCount()) << bare;
    EXPECT_EQ(bare, found[0].className());
  }
  const LogCapture log;
  EXPECT_THAT(get("TVP_TierService"), IsEmpty());
  EXPECT_TRUE(
      log.has(LogCapture::message(4, "getCIMInstance :: Empty list returned for class TVP_TierService")));
}

TEST_F(FixedClasses, NameNoInstances) {
  std::vector<std::string> names;
  m_facade->getAllPluginNames(names, "root/kvs/tvp/smi_15");
  for (const std::string& name : names) {
    CIMObjectPath path = classPath(name);
    std::vector<CIMObjectPath> paths;
    AbstractProviderPlugin* plugin = m_facade->getPlugIn(name);
    const LogCapture log;
    plugin->enumerateInstanceNames(path, paths);
    EXPECT_THAT(paths, IsEmpty()) << name;
    EXPECT_THAT(log.lines(), IsEmpty()) << name;
  }
}

TEST_F(FixedClasses, HaveOneServiceInstance) {
  AbstractProviderPlugin* plugin = m_facade->getPlugIn("TVP_TierService");
  CIMObjectPath path = classPath("TVP_TierService");
  std::vector<CIMInstance> found;
  const LogCapture log;
  plugin->enumerateInstances(path, found, false);
  ASSERT_EQ(1U, found.size());
  EXPECT_THAT(
      shown(found[0].properties()),
      ElementsAre("*CreationClassName string TVP_TierService", "*Name string TVP_TierServiceInstance1"));
  EXPECT_THAT(
      log.lines(), ElementsAre(
                       LogCapture::trace("Entering TVP_TierService::enuermateInstances"),
                       LogCapture::trace("Exiting TVP_TierService::enuermateInstances")));
}
