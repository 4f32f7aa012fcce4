// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"
#include "CIM/Framework/Subscription.h"
#include "CmpiTest.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpimacs.h"

#include <atomic>
#include <filesystem>
#include <thread>

#include <malloc.h>

namespace tvp::test {
namespace {

using namespace cim::fwf;
using cim::adap::cmpi::CMPIAdapter;

constexpr char EQUAL_CONTEXTS[] = "#***#Thread Context not equal to Original Context";

class IndicationDeliveryTest : public RunningProviderTest {
protected:
  explicit IndicationDeliveryTest(const host::BrokerOptions& options = {})
      : RunningProviderTest(testSchema(), options) {
    m_handlers.onIndication = [this](const std::string& nameSpace, const host::Instance&) {
      m_nameSpace = nameSpace;
      return m_answer;
    };
    m_broker.setHandlers(m_handlers);
  }

  /** Delivers as the listener does: on a thread of its own. */
  bool deliver(const CIMInstance& indication) {
    bool delivered = false;
    std::thread([&] {
      CIMInstance copy = indication;
      delivered = CMPIAdapter::DeliverIndication(copy);
    }).join();
    return delivered;
  }
  bool deliver() {
    return deliver(instanceOf("TEST_Part", {scalar<std::string>("Id", PDT_STRING, "1", true)}));
  }
  void subscribe() {
    EXPECT_TRUE(m_provider->activateFilter({}).ok());
    EXPECT_TRUE(m_provider->enableIndications().ok());
  }

  host::BrokerHandlers m_handlers;
  CMPIrc m_answer = CMPI_RC_OK;
  std::string m_nameSpace;
};

TEST_F(IndicationDeliveryTest, SubscriptionsAreCountedWithoutALowerBound) {
  EXPECT_TRUE(deliver()) << "nobody to tell is success";
  EXPECT_TRUE(m_log.has(LogCapture::message(5, "No subscription to service indications")));
  EXPECT_FALSE(FrameworkFacade::getInstance()->notify(CIMInstance()));

  static_cast<void>(m_provider->enableIndications());
  EXPECT_TRUE(m_subscription);
  static_cast<void>(m_provider->disableIndications());
  static_cast<void>(m_provider->disableIndications());  // -1
  EXPECT_FALSE(m_subscription);
  m_log.clear();
  EXPECT_FALSE(deliver()) << "a count that is not 0 reads as subscribed";
  EXPECT_FALSE(m_log.has(LogCapture::message(5, "No subscription to service indications")));
  static_cast<void>(m_provider->enableIndications());  // 0
  EXPECT_FALSE(m_subscription);
  EXPECT_TRUE(m_log.has(LogCapture::message(5, "CMPIAdapter::EnableIndications --> m_subscription = 0")));
}

TEST_F(IndicationDeliveryTest, WhateverBecomesOfAnIndicationNothingIsLeftBehind) {
  subscribe();
  CIMInstance indication = instanceOf("TEST_All", {list<std::string>("Texts", PDT_STRING_ARRAY, {"a", "b"})});
  static_cast<void>(m_provider->deActivateFilter({}));
  indication.setPath(CIMObjectPath("", "", "TEST_All", {}));
  EXPECT_TRUE(deliver(indication)) << "a deactivated filter leaves what was prepared";
  EXPECT_EQ(m_nameSpace, "");
  m_answer = CMPI_RC_ERR_FAILED;
  EXPECT_FALSE(deliver(indication));
  EXPECT_FALSE(deliver(instanceOf("TEST_All", {list<std::string>("X", PDT_REFERENCE_ARRAY, {})})));
  EXPECT_FALSE(deliver(instanceOf("NONE_Such", {})));
  EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
}

class DeliveryTo : public IndicationDeliveryTest, public testing::WithParamInterface<const char*> {
protected:
  DeliveryTo() : IndicationDeliveryTest(host::optionsAs(GetParam())) {}
};

// What the object manager makes itself on this thread is freed only by its memory functions.
TEST_P(DeliveryTo, LeavesNothingBehindWhicheverCallFails) {
  subscribe();
  const CIMInstance indication =
      instanceOf("TEST_All", {list<std::string>("Texts", PDT_STRING_ARRAY, {"a", "b"})});
  std::thread([&] {
    const auto delivered = [&] {
      CIMInstance copy = indication;
      return CMPIAdapter::DeliverIndication(copy);
    };
    EXPECT_TRUE(delivered());
    for (const host::Failing how : {host::Failing::WithStatus, host::Failing::WithException}) {
      failEveryCall(
          m_broker, CMPI_RC_ERR_FAILED, delivered,
          [&](const std::string& call) {
            const std::size_t before = m_broker.unreleasedObjects();
            const bool onlyFrees = isRelease(call) || call.find(".mark") != std::string::npos;
            EXPECT_EQ(delivered(), onlyFrees);
            EXPECT_LE(m_broker.unreleasedObjects(), before + (onlyFrees ? 1 : 0));
            EXPECT_TRUE(delivered()) << "the next one";
          },
          how);
    }
    CBDetachThread(m_broker.cmpi(), CMPIAdapter::getInstance()->getThreadContext());
  }).join();
}

INSTANTIATE_TEST_SUITE_P(EachManager, DeliveryTo, testing::Values("strict", "openpegasus", "sfcb"));

TEST_F(IndicationDeliveryTest, AThreadIsOnlyAttachedWithAPreparedContext) {
  m_handlers.onPrepareAttachThread = [] { return false; };
  m_handlers.onAttachThread = [] {
    ADD_FAILURE() << "attached";
    return CMPI_RC_OK;
  };
  m_broker.setHandlers(m_handlers);
  static_cast<void>(m_provider->enableIndications());
  m_log.clear();
  EXPECT_FALSE(deliver()) << "enabled, never activated";
  EXPECT_TRUE(m_provider->activateFilter({}).ok());
  EXPECT_FALSE(deliver());
  EXPECT_EQ(CMPIAdapter::getInstance()->getThreadContext(), CMPIAdapter::getInstance()->getContext());
  // A later request changes the base context, not what the thread context is.
  m_provider->enumerateInstances(path("NONE_Such"));
  EXPECT_FALSE(deliver());
  EXPECT_EQ(m_log.count(LogCapture::message(5, EQUAL_CONTEXTS)), 3U);
  EXPECT_EQ(m_log.count(LogCapture::message(5, "Could not deliver indication")), 3U);
}

TEST_F(IndicationDeliveryTest, AnActivationWithoutAContextPreparesNothing) {
  subscribe();
  host::Request request(m_broker);
  CMPIIndicationMI* mi = m_provider->indicationMI();
  const CMPIStatus status = mi->ft->activateFilter(mi, nullptr, nullptr, nullptr, nullptr, 1);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(host::Request::read(status.msg), "NULL broker or context");
  EXPECT_FALSE(deliver());
  EXPECT_TRUE(m_log.has(LogCapture::message(2, "NULL broker or context")));
  // The reason is also made as a string of the broker, on a thread that was not attached.
  m_broker.clearBreaches();
}

TEST_F(IndicationDeliveryTest, DeliveryDuringTheTearDownNeitherHangsNorTouchesTheAdapter) {
  subscribe();
  std::atomic<bool> stop{false};
  std::thread listener([&] {
    while (!stop) {
      CIMInstance indication = instanceOf("TEST_Part", {scalar<std::string>("Id", PDT_STRING, "1", true)});
      CMPIAdapter::DeliverIndication(indication);
    }
  });
  static_cast<void>(m_provider->cleanup(true));
  CIMInstance late;
  m_log.clear();
  EXPECT_FALSE(CMPIAdapter::DeliverIndication(late));
  EXPECT_TRUE(m_log.has(LogCapture::message(2, "Failed to get CMPIAdapter singleton instance")));
  stop = true;
  listener.join();
}

TEST_F(IndicationDeliveryTest, ManyDeliveriesTakeNoMemory) {
  subscribe();
  std::filesystem::remove(m_log.root().file("var/log/TVP.txt"));
  const CIMInstance indication =
      instanceOf("TEST_Part", {scalar<std::string>("Id", PDT_STRING, "told", true)});
  const auto deliverMany = [&](int times) {
    for (int i = 0; i < times; ++i) {
      CIMInstance copy = indication;
      EXPECT_TRUE(CMPIAdapter::DeliverIndication(copy));
    }
  };
  std::thread([&] {
    deliverMany(5000);  // the broker keeps some thousand dead objects of a thread, to know them again
    const std::size_t before = ::mallinfo2().uordblks;
    deliverMany(10000);
    EXPECT_LT(::mallinfo2().uordblks, before + std::size_t{256} * 1024);
  }).join();
  EXPECT_EQ(m_broker.unreleasedObjects(), 0U);
}

}  // namespace
}  // namespace tvp::test
