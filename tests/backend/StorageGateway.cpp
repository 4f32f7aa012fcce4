// SPDX-License-Identifier: Apache-2.0
#include "backend/StorageFixture.h"
#include "backend/TarvexProEventManager.h"
#include "framework/ShortMemory.h"

#include <algorithm>
#include <atomic>
#include <future>
#include <set>
#include <tuple>

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

TEST_F(StorageTest, RoutinesAreListedInAscendingOrderAndUnknownOnesAreNotCalled) {
  EXPECT_EQ(call("getRoutineList", arguments(makeProperty<unsigned int>("Anything", 1))), 0U);
  const CIMProperty* list = out.getArgumentByName("Routine_List");
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->getType(), PDT_STRING_ARRAY);
  const Strings listed = list->stringSlot().m_values;
  EXPECT_EQ(call("createvirtualpool", {}), 1U);
  EXPECT_EQ(out.getArgumentCount(), 0U);

  routineTable table;
  initializeRoutineList(table);
  Strings names;
  for (const auto& routine : table) {
    names.push_back(routine.first);
    const bool isFlagged = routine.first == "CreateVirtualVolume" || routine.first == "DeleteVirtualVolume";
    EXPECT_EQ(routine.second.flag, isFlagged ? 1U : 0U) << routine.first;
    EXPECT_EQ(routine.second.name, routine.first);
  }
  EXPECT_EQ(listed, names);
  EXPECT_TRUE(std::is_sorted(listed.begin(), listed.end()));
  EXPECT_GE(listed.size(), 14U);
  EXPECT_EQ(listed.back(), "getRoutineList") << "in the order of bytes";
}

TEST_F(StorageTest, AMissingDriverIsLoggedOnceForEachReasonAndAgainWhenItComesBack) {
  const auto reported = [this] {
    for (int round = 0; round < 2; ++round) {
      EXPECT_EQ(gateway().GetConfig(), 0U);
    }
    return log.count(LogCapture::message(
        2,
        std::string("The storage driver is not available: ") + gateway().getTarvexProLib()->getOpenError()));
  };
  EXPECT_EQ(reported(), 0U);
  voltvk::Faults().driverAbsent();
  EXPECT_EQ(reported(), 1U);
  voltvk::Faults().clear();
  EXPECT_EQ(reported(), 0U);
  voltvk::Faults().driverAbsent();
  EXPECT_EQ(reported(), 2U);

  gateway().terminate();
  EXPECT_EQ(gateway().getTarvexProLib(), nullptr);
  EXPECT_EQ(gateway().GetConfig(), 0U);
  EXPECT_EQ(getTvkAdapter(), nullptr);
  const TemporaryDirectory directory;
  ::setenv("VOLTVK_STATE", directory.write("state.db", "this is not a database at all").c_str(), 1);
  EXPECT_EQ(gateway().initialize(false), 0U);
  EXPECT_EQ(reported(), 1U) << "another reason";
  EXPECT_STRNE(gateway().getTarvexProLib()->getOpenError(), "");
  unsigned long controllers = 1;
  gateway().getTarvexProLib()->getControllerCount(controllers);
  EXPECT_EQ(controllers, 0U);
}

TEST_F(StorageTest, AFailingRefreshDoesNotFailTheRequest) {
  voltvk::Faults().fail("refreshConfiguration");
  EXPECT_EQ(gateway().initialize(false), 0U);
  voltvk::Faults().throwFrom("refreshConfiguration");
  EXPECT_EQ(gateway().GetConfig(), 0U);
}

TEST(StorageGateway, ConcurrentFirstUsersGetTheSameObjects) {
  TemporaryDirectory directory;
  ::setenv("VOLTVK_STATE", directory.file("state.db").c_str(), 1);
  using Objects = std::tuple<TVPInterface*, TvkLib*, TvproEventManager*>;
  std::vector<std::future<Objects>> threads;
  std::atomic<int> waiting{8};  // all start at once, so that they meet during the creation
  for (int thread = waiting; thread > 0; --thread) {
    threads.push_back(std::async(std::launch::async, [&waiting]() -> Objects {
      for (--waiting; waiting.load() > 0;) {
      }
      TVPInterface* gateway = TVPInterface::getInstance();
      return {gateway, gateway->getTarvexProLib(), TvproEventManager::getInstance()};
    }));
  }
  std::set<Objects> found;
  for (std::future<Objects>& thread : threads) {
    found.insert(thread.get());
  }
  ASSERT_EQ(found.size(), 1U);
  const auto& [gateway, library, manager] = *found.begin();
  EXPECT_TRUE(gateway != nullptr && library != nullptr && manager != nullptr);
}

/** What getInstance returned before static construction, when there was no mutex yet. */
TVPInterface* withoutGatewayMutex;
TvproEventManager* withoutManagerMutex;

__attribute__((constructor(101))) void askBeforeStaticConstruction() {
  withoutGatewayMutex = TVPInterface::getInstance();
  withoutManagerMutex = TvproEventManager::getInstance();
}

TEST(StorageGateway, NothingIsCreatedWithoutItsLock) {
  EXPECT_EQ(withoutGatewayMutex, nullptr);
  EXPECT_EQ(withoutManagerMutex, nullptr);
}

TEST(StorageGateway, AFailedConstructionIsRetried) {
  {
    const ShortMemory shortage;
    EXPECT_EQ(TVPInterface::getInstance(), nullptr);
  }
  EXPECT_NE(TVPInterface::getInstance(), nullptr);
}

}  // namespace
}  // namespace tvp::test
