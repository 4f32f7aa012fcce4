// SPDX-License-Identifier: Apache-2.0
// Whatever call into the object manager fails, the provider answers, changes all or nothing, and goes on.
#include "TrustFixture.h"
#include "cmpi/CMPIAdapter.h"
#include "host/schema/ObjectPathText.h"

#include <csignal>
#include <functional>
#include <set>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace tvp::test {
namespace {

using cim::adap::cmpi::CMPIAdapter;
using host::Value;

/** What a client sees of an answer. */
struct Answer {
  CMPIrc rc;
  std::string message;
  std::string content;

  bool operator==(const Answer& other) const {
    return rc == other.rc && message == other.message && content == other.content;
  }
};

std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
  return stream << answer.rc << " '" << answer.message << "' " << answer.content;
}

std::string textOf(const std::vector<host::NamedValue>& values) {
  std::string text;
  for (const host::NamedValue& value : values) {
    text += " " + value.name + "=" + value.value.toText();
  }
  return text;
}

Answer seen(const host::Outcome& outcome) {
  return {outcome.rc, outcome.message, ""};
}
Answer seen(const host::PathsOutcome& outcome) {
  Answer answer{outcome.rc, outcome.message, ""};
  for (const host::ObjectPath& path : outcome.paths) {
    answer.content += toPathText(path) + "\n";
  }
  return answer;
}
Answer seen(const host::InstancesOutcome& outcome) {
  Answer answer{outcome.rc, outcome.message, ""};
  for (const host::Instance& instance : outcome.instances) {
    answer.content += toPathText(instance.path) + textOf(instance.properties) + "\n";
  }
  return answer;
}
Answer seen(const host::MethodOutcome& outcome) {
  return {outcome.rc, outcome.message, outcome.returnValue.toText() + textOf(outcome.output.values)};
}

class FailingBrokerTest : public TrustTest {
protected:
  using Request = std::function<Answer()>;

  /** Makes a request once for each of its calls into the broker, with that call failing. */
  void survives(const std::string& name, const Request& request) {
    SCOPED_TRACE(name);
    arrange();
    m_broker.resetCalls(true);
    const Answer expected = request();
    EXPECT_TRUE(expected.rc == CMPI_RC_OK || expected.rc == CMPI_RC_ERR_NOT_SUPPORTED) << expected;
    const std::string changed = state();
    std::vector<std::string> calls;
    for (std::size_t i = 0; i < m_broker.callCount(); ++i) {
      calls.push_back(m_broker.callName(i));
    }
    m_broker.resetCalls(false);
    for (std::size_t i = 0; i < calls.size() && !HasFailure(); ++i) {
      SCOPED_TRACE("call " + std::to_string(i + 1) + ", " + calls[i]);
      arrange();
      m_broker.failCall(i + 1, CMPI_RC_ERR_FAILED);
      const Answer answer = request();
      m_broker.failCall(0, CMPI_RC_OK);
      check(answer, expected, calls[i]);
      const std::string after = state();
      EXPECT_TRUE(after == m_standard || after == changed) << "half a change:\n" << after;
      arrange();
      EXPECT_EQ(request(), expected) << "the next request";
    }
    m_calls += calls.size();
  }

  /** Calls seen by survives(). */
  std::size_t m_calls = 0;

private:
  void check(const Answer& answer, const Answer& expected, const std::string& call) {
    if (answer.rc == expected.rc) {
      EXPECT_EQ(answer.content, expected.content) << "success, with another answer";
      return;
    }
    // Access denied: the name of the user could not be read.
    static const std::set<CMPIrc> documented = {
        CMPI_RC_ERR_FAILED,        CMPI_RC_ERR_ACCESS_DENIED,     CMPI_RC_ERR_INVALID_NAMESPACE,
        CMPI_RC_ERR_INVALID_CLASS, CMPI_RC_ERR_INVALID_PARAMETER, CMPI_RC_ERR_NOT_SUPPORTED};
    EXPECT_EQ(documented.count(answer.rc), 1U) << answer;
    // A refused result is passed on with the object manager's status; creating the message can fail as well.
    const bool ownStatus = call.find("CMPIResult.") == 0 || call.find("newString") != std::string::npos;
    EXPECT_TRUE(ownStatus || !answer.message.empty()) << answer;
  }
};

TEST_F(FailingBrokerTest, IsSurvivedByEveryInstanceRequestForEveryClass) {
  for (const host::SchemaClass* schemaClass : m_broker.schema().classes()) {
    const host::ObjectPath all = path(schemaClass->name);
    const auto names = m_provider->enumerateInstanceNames(all).paths;
    const host::ObjectPath one = names.empty() ? all : managerPath(names.back());
    const auto instances = m_provider->enumerateInstances(all).instances;
    const host::Instance instance =
        instances.empty() ? m_broker.schema().emptyInstance(one) : instances.back();
    survives("enumerate " + all.className, [&] { return seen(m_provider->enumerateInstances(all)); });
    survives("names " + all.className, [&] { return seen(m_provider->enumerateInstanceNames(all)); });
    survives("get " + all.className, [&] { return seen(m_provider->getInstance(one)); });
    survives("modify " + all.className, [&] { return seen(m_provider->modifyInstance(one, instance)); });
    survives("create " + all.className, [&] { return seen(m_provider->createInstance(all, instance)); });
    survives("delete " + all.className, [&] { return seen(m_provider->deleteInstance(one)); });
  }
  EXPECT_GT(m_calls, 500U) << "the requests have become something else";
}

TEST_F(FailingBrokerTest, IsSurvivedByEveryMethodOfEveryClass) {
  std::size_t methods = 0;
  for (const host::SchemaClass* schemaClass : m_broker.schema().classes()) {
    for (const host::SchemaMethod& method : schemaClass->methods) {
      const host::ObjectPath target = path(schemaClass->name);
      const host::MethodOutcome good = m_provider->invokeMethod(target, method.name, goodArguments(method));
      EXPECT_TRUE(good.ok()) << method.name << ": " << good.message;
      EXPECT_EQ(good.returnValue, Value::uint32(0)) << method.name;
      survives(schemaClass->name + "." + method.name, [&] {
        return seen(m_provider->invokeMethod(target, method.name, goodArguments(method)));
      });
      ++methods;
    }
  }
  EXPECT_GE(methods, 13U);
}

TEST_F(FailingBrokerTest, IsSurvivedByAssociationsAndSubscriptions) {
  registerAssociationFixtures();
  const host::ObjectPath shelf = path("TEST_Shelf", {{"Id", Value::string("A")}});
  for (const char* result : {"", "TEST_Disk"}) {
    const host::AssociationFilter filter{"TEST_Contains", result, "", ""};
    const host::AssociationFilter references{"", "TEST_Contains", "", ""};
    survives("associators", [&] { return seen(m_provider->associators(shelf, filter)); });
    survives("associatorNames", [&] { return seen(m_provider->associatorNames(shelf, filter)); });
    survives("references", [&] { return seen(m_provider->references(shelf, references)); });
    survives("referenceNames", [&] { return seen(m_provider->referenceNames(shelf, references)); });
  }
  survives("authorizeFilter", [&] { return seen(m_provider->authorizeFilter({})); });
  survives("mustPoll", [&] { return seen(m_provider->mustPoll({})); });
  survives("activateFilter", [&] { return seen(m_provider->activateFilter({})); });
  survives("deActivateFilter", [&] { return seen(m_provider->deActivateFilter({})); });
}

TEST_F(FailingBrokerTest, LosesOneDeliveryAndTheNextOneArrives) {
  std::size_t delivered = 0;
  host::BrokerHandlers handlers;
  handlers.onIndication = [&](const std::string&, const host::Instance&) {
    ++delivered;
    return CMPI_RC_OK;
  };
  m_broker.setHandlers(handlers);
  EXPECT_TRUE(m_provider->activateFilter({}).ok());
  EXPECT_TRUE(m_provider->enableIndications().ok());
  const auto deliver = [] {
    bool result = false;
    std::thread([&] {
      cim::fwf::CIMInstance indication = instanceOf(
          "TVP_CIMIndication", {scalar<std::string>("eventDesc", cim::fwf::PDT_STRING, "text", true),
                                scalar("eventCode", cim::fwf::PDT_UINT32, 701U)});
      result = CMPIAdapter::DeliverIndication(indication);
    }).join();
    return result;
  };
  failEveryCall(m_broker, CMPI_RC_ERR_FAILED, deliver, [&](const std::string& call) {
    std::size_t before = delivered;
    const bool succeeded = deliver();
    EXPECT_TRUE(!succeeded || delivered == before + 1) << "success without a delivery";
    EXPECT_TRUE(isRelease(call) || m_broker.unreleasedObjects() == 0);
    if (call == "CMPIBroker.attachThread") {
      m_broker.clearBreaches();  // the reason is created as a string of the broker nevertheless
    }
    m_broker.failCall(0, CMPI_RC_OK);
    before = delivered;
    EXPECT_TRUE(deliver());
    EXPECT_EQ(delivered, before + 1);
  });
}

/** Starts the provider in a process of its own with one call failing, and asks for the identity. */
int startWithFailure(const std::string& stateFile, std::uint64_t call, std::uint64_t& calls) {
  int end[2];
  if (::pipe(end) != 0) {
    return -1;
  }
  const pid_t child = ::fork();
  if (child == 0) {
    ::setenv("VOLTVK_STATE", stateFile.c_str(), 1);
    host::Broker broker(productSchema());
    host::BrokerHandlers handlers;
    handlers.onUpcall = [](const host::Upcall& upcall) {
      host::ObjectPath profile = upcall.path;
      profile.keys = {{"InstanceID", Value::string("SNIA+SMI-S+1.5.0")}};
      return host::UpcallAnswer{CMPI_RC_OK, "", {Value::reference(profile)}, {}};
    };
    broker.setHandlers(handlers);
    broker.resetCalls();
    broker.failCall(call, CMPI_RC_ERR_FAILED);
    host::Provider provider(
        broker, {tarvexProProvider_Create_InstanceMI, tarvexProProvider_Create_MethodMI,
                 tarvexProProvider_Create_AssociationMI, tarvexProProvider_Create_IndicationMI});
    const std::uint64_t made = broker.callCount();
    broker.failCall(0, CMPI_RC_OK);
    const host::InstancesOutcome identity =
        provider.enumerateInstances({TEST_NAMESPACE, "TVP_TarvexProIdentity", {}, ""});
    const bool good = identity.ok() && identity.instances.size() == 1 && broker.breaches().empty() &&
                      ::write(end[1], &made, sizeof made) == static_cast<ssize_t>(sizeof made);
    ::_exit(good ? 0 : 1);
  }
  ::close(end[1]);
  const ssize_t count = ::read(end[0], &calls, sizeof calls);
  ::close(end[0]);
  int status = -1;
  ::waitpid(child, &status, 0);
  return count == static_cast<ssize_t>(sizeof calls) ? status : -1;
}

TEST(FailingBroker, DoesNotKeepTheProviderFromStartingWithoutOptionalServices) {
  const TemporaryDirectory directory;
  std::uint64_t calls = 0;
  ASSERT_EQ(startWithFailure(directory.file("state.db"), 0, calls), 0);
  ASSERT_GT(calls, 3U);
  for (std::uint64_t call = 1; call <= calls; ++call) {
    std::uint64_t ignored = 0;
    EXPECT_EQ(startWithFailure(directory.file("state.db"), call, ignored), 0) << "call " << call;
  }
}

}  // namespace
}  // namespace tvp::test
