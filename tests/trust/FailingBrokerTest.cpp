// SPDX-License-Identifier: Apache-2.0
// Whatever call into the object manager fails, the provider answers, changes all or nothing, and goes on.
#include "TrustFixture.h"
#include "life/AnswerText.h"

#include <gmock/gmock.h>

#include <functional>
#include <set>
#include <tuple>

#include <sys/wait.h>
#include <unistd.h>

namespace tvp::test {
namespace {

using host::Value;

/** What a client sees of an answer: status, message and the rest. */
using Answer = std::tuple<CMPIrc, std::string, std::string>;

template <typename Outcome>
Answer seen(const Outcome& outcome) {
  const std::string text = answerText(outcome);  // status and message are its first line
  return {outcome.rc, outcome.message, text.substr(text.find('\n') + 1)};
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
    EXPECT_THAT(std::get<CMPIrc>(expected), testing::AnyOf(CMPI_RC_OK, CMPI_RC_ERR_NOT_SUPPORTED));
    const std::string changed = state();
    std::vector<std::string> calls;
    for (std::size_t i = 0; i < m_broker.callCount(); ++i) {
      calls.push_back(m_broker.callName(i));
    }
    m_broker.resetCalls(false);
    for (std::size_t i = 0; i < calls.size() * m_ways.size() && !HasFailure(); ++i) {
      const std::size_t number = i % calls.size();
      const std::string& call = calls[number];
      SCOPED_TRACE("call " + std::to_string(number + 1) + ", " + call);
      arrange();
      m_broker.failCall(number + 1, CMPI_RC_ERR_FAILED, m_ways[i / calls.size()]);
      const Answer answer = request();
      m_broker.failCall(0, CMPI_RC_OK);
      check(answer, expected, call);
      const std::string after = state();
      EXPECT_TRUE(after == m_standard || after == changed) << "half a change:\n" << after;
      arrange();
      EXPECT_EQ(request(), expected) << "the next request";
    }
    m_calls += calls.size();
  }

  /** Calls seen by survives(). */
  std::size_t m_calls = 0;
  /** An object manager in C++ fails with exceptions, too. */
  std::vector<host::Failing> m_ways = {host::Failing::WithStatus, host::Failing::WithException};

private:
  void check(const Answer& answer, const Answer& expected, const std::string& call) {
    const auto& [rc, message, content] = answer;
    if (rc == std::get<CMPIrc>(expected)) {
      EXPECT_EQ(content, std::get<2>(expected)) << "success, with another answer";
      return;
    }
    // Access denied: the name of the user could not be read.
    static const std::set<CMPIrc> documented = {
        CMPI_RC_ERR_FAILED,        CMPI_RC_ERR_ACCESS_DENIED,     CMPI_RC_ERR_INVALID_NAMESPACE,
        CMPI_RC_ERR_INVALID_CLASS, CMPI_RC_ERR_INVALID_PARAMETER, CMPI_RC_ERR_NOT_SUPPORTED};
    EXPECT_EQ(documented.count(rc), 1U) << rc << " '" << message << "' " << content;
    const bool madeMessage = call.find("newString") != std::string::npos;  // which failed
    EXPECT_TRUE(madeMessage || !message.empty()) << rc << " '" << message << "' " << content;
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
  m_ways = {host::Failing::WithStatus};  // exceptions take the same way out of every method
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

/** Starts the provider in a process of its own with one call failing, and asks for the identity.
 * @return the number of calls that the start made; 0 when the provider did not start as it should */
int startWithFailure(const std::string& stateFile, int call, host::Failing how) {
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
    broker.failCall(static_cast<std::uint64_t>(call), CMPI_RC_ERR_FAILED, how);
    host::Provider provider(
        broker, {tarvexProProvider_Create_InstanceMI, tarvexProProvider_Create_MethodMI,
                 tarvexProProvider_Create_AssociationMI, tarvexProProvider_Create_IndicationMI});
    const std::uint64_t made = broker.callCount();
    broker.failCall(0, CMPI_RC_OK);
    const host::InstancesOutcome identity =
        provider.enumerateInstances({TEST_NAMESPACE, "TVP_TarvexProIdentity", {}, ""});
    const bool good =
        made < 256 && identity.ok() && identity.instances.size() == 1 && broker.breaches().empty();
    ::_exit(good ? static_cast<int>(made) : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 0;
}

TEST(FailingBroker, DoesNotKeepTheProviderFromStartingWithoutOptionalServices) {
  const TemporaryDirectory directory;
  const int calls = startWithFailure(directory.file("state.db"), 0, host::Failing::WithStatus);
  ASSERT_GT(calls, 3);
  for (int call = 1; call <= calls; ++call) {
    for (const host::Failing how : {host::Failing::WithStatus, host::Failing::WithException}) {
      EXPECT_GT(startWithFailure(directory.file("state.db"), call, how), 0) << "call " << call;
    }
  }
}

}  // namespace
}  // namespace tvp::test
