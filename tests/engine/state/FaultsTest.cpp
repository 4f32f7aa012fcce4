// SPDX-License-Identifier: Apache-2.0
// Injected faults: which processes see them, and how long they last.
#include "voltvk/engine/contract/Faults.h"

#include "engine/EngineFixture.h"

#include <functional>
#include <map>

#include <sys/wait.h>
#include <unistd.h>

using namespace tvp::test;
using voltvk::FaultKind;
using voltvk::Faults;

namespace {

class FaultsTest : public EngineTest {
protected:
  FaultsTest() {
    addDrive(TVK_DEVICE_HDD, 50 * MIB);
    newEvents();
  }
};

TEST_F(FaultsTest, AnAbsentDriverHasNoControllersAndNoCollections) {
  Faults().driverAbsent();
  unsigned long count = 99;
  EXPECT_EQ(m_lib->getControllerCount(count).getReturn(), TVK_NO_DRIVER);
  EXPECT_EQ(count, 0U);
  EXPECT_NE(std::string(m_lib->getOpenError()).find("voltvkctl fault clear"), std::string::npos);
  EXPECT_FALSE(drives().isReadable());
  VirtualPoolSpec spec = poolSpec("pool", {0}, 50 * MIB);
  const Ret refused = adapter().createVirtualPool(spec);
  EXPECT_EQ(refused.getReturn(), TVK_NO_DRIVER);
  EXPECT_STREQ(refused.getDetail(), m_lib->getOpenError());
  EXPECT_EQ(Faults().clear(FaultKind::DriverAbsent), 1U);
  EXPECT_EQ(m_lib->getControllerCount(count).getReturn(), TVK_OK);
  EXPECT_EQ(count, 1U);
  EXPECT_EQ(drives().size(), 1U);
}

TEST_F(FaultsTest, AnAbsentAdapterIsNullAndRefusesOperations) {
  TvkAdapter& held = adapter();
  Faults().adapterAbsent();
  EXPECT_EQ(m_lib->getRootObject()->getObject(0), nullptr);
  EXPECT_EQ(TvkAdapter().deleteVirtualPool(1).getReturn(), TVK_NO_ADAPTER);
  EXPECT_EQ(held.deleteVirtualPool(1).getReturn(), TVK_NO_ADAPTER);
  EXPECT_NE(
      std::string(held.deleteVirtualPool(1).getDetail()).find("fault clear adapter-absent"),
      std::string::npos);
  unsigned long count = 0;
  m_lib->getControllerCount(count);
  EXPECT_EQ(count, 1U);
  Faults().clear();
  EXPECT_EQ(m_lib->getRootObject()->getObject(0), &held) << "the adapter is the same all the time";
}

TEST_F(FaultsTest, EveryOperationFailsAndThrowsOnce) {
  VirtualPoolSpec pool = poolSpec("pool", {0}, 50 * MIB);
  VirtualPoolSpec other;
  VirtualVolumeSpec volume = volumeSpec("volume", TVK_VOLUME_TIERED, {});
  VolEventCollection events(0, 8, 0);
  TvkAdapterIdentity identity{};
  d_ioctl_user_stat statistics{};
  const std::map<std::string, std::function<Ret()>> calls = {
      {"createCachedLD", [&] { return adapter().createCachedLD(other, pool, volume); }},
      {"createVirtualPool", [&] { return adapter().createVirtualPool(pool); }},
      {"createVirtualVolume", [&] { return adapter().createVirtualVolume(volume); }},
      {"deleteVirtualPool", [&] { return adapter().deleteVirtualPool(77); }},
      {"deleteVirtualVolume", [&] { return adapter().deleteVirtualVolume(77); }},
      {"flushVirtualVolume", [&] { return adapter().flushVirtualVolume(77); }},
      {"getEvents", [&] { return adapter().getEvents(events); }},
      {"getIdentity", [&] { return adapter().getIdentity(identity); }},
      {"getVirtualVolumeStats", [&] { return adapter().getVirtualVolumeStats(&statistics, 77); }},
      {"modifyVirtualPool", [&] { return adapter().modifyVirtualPool(77, pool); }},
      {"modifyVirtualVolume", [&] { return adapter().modifyVirtualVolume(77, volume); }},
      {"refreshConfiguration", [&] { return m_lib->refreshConfiguration(); }},
      {"resetVirtualVolumeStats", [&] { return adapter().resetVirtualVolumeStats(77); }},
  };
  ASSERT_EQ(calls.size(), Faults::operations().size());
  for (const std::string& operation : Faults::operations()) {
    Faults().fail(operation, 4242);
    Faults().throwFrom(operation);
    const Ret refused = calls.at(operation)();
    EXPECT_EQ(refused.getReturn(), 4242U) << operation;
    EXPECT_EQ(
        refused.getDetail(),
        "an injected fault has refused this call: fail " + operation + " with status 4242");
    EXPECT_THROW(calls.at(operation)(), std::runtime_error) << operation;
    EXPECT_TRUE(Faults().list().empty()) << operation;
    EXPECT_NE(calls.at(operation)().getReturn(), 4242U) << operation;
  }
}

TEST_F(FaultsTest, AnExceptionIsAFailureWithItsEvent) {
  Faults().throwFrom("createVirtualPool");
  newEvents();
  VirtualPoolSpec pool = poolSpec("pool", {0}, 50 * MIB);
  EXPECT_THROW(adapter().createVirtualPool(pool), std::runtime_error);
  EXPECT_EQ(newEvents(), std::vector<std::string>{"203 Pool [pool] could not be created, pool type [0]"});
}

TEST_F(FaultsTest, SlowOperationsTakeLongerUntilCleared) {
  const auto duration = [&] {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(m_lib->refreshConfiguration().getReturn(), TVK_OK);
    return std::chrono::steady_clock::now() - start;
  };
  Faults().slow("refreshConfiguration", std::chrono::milliseconds(60));
  EXPECT_GE(duration(), std::chrono::milliseconds(60));
  EXPECT_GE(duration(), std::chrono::milliseconds(60));
  EXPECT_EQ(Faults().clear(FaultKind::Slow, "refreshConfiguration"), 1U);
}

TEST_F(FaultsTest, FaultsOfAnotherProcessHoldHereAndAreReported) {
  TvkAdapter& ours = adapter();
  const pid_t child = fork();
  if (child == 0) {
    // A State object of its own: the parent's connection must not be used here.
    auto own = std::make_shared<voltvk::State>(
        m_directory.file("state.db"), voltvk::HostDriveScanner::ofThisMachine());
    Faults(own).fail("getIdentity", 77);
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  TvkAdapterIdentity identity{};
  EXPECT_EQ(ours.getIdentity(identity).getReturn(), 77U);
  EXPECT_EQ(
      newEvents(), std::vector<std::string>{"801 A fault was injected: [fail getIdentity with status 77]"});
}

TEST_F(FaultsTest, FaultsThatMakeNoSenseAreRefused) {
  EXPECT_THROW(Faults().fail("noSuchOperation"), std::invalid_argument);
  EXPECT_THROW(Faults().fail("getIdentity", 0), std::invalid_argument);
  EXPECT_THROW(Faults().slow("getIdentity", std::chrono::milliseconds(0)), std::invalid_argument);
  EXPECT_THROW(Faults().set({FaultKind::DriverAbsent, "getIdentity", 0, 0}), std::invalid_argument);
  EXPECT_TRUE(Faults().list().empty());
}

}  // namespace
