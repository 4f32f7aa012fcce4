// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "CmpiTest.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpimacs.h"
#include "support/ScriptedPlugin.h"

#include <stdexcept>

namespace tvp::test {
namespace {

using namespace cim::fwf;
using cim::adap::cmpi::CMPIAdapter;
using host::Value;

/** Requests for TEST_All, answered by a plugin that the test scripts. */
class RequestsTest : public RunningProviderTest {
protected:
  RequestsTest() : m_plugin(*new ScriptedPlugin) {
    PluginsManager::getInstance()->registerPlugin("test_all", &m_plugin);
  }

  static CIMInstance item(const std::string& id, unsigned int number) {
    return instanceOf(
        "TEST_All", {scalar<std::string>("Id", PDT_STRING, id, true), scalar("U32", PDT_UINT32, number)});
  }
  static host::ObjectPath itemPath(const std::string& id) {
    return path("TEST_All", {{"Id", Value::string(id)}, {"Serial", Value::sint64(4)}});
  }

  ScriptedPlugin& m_plugin;
};

TEST_F(RequestsTest, ReadingOperationsCarryPathAndListsBothWays) {
  m_plugin.instances = {item("a", 1), item("b", 2)};
  m_plugin.names = {item("a", 1).getPath()};
  const host::InstancesOutcome all =
      m_provider->enumerateInstances(itemPath("x"), std::vector<std::string>{"U32"});
  ASSERT_EQ(all.instances.size(), 2U);
  EXPECT_EQ(*all.instances[1].property("U32"), Value::uint32(2));
  EXPECT_EQ(all.instances[1].path.keys.at(0).value, Value::string("b"));
  EXPECT_TRUE(m_plugin.givenPath.keyBindings().empty()) << "enumerations leave the keys out";

  const host::PathsOutcome names = m_provider->enumerateInstanceNames(itemPath("x"));
  ASSERT_EQ(names.paths.size(), 1U);
  EXPECT_EQ(*names.paths[0].key("Id"), Value::string("a"));

  EXPECT_EQ(m_provider->getInstance(itemPath("q")).instances.size(), 2U);
  EXPECT_EQ(m_plugin.givenPath.keyBindings().size(), 2U);

  m_plugin.instances.clear();
  const host::InstancesOutcome none = m_provider->getInstance(itemPath("q"));
  EXPECT_TRUE(none.ok() && none.instances.empty());
}

TEST_F(RequestsTest, CreatingAndDeletingAreAcceptedAndDoNothing) {
  host::Instance instance{path("TEST_All"), {{"Id", Value::string("a")}}};
  EXPECT_EQ(m_provider->createInstance(path("TEST_All"), instance).paths.size(), 0U);
  // SFCB takes the first element of the answer without looking whether there is one.
  host::Broker sfcb(testSchema(), host::optionsAs("sfcb"));
  const host::Request request(sfcb);
  host::Request create(m_broker);
  CMPIStatus status{CMPI_RC_OK, nullptr};
  CMPIAdapter::getInstance()->CreateInstance(
      nullptr, create.context(), create.result(), create.objectPath(itemPath("a")), nullptr, sfcb.cmpi(),
      &status);
  EXPECT_EQ(status.rc, CMPI_RC_OK);
  EXPECT_TRUE(create.done());
  ASSERT_EQ(create.paths().size(), 1U);
  EXPECT_EQ(*create.paths()[0].key("Id"), Value::string("a"));
  EXPECT_TRUE(m_provider->deleteInstance(itemPath("a")).ok());
  EXPECT_EQ(m_plugin.calls, std::vector<std::string>{});
}

TEST_F(RequestsTest, WhatIsThrownBecomesTheStatusAndTheOperationStillEndsItsTrace) {
  struct Thrown {
    std::function<void()> raise;
    int rc;
    const char* message;
  };
  const std::vector<Thrown> cases = {
      {[] { throw CIMException(6, std::string("100%s gone")); }, 6, "100%s gone"},
      {[] { throw CIMException(18, std::string("next")); }, 18, "next"},
      {[] { throw CIMException(19, std::string("beyond")); }, 1, "beyond"},
      {[] { throw CIMException(0, std::string("zero")); }, 1, "zero"},
      {[] { throw std::runtime_error("inner"); }, 1, "Failed : Unknown Error"}};
  for (const Thrown& thrown : cases) {
    m_plugin.beforeAnswer = thrown.raise;
    m_log.clear();
    const host::Outcome outcome = m_provider->enumerateInstances(itemPath("x"));
    EXPECT_EQ(static_cast<int>(outcome.rc), thrown.rc) << thrown.message;
    EXPECT_EQ(outcome.message, thrown.message);
    EXPECT_TRUE(m_log.has(LogCapture::trace("Exiting CMPIAdapter::EnumInstances")));
    EXPECT_TRUE(m_log.has(LogCapture::message(
        2, "EnumInstances operation failed,                 refer "
           "previous log lines for reason")));
  }
}

TEST_F(RequestsTest, AnInstanceThatCannotBeConvertedEndsTheOperationWithItsCode) {
  m_plugin.instances = {
      item("a", 1), instanceOf("TEST_All", {list<std::string>("X", PDT_REFERENCE_ARRAY, {})})};
  const host::InstancesOutcome outcome = m_provider->enumerateInstances(path("TEST_All"));
  EXPECT_EQ(outcome.rc, CMPI_RC_ERR_NOT_SUPPORTED);
  EXPECT_EQ(outcome.message, " :: Not supported");
}

TEST_F(RequestsTest, OnlyAdministratorsModify) {
  const host::Instance change{itemPath("a"), {{"U32", Value::uint32(9)}, {"S32", Value::null(CMPI_sint32)}}};
  struct Case {
    std::optional<std::string> principal;
    bool admitted;
  };
  const std::vector<Case> cases = {{"root", true},       {"operator", true}, {"", true},
                                   {std::nullopt, true}, {"rootuid", false}, {"short", false},
                                   {"Root", false},      {"nobody%s", false}};
  for (const Case& c : cases) {
    m_plugin.calls.clear();
    host::CallOptions options;
    options.principal = c.principal;
    const host::Outcome outcome =
        m_provider->modifyInstance(itemPath("a"), change, std::vector<std::string>{"U32"}, &options);
    const std::string name = c.principal.value_or("");
    EXPECT_EQ(m_plugin.calls.size(), c.admitted ? 1U : 0U) << name;
    EXPECT_EQ(outcome.rc, c.admitted ? CMPI_RC_OK : CMPI_RC_ERR_ACCESS_DENIED) << name;
    EXPECT_EQ(outcome.message, c.admitted ? "" : name + " : is not a member of Administrator/root");
    EXPECT_EQ(m_log.has(LogCapture::message(5, "UserName = " + name + " is verified")), c.admitted);
  }
  EXPECT_EQ(m_plugin.givenList, std::vector<std::string>{"U32"});
  EXPECT_EQ(m_plugin.givenInstance.getPropertyCount(), 1U);
  EXPECT_EQ(m_plugin.givenPath.keyBindings().size(), 2U);
  std::filesystem::remove(m_log.root().file("etc/passwd"));
  EXPECT_EQ(m_provider->modifyInstance(itemPath("a"), change).rc, CMPI_RC_ERR_ACCESS_DENIED);
}

// One object manager keeps the text of a string as its handle: that of a principal without a text is null.
TEST_F(RequestsTest, OnlyAStringIsReadAsAPrincipal) {
  static CMPIData principal{};
  static CMPIContextFT contexts{};
  contexts.getEntry = [](const CMPIContext*, const char*, CMPIStatus* rc) {
    *rc = CMPIStatus{CMPI_RC_OK, nullptr};
    return principal;
  };
  const CMPIContext context{&contexts, &contexts};
  host::Broker sfcb(testSchema(), host::optionsAs("sfcb"));
  const host::Request nameless(sfcb, host::CallOptions{true, std::nullopt});
  const CMPIData null = CMGetContextEntry(nameless.context(), CMPIPrincipal, nullptr);
  ASSERT_EQ(null.value.string->hdl, nullptr);
  CMPIData number{};
  number.type = CMPI_uint64;
  number.value.uint64 = 7;
  host::Request request(m_broker);
  CMPIInstanceMI* mi = m_provider->instanceMI();
  const char* list[] = {"U32", nullptr};
  for (const CMPIData& given : {null, number}) {
    principal = given;
    const CMPIStatus status = mi->ft->modifyInstance(
        mi, &context, nullptr, request.objectPath(itemPath("a")),
        request.instance({itemPath("a"), {{"U32", Value::uint32(9)}}}), list);
    const bool isString = given.type == CMPI_string;
    EXPECT_EQ(status.rc, isString ? CMPI_RC_OK : CMPI_RC_ERR_FAILED);
    EXPECT_TRUE(isString || host::Request::read(status.msg) == "Failed to get CharsPtr from string username");
  }
  EXPECT_EQ(m_plugin.calls, std::vector<std::string>{"modifyInstance"});
}

TEST_F(RequestsTest, ModifyingWithNullArgumentsIsAnErrorAndNoCrash) {
  host::Request request(m_broker);
  CMPIInstanceMI* mi = m_provider->instanceMI();
  const char* list[] = {"U32", nullptr};
  const host::Instance change{itemPath("a"), {}};
  const CMPIObjectPath* op = request.objectPath(itemPath("a"));
  EXPECT_EQ(
      mi->ft->modifyInstance(mi, nullptr, nullptr, op, request.instance(change), list).rc,
      CMPI_RC_ERR_FAILED);
  EXPECT_EQ(mi->ft->modifyInstance(mi, request.context(), nullptr, op, nullptr, list).rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(
      mi->ft->modifyInstance(mi, request.context(), nullptr, nullptr, request.instance(change), list).rc,
      CMPI_RC_ERR_INVALID_NAMESPACE);
  EXPECT_EQ(m_plugin.calls, std::vector<std::string>{});
}

TEST_F(RequestsTest, MethodsReturnTheirValueAndOutputOnlyOnSuccess) {
  host::Arguments input;
  input.add("Name", Value::string("x")).add("Count", Value::uint32(3));
  m_plugin.output.addArgument(scalar<unsigned char>("Kind", PDT_UINT8, 2));
  for (const unsigned int value : {0U, 5U, 4U, 1U, 4294967295U}) {
    m_plugin.returnValue = value;
    m_log.clear();
    const host::MethodOutcome outcome = m_provider->invokeMethod(itemPath("a"), "Do%s", input);
    if (value == 0 || value == 5) {
      EXPECT_TRUE(outcome.ok());
      EXPECT_EQ(outcome.returnValue, Value::uint32(value));
      EXPECT_EQ(*outcome.output.find("Kind"), Value::signedInteger(CMPI_sint8, 2));
    } else {
      EXPECT_EQ(outcome.rc, CMPI_RC_ERR_FAILED);
      EXPECT_EQ(outcome.message, " :: Operation Failed");
      EXPECT_TRUE(outcome.output.values.empty());
      EXPECT_TRUE(outcome.returnValue.isNull());
      EXPECT_TRUE(m_log.has(
          LogCapture::message(2, "InvokeMethod returns error = " + std::to_string(static_cast<int>(value)))));
    }
    EXPECT_TRUE(m_log.has(LogCapture::message(5, "CMPIAdapter::InvokeMethod:Do%s")));
  }
  EXPECT_EQ(m_plugin.givenInput.toString(), "NameCount");
}

TEST_F(RequestsTest, ResultsThatGiveNoObjectAreLeftOutAndTheOthersReturned) {
  CMPIStatus status{CMPI_RC_OK, nullptr};
  host::Request request(m_broker);
  // A copy of the broker that has no second path to give, and calls that no error.
  static const CMPIBrokerEncFT* real = nullptr;
  static int paths = 0;
  real = m_broker.cmpi()->eft;
  paths = 0;
  CMPIBrokerEncFT table = *real;
  table.newObjectPath = [](const CMPIBroker* broker, const char* ns, const char* name, CMPIStatus* rc) {
    return ++paths == 2 ? nullptr : real->newObjectPath(broker, ns, name, rc);
  };
  CMPIBroker forgetful = *m_broker.cmpi();
  forgetful.eft = &table;
  CMPIAdapter::ReturnInstances(
      &forgetful, request.result(), nullptr, {item("a", 1), item("b", 2), item("c", 3)}, &status);
  EXPECT_EQ(request.instances().size(), 2U);
  EXPECT_TRUE(request.done());
  EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(host::Request::read(status.msg), "Failed to convert CIM Instance to CMPI Instance");
  EXPECT_EQ(m_log.count(LogCapture::message(2, "Failed to convert CIM Instance to CMPI Instance")), 1U);

  paths = 0;
  status = CMPIStatus{CMPI_RC_OK, nullptr};
  host::Request second(m_broker);
  CMPIAdapter::ReturnObjectPaths(
      &forgetful, second.result(), {item("a", 1).getPath(), item("b", 2).getPath()}, &status);
  EXPECT_EQ(second.paths().size(), 1U);
  EXPECT_EQ(host::Request::read(status.msg), "Failed to convert CIM ObjectPath to CMPI ObjectPath");
  status = CMPIStatus{CMPI_RC_OK, nullptr};
  cim::adap::cmpi::keepRefusal(CMPIStatus{CMPI_RC_ERR_ACCESS_DENIED, nullptr}, m_broker.cmpi(), &status);
  EXPECT_EQ(status.rc, CMPI_RC_ERR_ACCESS_DENIED);
  EXPECT_EQ(host::Request::read(status.msg), "The object manager did not accept the result");
  CIMMethodParam output;
  output.addArgument(scalar("A", PDT_UINT32, 1U));
  status = CMPIStatus{CMPI_RC_OK, nullptr};
  CMPIAdapter::FormArguments(m_broker.cmpi(), second.result(), output, nullptr, &status);
  EXPECT_EQ(host::Request::read(status.msg), "Failed to convert CIM Arguments to CMPI Arguments");
}

TEST_F(RequestsTest, AReasonGoesToTheObjectManagersLogAndToItsRequestAlone) {
  std::vector<std::string> logged;
  host::BrokerHandlers handlers;
  handlers.onLog = [&](int severity, const std::string& id, const std::string& text) {
    logged.push_back(std::to_string(severity) + " " + id + " " + text);
  };
  m_broker.setHandlers(handlers);
  const auto invoke = [&] { return m_provider->invokeMethod(itemPath("x"), "Do", {}); };
  m_plugin.returnValue = 3;
  m_plugin.beforeAnswer = [] { RefusalReason::set("drive 3 belongs to pool 2"); };
  const host::MethodOutcome refused = invoke();
  EXPECT_EQ(refused.rc, CMPI_RC_ERR_FAILED);
  EXPECT_EQ(refused.message, " :: Operation Failed") << "the answer itself stays as it is";
  EXPECT_EQ(refused.remarks, std::vector<std::string>{"drive 3 belongs to pool 2"});
  EXPECT_EQ(logged, std::vector<std::string>{"4 TVP drive 3 belongs to pool 2"});
  m_plugin.beforeAnswer = [] {};
  EXPECT_TRUE(invoke().remarks.empty()) << "without a reason of its own";
  m_plugin.beforeAnswer = [] {
    RefusalReason::set("of an enumeration");
    throw 1;
  };
  EXPECT_EQ(
      m_provider->enumerateInstances(itemPath("x")).remarks, std::vector<std::string>{"of an enumeration"});
  // An object manager that has no log to offer is asked nothing.
  CMPIBrokerEncFT table = *m_broker.cmpi()->eft;
  table.logMessage = nullptr;
  CMPIBroker silent = *m_broker.cmpi();
  silent.eft = &table;
  const RefusalReason reason;
  RefusalReason::set("for nobody");
  cim::adap::cmpi::logRefusalReason(reason, &silent);
  cim::adap::cmpi::logRefusalReason(reason, nullptr);
  EXPECT_EQ(logged.size(), 2U);
  {
    const RefusalReason inner;
    EXPECT_STREQ(inner.text(), "") << "a request within a request has a reason of its own";
    RefusalReason::set("of the inner one");
    EXPECT_STREQ(inner.text(), "of the inner one");
  }
  EXPECT_STREQ(reason.text(), "for nobody");
  // One that throws does not change how the request ended.
  table.logMessage = [](const CMPIBroker*, int, const char*, const char*, const CMPIString*) -> CMPIStatus {
    throw 1;
  };
  cim::adap::cmpi::logRefusalReason(reason, &silent);
}

}  // namespace
}  // namespace tvp::test
