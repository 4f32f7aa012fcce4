// SPDX-License-Identifier: Apache-2.0
#include "CmpiTest.h"
#include "support/ScriptedPlugin.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <set>
#include <thread>

namespace tvp::test {
namespace {

TEST_F(RunningProviderTest, TheLastTerminatingCleanUpTearsDownForGood) {
  host::Request request(m_broker);
  EXPECT_EQ(tvpCmpiMIMethodCleanup(m_provider->methodMI(), request.context(), 1).rc, CMPI_RC_OK);
  EXPECT_TRUE(m_provider->enumerateInstanceNames(path("NONE_Such")).ok()) << "the other interfaces work on";
  tvpCmpiMIAssociationCleanup(m_provider->associationMI(), request.context(), 1);
  tvpCmpiMIIndicationCleanup(m_provider->indicationMI(), request.context(), 1);

  const CMPIStatus last = tvpCmpiMICleanup(m_provider->instanceMI(), nullptr, 1);
  EXPECT_EQ(last.rc, CMPI_RC_OK);
  ASSERT_NE(last.msg, nullptr);
  EXPECT_EQ(host::Request::read(last.msg), "Warning : The input parameters are invalid");
  EXPECT_EQ(
      tarvexProProvider_Create_InstanceMI(m_broker.cmpi(), request.context(), nullptr),
      m_provider->instanceMI());
  const host::Outcome late = m_provider->enumerateInstances(path("TVP_TierService"));
  EXPECT_EQ(late.rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(late.message, "Failed to get CMPIAdapter singleton instance");
}

// The tear-down waits for the listener, so that there is time for a factory to wait for the entry lock.
TEST_F(RunningProviderTest, AFactoryThatWaitsForTheTearDownFindsALockToWakeUpWith) {
  m_log.clear();
  CMPIMethodMI* late = nullptr;
  std::thread factory([&] {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!m_log.has(LogCapture::message(4, "Ref count at cleanup = 0")) &&
           std::chrono::steady_clock::now() < limit) {
      std::this_thread::yield();
    }
    late = tarvexProProvider_Create_MethodMI(m_broker.cmpi(), nullptr, nullptr);
  });
  static_cast<void>(m_provider->cleanup(true));
  factory.join();
  EXPECT_EQ(late, m_provider->methodMI());
  EXPECT_EQ(
      m_log.count(LogCapture::trace("Exiting CMPIMI tvpInitialize()")) +
          m_log.count(LogCapture::trace("Leaving CMPIMI tvpInitialize()")),
      1U);
  m_log.clear();
  tarvexProProvider_Create_MethodMI(m_broker.cmpi(), nullptr, nullptr);
  EXPECT_TRUE(m_log.has(LogCapture::trace("Leaving CMPIMI tvpInitialize()"))) << "the lock is gone for good";
}

// The clean-up asks the broker for the text of its warning while it holds the entry lock: that is the moment
// for a factory that must wait until the adapter is gone.
TEST_F(RunningProviderTest, AFactoryThatComesAfterTheAdapterEndedStartsNothing) {
  static std::function<void()> startFactory;
  CMPIBrokerEncFT encapsulation = *m_broker.cmpi()->eft;
  CMPIBroker broker = *m_broker.cmpi();
  broker.eft = &encapsulation;
  encapsulation.newString = [](const CMPIBroker*, const char*, CMPIStatus*) -> CMPIString* {
    startFactory();
    return nullptr;
  };
  std::thread factory;
  startFactory = [&] {
    std::atomic<pid_t> number{0};
    factory = std::thread([&] {
      number = threadNumber();
      tarvexProProvider_Create_MethodMI(m_broker.cmpi(), nullptr, nullptr);
    });
    EXPECT_TRUE(waitFor(
        [&] { return m_log.has(LogCapture::trace("Entering CMPIMI tvpInitialize()")) && isAsleep(number); }));
  };
  CMPIInstanceMI* mi = tarvexProProvider_Create_InstanceMI(&broker, nullptr, nullptr);
  host::Request request(m_broker);
  tvpCmpiMIMethodCleanup(m_provider->methodMI(), request.context(), 1);
  tvpCmpiMIAssociationCleanup(m_provider->associationMI(), request.context(), 1);
  tvpCmpiMIIndicationCleanup(m_provider->indicationMI(), request.context(), 1);
  tvpCmpiMICleanup(mi, request.context(), 1);
  m_log.clear();
  tvpCmpiMICleanup(mi, nullptr, 1);
  factory.join();
  std::vector<std::string> lines = m_log.lines();
  const std::set<std::string> wanted = {
      LogCapture::message(4, "Ref count at cleanup = 0"),
      LogCapture::trace("Exiting CMPIAdapter::~CMPIAdapter()"), LogCapture::message(4, "Ref count = 1"),
      LogCapture::message(4, "I am working fine here"),
      LogCapture::message(5, "Provider Initialization already done")};
  lines.erase(
      std::remove_if(
          lines.begin(), lines.end(), [&](const std::string& line) { return wanted.count(line) == 0; }),
      lines.end());
  EXPECT_THAT(
      lines,
      testing::ElementsAre(
          LogCapture::message(4, "Ref count at cleanup = 0"),
          LogCapture::trace("Exiting CMPIAdapter::~CMPIAdapter()"), LogCapture::message(4, "Ref count = 1"),
          LogCapture::message(5, "Provider Initialization already done")));
}

TEST(Lifecycle, WithoutABrokerErrorsHaveNoMessageAndTheStatusIsNotWritten) {
  LogCapture log;
  ::setenv("VOLTVK_STATE", log.root().file("state.db").c_str(), 1);
  CMPIStatus status{CMPI_RC_ERROR_SYSTEM, nullptr};
  CMPIInstanceMI* mi = tarvexProProvider_Create_InstanceMI(nullptr, nullptr, &status);
  ASSERT_NE(mi, nullptr);
  EXPECT_EQ(status.rc, CMPI_RC_ERROR_SYSTEM);
  EXPECT_TRUE(log.has(LogCapture::message(2, "Failed to Create Association")));
  const CMPIStatus invalid = mi->ft->enumerateInstanceNames(mi, nullptr, nullptr, nullptr);
  EXPECT_EQ(invalid.rc, CMPI_RC_ERR_INVALID_PARAMETER);
  EXPECT_EQ(invalid.msg, nullptr);
  const char* list[] = {nullptr};
  const CMPIStatus failed = mi->ft->modifyInstance(mi, nullptr, nullptr, nullptr, nullptr, list);
  EXPECT_EQ(failed.rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(failed.msg, nullptr);
  // A method's output needs objects of the broker.
  auto* plugin = new ScriptedPlugin;
  plugin->output.addArgument(scalar<std::string>("Text", cim::fwf::PDT_STRING, "t"));
  cim::fwf::PluginsManager::getInstance()->registerPlugin("test_all", plugin);
  host::Broker broker(testSchema());
  host::Request request(broker, host::CallOptions{true, ""});
  const CMPIStatus invoked = tvpCmpiMIInvokeMethod(
      tarvexProProvider_Create_MethodMI(nullptr, nullptr, nullptr), request.context(), request.result(),
      request.objectPath({TEST_NAMESPACE, "TEST_All", {}, ""}), "Do", request.arguments({}),
      request.outputArguments());
  EXPECT_EQ(invoked.rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(mi->ft->cleanup(mi, nullptr, 1).msg, nullptr);
  EXPECT_EQ(mi->ft->cleanup(mi, nullptr, 1).msg, nullptr);
}

}  // namespace
}  // namespace tvp::test
