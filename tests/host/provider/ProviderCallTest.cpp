// SPDX-License-Identifier: Apache-2.0
#include "tests/host/SampleProvider.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>

namespace tvp::host::testing {
namespace {

using ::testing::ElementsAre;

class ProviderCall : public ::testing::Test {
protected:
  void SetUp() override { sampleBehaviour() = {}; }
  void TearDown() override { sampleBehaviour() = {}; }

  /** Answers one disk with a property of each simple kind; the first failing call ends it, as providers do.
   */
  CMPIStatus answerDisk(const CMPIResult* result, const CMPIObjectPath* path) {
    CMPIStatus status{};
    CMPIInstance* disk = CMNewInstance(m_cmpi, path, &status);
    if (disk == nullptr) {
      return status;
    }
    CMPIValue count{};
    count.uint32 = 3;
    const CMPIStatus steps[] = {
        CMSetProperty(disk, "Name", reinterpret_cast<const CMPIValue*>("sda"), CMPI_chars),
        CMSetProperty(disk, "Count", &count, CMPI_uint32), CMReturnInstance(result, disk),
        CMReturnDone(result)};
    for (const CMPIStatus& step : steps) {
      if (step.rc != CMPI_RC_OK) {
        return CMPIStatus{step.rc, CMNewString(m_cmpi, "a step failed", nullptr)};
      }
    }
    return ok();
  }

  void answerDisks() {
    sampleBehaviour().enumerate =
        [this](const CMPIContext*, const CMPIResult* result, const CMPIObjectPath* path) {
          return answerDisk(result, path);
        };
  }

  Broker m_broker{sampleSchema()};
  const CMPIBroker* m_cmpi = m_broker.cmpi();
  Provider m_provider{m_broker, sampleFactories()};
};

TEST_F(ProviderCall, KeysAndANullPrincipalArriveAsObjectManagersPassThem) {
  ObjectPath path = samplePath();
  path.keys = {{"Number", Value::uint32(7)}, {"Text", Value::string("t")}, {"Flag", Value::boolean(true)}};
  std::vector<int> types;
  sampleBehaviour().enumerate = [&](auto context, const CMPIResult* result, const CMPIObjectPath* given) {
    const CMPIData principal = CMGetContextEntry(context, CMPIPrincipal, nullptr);
    EXPECT_EQ(CMGetCharsPtr(principal.value.string, nullptr), nullptr);
    for (CMPICount i = 0; i < CMGetKeyCount(given, nullptr); ++i) {
      const CMPIData key = CMGetKeyAt(given, i, nullptr, nullptr);
      EXPECT_EQ(key.state, CMPI_keyValue);
      types.push_back(key.type);
    }
    return CMReturnDone(result);
  };
  CallOptions nullText;
  nullText.principal.reset();
  EXPECT_TRUE(m_provider.enumerateInstances(path, {}, &nullText).ok());
  EXPECT_THAT(types, ElementsAre(CMPI_sint64, CMPI_string, CMPI_boolean));
}

TEST_F(ProviderCall, ModifyPassesTheWholeInstanceAndAList) {
  Instance change;
  change.path = samplePath();
  change.properties = {{"Count", Value::uint32(4)}};
  sampleBehaviour().modify = [](const CMPIObjectPath*, const CMPIInstance* instance, const char** names) {
    EXPECT_EQ(CMGetPropertyCount(instance, nullptr), sampleSchema()->find("Sample_Disk")->properties.size());
    EXPECT_EQ(CMGetProperty(instance, "Count", nullptr).value.uint32, 4U);
    EXPECT_EQ(CMGetProperty(instance, "Name", nullptr).state, CMPI_nullValue);
    EXPECT_STREQ(names[0], "Count");
    EXPECT_EQ(names[1], nullptr);
    return CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, nullptr};
  };
  const Outcome outcome = m_provider.modifyInstance(change.path, change);
  EXPECT_EQ(outcome.rc, CMPI_RC_ERR_ACCESS_DENIED);
  EXPECT_EQ(outcome.message, "");
}

TEST_F(ProviderCall, EachArgumentArrivesInItsPlace) {
  const std::vector<std::string>& seen = sampleBehaviour().seen;
  ProviderFactories factories = sampleFactories();
  factories.association = [](const CMPIBroker*, const CMPIContext*, CMPIStatus*) {
    return sampleAssociations();
  };
  Provider provider(m_broker, factories);
  const AssociationFilter filter{"Link", "Target", "from", "to"};
  provider.associators(samplePath(), filter, {{"Name"}});
  EXPECT_THAT(seen, ElementsAre("associators", "Link", "Target", "from", "to", "Name"));
  provider.associatorNames(samplePath(), {"Link", "", "", "to"});
  EXPECT_THAT(seen, ElementsAre("associatorNames", "Link", "-", "-", "to"));
  provider.references(samplePath(), filter);
  EXPECT_THAT(seen, ElementsAre("references", "Target", "from", "-"));
  provider.referenceNames(samplePath(), filter);
  EXPECT_THAT(seen, ElementsAre("referenceNames", "Target", "from"));
  IndicationFilter alarms;
  alarms.query = "SELECT * FROM Sample_Alarm";
  alarms.className = "Sample_Alarm";
  alarms.owner = "me";
  EXPECT_TRUE(provider.authorizeFilter(alarms).ok());
  EXPECT_THAT(seen, ElementsAre("authorizeFilter", alarms.query, "Sample_Alarm", "Sample_Alarm", "me"));
  EXPECT_TRUE(provider.deActivateFilter(alarms, false).ok());
  EXPECT_THAT(
      seen, ElementsAre("deActivateFilter", alarms.query, "Sample_Alarm", "Sample_Alarm", "not last"));
  std::string missing;
  for (const Breach& breach : m_broker.breaches()) {
    missing += breach.text.substr(0, breach.text.find(' ')) + " ";
  }
  EXPECT_EQ(missing, "associators references referenceNames ") << "associatorNames ends without a mark";
}

TEST_F(ProviderCall, AMissingEndMarkIsABreachWhereSuccessWasAnswered) {
  sampleBehaviour().enumerate = [](const CMPIContext*, const CMPIResult*, const CMPIObjectPath*) {
    return ok();
  };
  sampleBehaviour().modify = [](const CMPIObjectPath*, const CMPIInstance*, const char**) { return ok(); };
  EXPECT_TRUE(m_provider.modifyInstance(samplePath(), Instance{samplePath(), {}}).ok());
  EXPECT_EQ(breachTexts(m_broker), "") << "this operation ends without a mark";
  m_provider.enumerateInstances(samplePath());
  EXPECT_EQ(
      breachTexts(m_broker), "enumerateInstances answered success without marking the end of its result\n");
  m_broker.clearBreaches();
  sampleBehaviour().enumerate = [](const CMPIContext*, const CMPIResult*, const CMPIObjectPath*) {
    return CMPIStatus{CMPI_RC_ERR_FAILED, nullptr};
  };
  m_provider.enumerateInstances(samplePath());
  EXPECT_EQ(breachTexts(m_broker), "") << "a failure needs no mark";
}

TEST_F(ProviderCall, WhatIsMissingIsNotSupportedAndUnloadingCanBeRefused) {
  const PathsOutcome outcome = m_provider.associatorNames(samplePath(), {});
  EXPECT_EQ(outcome.rc, CMPI_RC_ERR_NOT_SUPPORTED);
  EXPECT_EQ(outcome.message, "the provider has no interface for associatorNames");
  EXPECT_EQ(m_provider.cleanup(false).rc, CMPI_RC_NEVER_UNLOAD);
  EXPECT_TRUE(m_provider.cleanup(true).ok());
}

TEST_F(ProviderCall, EachCallCanFailOnceWithACodeThatReachesTheProvider) {
  answerDisks();
  m_broker.resetCalls(true);
  ASSERT_TRUE(m_provider.enumerateInstances(samplePath()).ok());
  const std::uint64_t calls = m_broker.callCount();
  EXPECT_EQ(calls, 5U);
  EXPECT_EQ(m_broker.callName(calls - 1), "CMPIResult.returnDone");
  EXPECT_EQ(m_broker.callName(calls), "");
  for (std::uint64_t call = 1; call <= calls; ++call) {
    m_broker.failCall(call, CMPI_RC_ERR_ALREADY_EXISTS);
    EXPECT_EQ(m_provider.enumerateInstances(samplePath()).rc, CMPI_RC_ERR_ALREADY_EXISTS) << call;
    EXPECT_TRUE(m_provider.enumerateInstances(samplePath()).ok()) << call;
  }
  m_broker.failCall(1, CMPI_RC_ERR_FAILED);
  m_broker.failCall(0, CMPI_RC_OK);
  EXPECT_TRUE(m_provider.enumerateInstances(samplePath()).ok());
}

TEST_F(ProviderCall, ThreadsAndHandlersFailOnDemand) {
  CMPIContext* prepared = nullptr;
  sampleBehaviour().activate = [&](const CMPIContext* context) {
    prepared = CBPrepareAttachThread(m_cmpi, context);
    return ok();
  };
  bool give = false;
  BrokerHandlers handlers;
  handlers.onPrepareAttachThread = [&give] { return give; };
  handlers.onAttachThread = [] { return CMPI_RC_ERR_ACCESS_DENIED; };
  handlers.onUpcall = [](const Upcall& upcall) {
    UpcallAnswer answer;
    answer.rc = CMPI_RC_OK;
    answer.values = {Value::reference(upcall.path), Value::reference(samplePath("Sample_Part"))};
    return answer;
  };
  m_broker.setHandlers(handlers);
  EXPECT_TRUE(m_provider.activateFilter({}).ok());
  EXPECT_EQ(prepared, nullptr);
  give = true;
  EXPECT_TRUE(m_provider.activateFilter({}).ok());
  ASSERT_NE(prepared, nullptr);
  EXPECT_EQ(CBAttachThread(m_cmpi, prepared).rc, CMPI_RC_ERR_ACCESS_DENIED);

  Request request(m_broker);
  CMPIEnumeration* names =
      CBEnumInstanceNames(m_cmpi, request.context(), request.objectPath(samplePath()), nullptr);
  ASSERT_NE(names, nullptr);
  EXPECT_EQ(Request::read(CMGetNext(names, nullptr).value.ref), samplePath());
  EXPECT_EQ(Request::read(CMGetNext(names, nullptr).value.ref).className, "Sample_Part");
  EXPECT_FALSE(CMHasNext(names, nullptr));
  m_broker.setHandlers({});
  CMPIStatus status{};
  EXPECT_FALSE(CMHasNext(
      CBEnumInstances(m_cmpi, request.context(), request.objectPath(samplePath()), nullptr, &status),
      nullptr));
  EXPECT_EQ(status.rc, CMPI_RC_OK) << "without a handler lists are empty";
  CBGetInstance(m_cmpi, request.context(), request.objectPath(samplePath()), nullptr, &status);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_NOT_SUPPORTED);
}

TEST_F(ProviderCall, MessagesTakeTheirInserts) {
  Request request(m_broker);
  std::string logged;
  BrokerHandlers handlers;
  handlers.onLog = [&logged](int severity, const std::string& id, const std::string& text) {
    logged = std::to_string(severity) + id + text;
  };
  m_broker.setHandlers(handlers);
  const CMPIBrokerEncFT* table = m_cmpi->eft;
  CMPIString* text = table->getMessage(
      m_cmpi, "id", "$1 of $0: $2 $9 $", nullptr, 3, CMPI_sint32, -4, CMPI_chars, "two", CMPI_boolean, 1);
  EXPECT_EQ(Request::read(text), "two of -4: true $9 $");
  table->logMessage(m_cmpi, 2, "id", "ignored", text);
  EXPECT_EQ(logged, "2idtwo of -4: true $9 $");
  table->trace(m_cmpi, 4, "part", "taken", nullptr);
  EXPECT_EQ(logged, "4parttaken");
  CMPIMsgFileHandle file = nullptr;
  EXPECT_EQ(table->openMessageFile(m_cmpi, "messages", &file).rc, CMPI_RC_OK);
  CMPIString* numbers = table->getMessage2(
      m_cmpi, "id", file, "$0 $1 $2 $3 $4", nullptr, 5, CMPI_uint32, 4294967295U, CMPI_sint64, -5LL,
      CMPI_uint64, 18446744073709551615ULL, CMPI_real64, 0.5, CMPI_string, text);
  EXPECT_EQ(Request::read(numbers), "4294967295 -5 18446744073709551615 0.5 two of -4: true $9 $");
  EXPECT_EQ(table->closeMessageFile(m_cmpi, file).rc, CMPI_RC_OK);
  EXPECT_EQ(Request::read(table->getType(m_cmpi, text, nullptr)), "CMPIString");
  EXPECT_TRUE(table->isOfType(m_cmpi, text, "CMPIString", nullptr));
  EXPECT_FALSE(table->isOfType(m_cmpi, text, "CMPIArray", nullptr));

  CMPIArray* flags = CMNewArray(m_cmpi, 2, CMPI_boolean, nullptr);
  const std::pair<const void*, const char*> texts[] = {
      {request.objectPath(samplePath()), "root/sample:Sample_Disk"},
      {flags, "{NULL, NULL}"},
      {CMNewDateTimeFromChars(m_cmpi, "20260131235959.123456+060", nullptr), "20260131235959.123456+060"},
      {request.instance(sampleSchema()->emptyInstance(samplePath("Sample_Part"))), "Sample_Part"}};
  for (const auto& [object, expected] : texts) {
    EXPECT_THAT(Request::read(table->toString(m_cmpi, object, nullptr)), ::testing::HasSubstr(expected));
  }
}

TEST_F(ProviderCall, WhatARequestLoggedIsItsOwnRemark) {
  sampleBehaviour().enumerate = [this](const CMPIContext*, const CMPIResult* result, const CMPIObjectPath*) {
    m_cmpi->eft->logMessage(m_cmpi, 2, "id", "a plain text", nullptr);
    m_cmpi->eft->logMessage(m_cmpi, 2, "id", nullptr, CMNewString(m_cmpi, "a string object", nullptr));
    m_cmpi->eft->trace(m_cmpi, 4, "part", "traces are none", nullptr);
    return CMReturnDone(result);
  };
  for (int round = 0; round < 2; ++round) {
    const InstancesOutcome outcome = m_provider.enumerateInstances(samplePath());
    EXPECT_THAT(outcome.remarks, ElementsAre("a plain text", "a string object"));
  }
  answerDisks();
  EXPECT_THAT(m_provider.enumerateInstances(samplePath()).remarks, ElementsAre());
}

/** Requests on several threads beside a thread of the provider's own that delivers indications. */
TEST_F(ProviderCall, ThreadsWorkSideBySide) {
  answerDisks();
  CMPIContext* prepared = nullptr;
  sampleBehaviour().activate = [&](const CMPIContext* context) {
    prepared = CBPrepareAttachThread(m_cmpi, context);
    return ok();
  };
  std::atomic<int> delivered{0};
  BrokerHandlers handlers;
  handlers.onIndication = [&delivered](const std::string& nameSpace, const Instance& indication) {
    EXPECT_EQ(nameSpace, "root/interop");
    EXPECT_EQ(*indication.property("Text"), Value::string("now"));
    ++delivered;
    return CMPI_RC_OK;
  };
  m_broker.setHandlers(handlers);
  EXPECT_TRUE(m_provider.activateFilter({}).ok());

  std::vector<std::future<void>> threads;
  threads.reserve(2);
  for (int i = 0; i < 2; ++i) {
    threads.push_back(std::async(std::launch::async, [this] {
      for (int round = 0; round < 200; ++round) {
        const InstancesOutcome outcome = m_provider.enumerateInstances(samplePath());
        ASSERT_EQ(outcome.instances.size(), 1U);
        ASSERT_EQ(*outcome.instances[0].property("Count"), Value::uint32(3));
      }
    }));
  }
  threads.push_back(std::async(std::launch::async, [this, prepared] {
    for (int round = 0; round < 100; ++round) {
      CBAttachThread(m_cmpi, prepared);
      CMPIObjectPath* path = CMNewObjectPath(m_cmpi, "root/interop", "Sample_Alarm", nullptr);
      CMPIInstance* alarm = CMNewInstance(m_cmpi, path, nullptr);
      CMSetProperty(alarm, "Text", reinterpret_cast<const CMPIValue*>("now"), CMPI_chars);
      CBDeliverIndication(m_cmpi, prepared, "root/interop", alarm);
      CMRelease(alarm);
      CMRelease(path);
    }
  }));
  threads.clear();  // waits for them
  EXPECT_EQ(delivered, 100);
  m_broker.reportLeaks();
  EXPECT_EQ(breachTexts(m_broker), "");
}

}  // namespace
}  // namespace tvp::host::testing
