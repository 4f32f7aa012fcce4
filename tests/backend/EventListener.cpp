// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"
#include "CIM/Framework/Subscription.h"
#include "backend/StorageFixture.h"
#include "backend/TarvexProEventManager.h"
#include "support/Threads.h"

#include <atomic>
#include <ctime>
#include <functional>
#include <mutex>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace tvp::test {
namespace {

using namespace cim::fwf;

using Strings = std::vector<std::string>;

std::mutex deliveredMutex;
std::vector<CIMInstance> delivered;

bool take(CIMInstance& indication) {
  const std::lock_guard<std::mutex> guard(deliveredMutex);
  delivered.push_back(indication);
  return true;
}

class EventListener : public StorageTest {
protected:
  EventListener() {
    FrameworkFacade::getInstance()->registerForEvent(take);
    m_subscription.store(true);
    log.root().write(
        "usr/VolMan/TVPEvents.properties", "201=Pool {0} made, level {1}, {2}\n205=Pool {0} gone\n");
    delivered.clear();
  }
  ~EventListener() override {
    m_subscription.store(false);
    FrameworkFacade::getInstance()->deRegisterForEvent();
  }

  static unsigned int number(const CIMInstance& indication, const char* name) {
    return elementsOf<unsigned int>(indication.getPropertyByName(name)).at(0);
  }
  static std::string text(const CIMInstance& indication, const char* name) {
    return elementsOf<std::string>(indication.getPropertyByName(name)).at(0);
  }
  static Strings descriptions() {
    Strings texts;
    for (const CIMInstance& indication : delivered) {
      texts.push_back(text(indication, "eventDesc"));
    }
    return texts;
  }
};

TEST_F(EventListener, NewEventsAreWordedAndSentInOrder) {
  TvproEventManager manager(getTarvexProRoot()->isPolicyEngineRunning());
  manager.pollOnce();
  delivered.clear();
  const unsigned int pool = makePool("Archive", TVK_DEVICE_HDD);
  ASSERT_EQ(call("DeleteVirtualPool", arguments(makeProperty<unsigned int>("VirtualPoolId", pool))), 0U);
  manager.pollOnce();
  ASSERT_EQ(delivered.size(), 3U);
  EXPECT_EQ(number(delivered[0], "eventCode"), 601U) << "the drive, in the words of the library";
  EXPECT_EQ(log.count(LogCapture::message(4, "Going with event description from driver")), 1U);
  EXPECT_EQ(text(delivered[1], "eventDesc"), "Pool Archive made, level 0, 10.00 GB");
  EXPECT_EQ(text(delivered[2], "eventDesc"), "Pool Archive gone");
  EXPECT_EQ(number(delivered[1], "eventCode"), 201U);
  EXPECT_EQ(delivered[1].nameSpace(), "root/PG_InterOp");
  EXPECT_TRUE(delivered[1].getPropertyByName("eventTime")->isKey());
  EXPECT_TRUE(delivered[1].getPropertyByName("eventDesc")->isKey());
  EXPECT_FALSE(delivered[1].getPropertyByName("Id")->isKey());
  manager.pollOnce();
  EXPECT_EQ(delivered.size(), 3U) << "every event once";
}

TEST_F(EventListener, EventsOfInternalPoolsAreDropped) {
  TvproEventManager manager(getTarvexProRoot()->isPolicyEngineRunning());
  const unsigned int ssd = makePool("Fast", TVK_DEVICE_SSD);
  const unsigned char drive = addDrive(TVK_DEVICE_HDD);
  manager.pollOnce();
  delivered.clear();
  log.clear();
  ASSERT_EQ(call("CreateDataCacheVolume", dataCacheArguments("Cached", ssd, {drive})), 0U);
  manager.pollOnce();
  for (const std::string& description : descriptions()) {
    EXPECT_EQ(description.find("Pool"), std::string::npos) << description;
  }
  EXPECT_FALSE(delivered.empty()) << "the volume's event arrives";
  EXPECT_EQ(
      log.count(LogCapture::message(
          4, "TvproEventManager::pollForEvent() - Ignoring internal pool related event ")),
      1U);
}

TEST_F(EventListener, AChangeOfThePolicyEngineIsReportedOnce) {
  const bool running = getTarvexProRoot()->isPolicyEngineRunning();
  ASSERT_TRUE(running) << "a new state starts with a running policy engine";
  TvproEventManager manager(false);
  manager.reportPolicyEngineEvent();
  manager.reportPolicyEngineEvent();
  ASSERT_EQ(delivered.size(), 1U);
  EXPECT_EQ(number(delivered[0], "eventCode"), 701U);
  EXPECT_EQ(number(delivered[0], "eventType"), 3U);
  EXPECT_EQ(text(delivered[0], "eventDesc"), "tarvex Plus - Policy Engine Service has started running");
  EXPECT_TRUE(log.has(LogCapture::message(4, "Delivered Policy Engine status Event with Code = 1793")));
}

TEST_F(EventListener, WithoutAnAdapterARoundDoesNothing) {
  TvproEventManager manager(false);
  voltvk::Faults().adapterAbsent();
  refreshTarvexProObjects();
  log.clear();
  manager.pollOnce();
  EXPECT_TRUE(delivered.empty()) << "not even the policy engine is looked at";
  EXPECT_EQ(log.lines(), Strings{LogCapture::trace("Exiting TvproEventManager::pollForEvent()")});
}

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

TEST_F(EventListener, AnExceptionEndsTheThreadAfterOneLine) {
  voltvk::Faults().throwFrom("getEvents");
  TvproEventListenerThread(nullptr);
  EXPECT_EQ(log.count(LogCapture::message(2, "TvproEventListenerThread could not poll for event")), 1U);
  EXPECT_EQ(log.lines().back(), LogCapture::trace("Exiting TvproEventManager::TvproEventListenerThread()"));
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
    ::alarm(20);
    TvproEventManager::getInstance()->initEventListener();
    const pid_t grandchild = ::fork();
    if (grandchild == 0) {
      ::alarm(3);
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
