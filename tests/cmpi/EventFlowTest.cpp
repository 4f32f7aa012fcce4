// SPDX-License-Identifier: Apache-2.0
// The whole road of events: from the storage library's record over the real listener to the broker.
#include "CmpiTest.h"
#include "cmpi/CMPIAdapter.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/EventJournal.h"

#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>

#include <malloc.h>

namespace tvp::test {
namespace {

class EventFlowTest : public RunningProviderTest {
protected:
  EventFlowTest()
      : RunningProviderTest(host::MofReader::readFile(TVP_BINARY_DIR "/share/tarvexpro/TVP.mof")) {
    host::BrokerHandlers handlers;
    handlers.onIndication = [this](const std::string&, const host::Instance& indication) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_described.push_back(indication.property("eventDesc")->asString());
      m_arrived.notify_all();
      return CMPI_RC_OK;
    };
    m_broker.setHandlers(handlers);
    EXPECT_TRUE(m_provider->activateFilter({}).ok());
    EXPECT_TRUE(m_provider->enableIndications().ok());
  }

  std::mutex m_mutex;
  std::condition_variable m_arrived;
  std::vector<std::string> m_described;
};

TEST_F(EventFlowTest, AThousandEventsBetweenTwoPollsAllArriveInOrder) {
  constexpr std::size_t EVENTS = 1000;
  voltvk::State::forProcess()->change([](voltvk::Connection& connection) {
    voltvk::EventJournal journal(connection);
    for (std::size_t i = 0; i < EVENTS; ++i) {
      journal.append(TVK_EVENT_DRIVE_ADDED, TVK_EVENT_INFORMATION, "drive {} added", {std::to_string(i)});
    }
  });
  std::unique_lock<std::mutex> lock(m_mutex);
  EXPECT_TRUE(
      m_arrived.wait_for(lock, std::chrono::seconds(120), [this] { return m_described.size() >= EVENTS; }));
  ASSERT_EQ(m_described.size(), EVENTS);
  for (std::size_t i = 0; i < EVENTS; ++i) {
    EXPECT_EQ(m_described[i], "drive [" + std::to_string(i) + "] added");
  }
}

TEST_F(EventFlowTest, DeliveriesLeaveNothingBehind) {
  std::filesystem::remove(m_log.root().file("var/log/TVP.txt"));
  const cim::fwf::CIMInstance indication = instanceOf(
      "TVP_CIMIndication", {scalar<std::string>("eventDesc", cim::fwf::PDT_STRING, "told", true),
                            scalar("Id", cim::fwf::PDT_UINT32, 1U)});
  const auto deliver = [&](int times) {
    for (int i = 0; i < times; ++i) {
      cim::fwf::CIMInstance copy = indication;
      EXPECT_TRUE(cim::adap::cmpi::CMPIAdapter::DeliverIndication(copy));
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_described = {};
  };
  std::thread([&] {
    deliver(5000);  // the broker keeps some thousand dead objects of a thread, to know them again
    const std::size_t before = ::mallinfo2().uordblks;
    deliver(10000);
    EXPECT_LT(::mallinfo2().uordblks, before + std::size_t{256} * 1024);
  }).join();
  EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
}

}  // namespace
}  // namespace tvp::test
