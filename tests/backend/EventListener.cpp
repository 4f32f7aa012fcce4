// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"
#include "CIM/Framework/Subscription.h"
#include "backend/StorageFixture.h"
#include "backend/TarvexProEventManager.h"
#include "support/Threads.h"
#include "voltvk/engine/state/EventJournal.h"

#include <atomic>
#include <ctime>
#include <functional>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

std::vector<CIMInstance> delivered;

bool take(CIMInstance& indication) {
  delivered.push_back(indication);
  return true;
}

class EventListener : public StorageTest {
protected:
  EventListener() {
    FrameworkFacade::getInstance()->registerForEvent(take);
    m_subscription.store(true);
  }
  ~EventListener() override {
    m_subscription.store(false);
    FrameworkFacade::getInstance()->deRegisterForEvent();
  }

  static unsigned int number(const CIMInstance& indication, const char* name) {
    return elementsOf<unsigned int>(indication.getPropertyByName(name)).at(0);
  }
};

TEST_F(EventListener, WhyEventsCannotBeFetchedIsSaidOnce) {
  TvproEventManager manager(true);
  const std::string line = LogCapture::message(
      2, "TvkAdapter::getEvents() was refused: the driver is switched off by an injected "
         "fault; switch it on with `voltvkctl fault clear driver-absent`");
  for (std::size_t time = 1; time <= 2; ++time) {
    voltvk::Faults().driverAbsent();
    manager.pollOnce();
    EXPECT_EQ(log.lines().back(), line) << "after the lines that are there anyway";
    manager.pollOnce();
    EXPECT_EQ(log.count(line), time);
    voltvk::Faults().clear();
    manager.pollOnce();
  }
}

TEST_F(EventListener, SaysHowManyEventsWereLost) {
  TvproEventManager manager(true);
  getTvkAdapter();  // events count from here on
  voltvk::State::forProcess()->change([](voltvk::Connection& connection) {
    for (int i = 0; i < 6000; ++i) {
      voltvk::EventJournal(connection)
          .append(TVK_EVENT_POOL_DESCRIBED, TVK_EVENT_INFORMATION, "Pool {}", {std::to_string(i)});
    }
  });
  delivered.clear();
  for (int round = 0; round < 2; ++round) {
    manager.pollOnce();
    ASSERT_EQ(delivered.size(), 4096U);
    for (std::size_t i = 0; i < delivered.size(); ++i) {
      EXPECT_EQ(
          elementsOf<std::string>(delivered[i].getPropertyByName("eventDesc")).at(0),
          "Pool [" + std::to_string(1904 + i) + "]");
    }
    EXPECT_EQ(
        log.count(LogCapture::message(
            3, "TvkAdapter::getEvents(): 1904 events were lost, since more happened between two fetches than "
               "the "
               "4096 that are kept")),
        1U);
  }
}

TEST_F(EventListener, CodesArePublishedByTheirHexadecimalDigits) {
  const struct {
    std::uint32_t code;
    unsigned int published;
  } cases[] = {{0x1234, 1234}, {0x70A, 70}, {0xA70, 0}, {0, 0}, {0x99999999, 99999999}};
  TvproEventManager manager(false);
  for (const auto& sample : cases) {
    VolEvent event;
    event.code = sample.code;
    event.type = 2;
    event.id = 0xFFFFFFFF;
    event.actionId = 12;
    delivered.clear();
    manager.SendEventIndication(&event);
    ASSERT_EQ(delivered.size(), 1U);
    EXPECT_EQ(number(delivered[0], "eventCode"), sample.published);
    EXPECT_EQ(number(delivered[0], "eventType"), 2U);
    EXPECT_EQ(number(delivered[0], "Id"), 0xFFFFFFFF);
    EXPECT_EQ(number(delivered[0], "ActionId"), 12U);
  }
}

TEST_F(EventListener, TimesAreWrittenMonthFirst) {
  ::setenv("TZ", "UTC", 1);
  ::tzset();
  unsigned char buffer[TVP_TIME_STAMP_SIZE] = {};
  const auto written = [&](long time) {
    formatTimeStamp(buffer, time);
    return std::string(reinterpret_cast<const char*>(buffer));
  };
  EXPECT_EQ(written(0), "01/01/1970 00:00:00");
  EXPECT_EQ(written(1717595112), "06/05/2024 13:45:12");
  log.clear();
  const std::string now = written(0x7FFFFFFFFFFFFFFFL);
  EXPECT_TRUE(log.has(LogCapture::message(2, "Failed to proces supplied timestamp")));
  EXPECT_EQ(now.size(), std::string("06/05/2024 13:45:12").size());
  formatTimeStamp(nullptr, 0);
  EXPECT_TRUE(log.has(LogCapture::message(2, " Buffer is empty")));
  ::setenv("TZ", "EAST-2", 1);
  EXPECT_EQ(written(0), "01/01/1970 02:00:00") << "a changed time zone counts at once";
}

TEST_F(EventListener, TheThreadEndsAfterItsSleepAndNeverStartsAgain) {
  TvproEventManager& manager = *TvproEventManager::getInstance();
  ASSERT_EQ(gateway().initialize(true), 0U);
  EXPECT_TRUE(manager.initEventListener()) << "one that runs is left alone";
  const std::time_t deadline = std::time(nullptr) + 10;
  while (!log.has(LogCapture::trace("Entering TvproEventManager::pollForEvent()"))) {
    ASSERT_LT(std::time(nullptr), deadline) << "the thread does not run";
    std::this_thread::yield();
  }
  log.clear();
  const std::time_t before = std::time(nullptr);
  EXPECT_TRUE(manager.terminateEventListener());
  EXPECT_LE(std::time(nullptr) - before, 7);
  EXPECT_EQ(
      log.lines(), (Strings{
                       LogCapture::trace("Entering TvproEventManager::terminateEventListener()"),
                       LogCapture::message(2, "CancelSynchronousIo Failed for listner thread"),
                       LogCapture::trace("Exiting TvproEventManager::TvproEventListenerThread()"),
                       LogCapture::trace("Exiting TvproEventManager::terminateEventListener()")}));
  EXPECT_TRUE(manager.terminateEventListener()) << "without a thread there is nothing to wait for";
}

TEST_F(EventListener, AProcessThatExitsWithoutCleaningUpEndsNormally) {
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::alarm(120);
    TvproEventManager::getInstance()->initEventListener();
    // A fork takes along the locks that the thread holds, and nobody there would release them.
    waitFor([this] {
      return log.has(LogCapture::trace("Entering TvproEventManager::pollForEvent()")) && allOthersAreAsleep();
    });
    const pid_t grandchild = ::fork();
    if (grandchild == 0) {
      ::alarm(60);
      std::exit(0);  // has the handle, but not the thread
    }
    int status = 1;
    ::waitpid(grandchild, &status, 0);
    std::exit(status == 0 ? 0 : 1);
  }
  int status = 1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "0x" << std::hex << status;
  EXPECT_EQ(log.count(LogCapture::trace("Entering TvproEventManager::terminateEventListener()")), 1U)
      << "only the process that the listener runs in stops it";
}

// The callback runs on the listener's thread, and holds it in a round until the stop has begun.
TEST_F(EventListener, TheLibraryOutlivesTheListener) {
  static std::atomic<bool> inCallback;
  static std::atomic<bool> libraryIsThere;
  static std::function<bool()> stopHasBegun;
  stopHasBegun = [this] {
    return log.has(LogCapture::message(2, "CancelSynchronousIo Failed for listner thread"));
  };
  FrameworkFacade::getInstance()->registerForEvent([](CIMInstance&) {
    if (!inCallback.exchange(true)) {
      waitFor(stopHasBegun);
      libraryIsThere = getTarvexProRoot() != nullptr;
    }
    return true;
  });
  ASSERT_EQ(gateway().initialize(true), 0U);
  makePool("Archive", TVK_DEVICE_HDD);
  const NoSleep noSleep;
  ASSERT_TRUE(waitFor([] { return inCallback.load(); }));
  gateway().terminate();
  EXPECT_TRUE(libraryIsThere);
  EXPECT_EQ(getTarvexProRoot(), nullptr);
}

}  // namespace
}  // namespace tvp::test
