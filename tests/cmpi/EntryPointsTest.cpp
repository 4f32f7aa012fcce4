// SPDX-License-Identifier: Apache-2.0
#include "CmpiTest.h"

#include <functional>
#include <new>
#include <tuple>
#include <type_traits>

namespace tvp::test {
namespace {

/** The arguments of the exported functions, as bits. */
enum Argument : unsigned int {
  MI = 1,
  CONTEXT = 2,
  RESULT = 4,
  PATH = 8,
  INSTANCE = 16,
  INPUT = 32,
  OUTPUT = 64,
  FILTER = 128,
  PROPERTIES = 256,
  FIRST_TEXT = 512,
  SECOND_TEXT = 1024,
  ALL = 2047
};

/** What stands in the place of an argument that is missing. */
enum class Missing { Null, Empty };

/** Arguments that are good to be looked at; no function that gets them may go on to use them. */
class Arguments {
public:
  Arguments(unsigned int present, Missing missing) : m_present(present), m_missing(missing) {}

  /** The next argument of a function, by its type; texts in their order. */
  template <typename Parameter>
  Parameter next() {
    if constexpr (std::is_same_v<Parameter, const char*>) {
      m_texts = m_texts == 0 ? FIRST_TEXT : m_texts << 1U;
      return (m_present & m_texts) != 0 ? "x" : m_missing == Missing::Null ? nullptr : "";
    } else if constexpr (std::is_same_v<Parameter, const char**>) {
      static const char* list[] = {"P", nullptr};
      return (m_present & PROPERTIES) != 0 ? list : nullptr;
    } else if constexpr (std::is_same_v<Parameter, CMPIBoolean>) {
      return 1;
    } else {
      return object<std::remove_const_t<std::remove_pointer_t<Parameter>>>(bitOf<Parameter>());
    }
  }

private:
  template <typename Parameter>
  static constexpr unsigned int bitOf() {
    return std::is_same_v<Parameter, const CMPIContext*>      ? CONTEXT
           : std::is_same_v<Parameter, const CMPIResult*>     ? RESULT
           : std::is_same_v<Parameter, const CMPIObjectPath*> ? PATH
           : std::is_same_v<Parameter, const CMPIInstance*>   ? INSTANCE
           : std::is_same_v<Parameter, const CMPIArgs*>       ? INPUT
           : std::is_same_v<Parameter, CMPIArgs*>             ? OUTPUT
           : std::is_same_v<Parameter, const CMPISelectExp*>  ? FILTER
                                                              : MI;
  }
  template <typename Object>
  Object* object(unsigned int bit) const {
    static int handle = 0;
    static Object good{&handle, nullptr};
    static Object empty{nullptr, nullptr};
    if (bit == MI) {  // an interface is fine with a null handle
      return (m_present & MI) != 0 ? &empty : nullptr;
    }
    return (m_present & bit) != 0 ? &good : m_missing == Missing::Null ? nullptr : &empty;
  }

  unsigned int m_present;
  Missing m_missing;
  unsigned int m_texts = 0;
};

struct Function {
  const char* name;
  unsigned int required;
  bool reachesAdapter;
  std::function<CMPIStatus(Arguments)> call;
};

template <typename... Parameters>
std::function<CMPIStatus(Arguments)> calling(CMPIStatus (*function)(Parameters...)) {
  return [function](Arguments arguments) {
    return std::apply(function, std::tuple<Parameters...>{arguments.next<Parameters>()...});
  };
}

constexpr unsigned int REQUEST = MI | CONTEXT | RESULT | PATH;
constexpr unsigned int FILTERING = MI | CONTEXT | FILTER | PATH | FIRST_TEXT;

const std::vector<Function>& functions() {
  static const std::vector<Function> all = {
      {"tvpCmpiMIEnumInstanceNames", REQUEST, true, calling(tvpCmpiMIEnumInstanceNames)},
      {"tvpCmpiMIEnumInstances", REQUEST, true, calling(tvpCmpiMIEnumInstances)},
      {"tvpCmpiMIGetInstance", REQUEST, true, calling(tvpCmpiMIGetInstance)},
      {"tvpCmpiMICreateInstance", REQUEST | INSTANCE, true, calling(tvpCmpiMICreateInstance)},
      {"tvpCmpiMIModifyInstance", MI | PROPERTIES, true, calling(tvpCmpiMIModifyInstance)},
      {"tvpCmpiMIDeleteInstance", REQUEST, true, calling(tvpCmpiMIDeleteInstance)},
      {"tvpCmpiMIExecQuery", REQUEST | FIRST_TEXT | SECOND_TEXT, false, calling(tvpCmpiMIExecQuery)},
      {"tvpCmpiMIInvokeMethod", REQUEST | FIRST_TEXT | INPUT | OUTPUT, true, calling(tvpCmpiMIInvokeMethod)},
      {"tvpCmpiMIAssociators", REQUEST, true, calling(tvpCmpiMIAssociators)},
      {"tvpCmpiMIAssociatorNames", REQUEST | FIRST_TEXT, true, calling(tvpCmpiMIAssociatorNames)},
      {"tvpCmpiMIReferences", REQUEST, true, calling(tvpCmpiMIReferences)},
      {"tvpCmpiMIReferenceNames", REQUEST, true, calling(tvpCmpiMIReferenceNames)},
      {"tvpCmpiMIAuthorizeFilter", FILTERING | SECOND_TEXT, false, calling(tvpCmpiMIAuthorizeFilter)},
      {"tvpCmpiMIMustPoll", FILTERING, false, calling(tvpCmpiMIMustPoll)},
      {"tvpCmpiMIActivateFilter", MI, true, calling(tvpCmpiMIActivateFilter)},
      {"tvpCmpiMIDeActivateFilter", MI, true, calling(tvpCmpiMIDeActivateFilter)},
      {"tvpCmpiMIEnableIndications", MI | CONTEXT, true, calling(tvpCmpiMIEnableIndications)},
      {"tvpCmpiMIDisableIndications", MI | CONTEXT, true, calling(tvpCmpiMIDisableIndications)},
  };
  return all;
}

std::string messageOf(const CMPIStatus& status) {
  return status.msg == nullptr ? "(none)" : host::Request::read(status.msg);
}

// Arguments that are fine are told from missing ones by what is answered once the adapter is gone.
TEST_F(RunningProviderTest, EveryFunctionChecksItsArgumentsBeforeItAsksForTheAdapter) {
  static_cast<void>(m_provider->cleanup(true));
  host::Request request(m_broker);
  for (const Function& function : functions()) {
    for (unsigned int bit = 1; bit <= ALL; bit <<= 1U) {
      for (const Missing missing : {Missing::Null, Missing::Empty}) {
        SCOPED_TRACE(std::string(function.name) + " without " + std::to_string(bit));
        const CMPIStatus status = function.call(Arguments(ALL & ~bit, missing));
        if ((function.required & bit) != 0) {
          EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
          EXPECT_EQ(messageOf(status), "The input parameters are invalid");
        } else if (function.reachesAdapter) {
          EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
          EXPECT_EQ(messageOf(status), "Failed to get CMPIAdapter singleton instance");
        } else {
          EXPECT_EQ(status.rc, CMPI_RC_OK);
          EXPECT_EQ(messageOf(status), "(none)");
        }
      }
    }
  }
  EXPECT_EQ(m_log.count(LogCapture::message(5, "INVALID : Indication MI")), 2U);
}

// An object manager in C++ may run out of memory where the provider makes a message for its answer.
TEST_F(RunningProviderTest, ABrokerThatThrowsInsteadOfMakingAMessageIsAnsweredWithoutOne) {
  static CMPIBrokerEncFT makers;
  static CMPIBroker broker;
  makers = *m_broker.cmpi()->eft;
  makers.newString = [](const CMPIBroker*, const char*, CMPIStatus*) -> CMPIString* {
    throw std::bad_alloc();
  };
  broker = *m_broker.cmpi();
  broker.eft = &makers;
  CMPIInstanceMI* mi = tarvexProProvider_Create_InstanceMI(&broker, nullptr, nullptr);
  for (const Function& function : functions()) {
    const CMPIStatus status = function.call(Arguments(0, Missing::Null));
    EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER) << function.name;
    EXPECT_EQ(status.msg, nullptr) << function.name;
  }
  const NoSleep noSleep;
  static_cast<void>(m_provider->cleanup(true));
  EXPECT_EQ(tvpCmpiMICleanup(mi, nullptr, 1).rc, CMPI_RC_OK) << "with a warning that cannot be made";
  EXPECT_TRUE(m_log.has(LogCapture::trace("Exiting CMPIAdapter::~CMPIAdapter()")));
  EXPECT_EQ(functions().front().call(Arguments(ALL, Missing::Null)).msg, nullptr) << "without an adapter";
}

// Disabling, enabling and deactivating cannot fail in the adapter, so that their line is never written.
TEST_F(RunningProviderTest, EveryFailedOperationIsNamedOnTheLog) {
  const host::ObjectPath at = path("TEST_Part", {{"Id", host::Value::string("1")}});
  const host::Instance instance{at, {}};
  const host::AssociationFilter through{"TEST_Contains", "", "", ""};
  const std::vector<std::pair<std::string, std::function<host::Outcome()>>> operations = {
      {"EnumInstanceNames", [&] { return m_provider->enumerateInstanceNames(at); }},
      {"EnumInstances", [&] { return m_provider->enumerateInstances(at); }},
      {"GetInstance", [&] { return m_provider->getInstance(at); }},
      {"CreateInstance", [&] { return m_provider->createInstance(at, instance); }},
      {"ModifyInstance",
       [&] { return m_provider->modifyInstance(at, instance, std::vector<std::string>()); }},
      {"DeleteInstance", [&] { return m_provider->deleteInstance(at); }},
      {"InvokeMethod", [&] { return m_provider->invokeMethod(at, "Any", {}); }},
      {"Associators", [&] { return m_provider->associators(at, through); }},
      {"AssociatorNames", [&] { return m_provider->associatorNames(at, through); }},
      {"References", [&] { return m_provider->references(at, through); }},
      {"ReferenceNames", [&] { return m_provider->referenceNames(at, through); }},
      {"ActivateFilter", [&] {
         const host::Request request(m_broker);
         host::Outcome outcome;
         outcome.rc =
             tvpCmpiMIActivateFilter(m_provider->indicationMI(), nullptr, nullptr, nullptr, nullptr, 1).rc;
         return outcome;
       }}};
  for (const auto& [name, call] : operations) {
    SCOPED_TRACE(name);
    m_log.clear();
    m_broker.failCall(1, CMPI_RC_ERR_FAILED);
    EXPECT_FALSE(call().ok());
    m_broker.failCall(0, CMPI_RC_OK);
    EXPECT_EQ(
        m_log.count(LogCapture::message(
            2, name + " operation failed,                 refer previous log lines for reason")),
        1U);
  }
}

TEST_F(RunningProviderTest, TheTablesAreThoseOfTheInterfacesByName) {
  const CMPIInstanceMIFT& instances = *m_provider->instanceMI()->ft;
  EXPECT_STREQ(instances.miName, "instancetarvexProProvider");
  EXPECT_STREQ(m_provider->methodMI()->ft->miName, "methodtarvexProProvider");
  EXPECT_STREQ(m_provider->associationMI()->ft->miName, "associationtarvexProProvider");
  EXPECT_STREQ(m_provider->indicationMI()->ft->miName, "IndicationtarvexProProvider");
  EXPECT_EQ(instances.ftVersion, 200);
  EXPECT_EQ(m_provider->indicationMI()->ft->miVersion, 200);
  EXPECT_EQ(m_provider->instanceMI()->hdl, nullptr);
}

}  // namespace
}  // namespace tvp::test
