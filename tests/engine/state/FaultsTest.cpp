// SPDX-License-Identifier: Apache-2.0
// Injected faults: which processes see them, and how long they last.
#include "voltvk/engine/contract/Faults.h"

#include "engine/EngineFixture.h"

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

TEST_F(FaultsTest, FaultsThatMakeNoSenseAreRefused) {
  EXPECT_THROW(Faults().fail("noSuchOperation"), std::invalid_argument);
  EXPECT_THROW(Faults().fail("getIdentity", 0), std::invalid_argument);
  EXPECT_THROW(Faults().slow("getIdentity", std::chrono::milliseconds(0)), std::invalid_argument);
  EXPECT_THROW(Faults().set({FaultKind::DriverAbsent, "getIdentity", 0, 0}), std::invalid_argument);
  EXPECT_TRUE(Faults().list().empty());
}

}  // namespace
