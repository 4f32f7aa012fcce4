#include "CmpiTest.h"

#include <functional>

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

  /** An interface is fine with a null handle. */
  template <typename Interface>
  Interface* interface() const {
    static Interface dummy{};
    return (m_present & MI) != 0 ? &dummy : nullptr;
  }
  template <typename Object>
  Object* object(Argument which) const {
    static int handle = 0;
    static Object good{&handle, nullptr};
    static Object empty{nullptr, nullptr};
    return (m_present & which) != 0 ? &good : m_missing == Missing::Null ? nullptr : &empty;
  }
  const char* text(Argument which) const {
    return (m_present & which) != 0 ? "x" : m_missing == Missing::Null ? nullptr : "";
  }
  const char** properties() const {
    static const char* list[] = {"P", nullptr};
    return (m_present & PROPERTIES) != 0 ? list : nullptr;
  }

  const CMPIContext* context() const { return object<CMPIContext>(CONTEXT); }
  const CMPIResult* result() const { return object<CMPIResult>(RESULT); }
  const CMPIObjectPath* path() const { return object<CMPIObjectPath>(PATH); }
  const CMPISelectExp* filter() const { return object<CMPISelectExp>(FILTER); }

private:
  unsigned int m_present;
  Missing m_missing;
};

struct Function {
  const char* entry;  ///< the names in its traces
  const char* exit;
  const char* invalidExit;
  unsigned int required;
  bool reachesAdapter;
  std::function<CMPIStatus(const Arguments&)> call;
};

using InstanceMI = CMPIInstanceMI;
using AssociationMI = CMPIAssociationMI;
using IndicationMI = CMPIIndicationMI;
constexpr unsigned int REQUEST = MI | CONTEXT | RESULT | PATH;

const std::vector<Function>& functions() {
  static const std::vector<Function> all = {
      {"tvpCmpiMIEnumInstanceNames", "tvpCmpiMIEnumInstanceNames", "KvsCmpiMIEnumInstanceNames", REQUEST,
       true,
       [](const Arguments& a) {
         return tvpCmpiMIEnumInstanceNames(a.interface<InstanceMI>(), a.context(), a.result(), a.path());
       }},
      {"tvpCmpiMIEnumInstances", "tvpCmpiMIEnumInstances", "tvpCmpiMIEnumInstances", REQUEST, true,
       [](const Arguments& a) {
         return tvpCmpiMIEnumInstances(a.interface<InstanceMI>(), a.context(), a.result(), a.path(),
                                       a.properties());
       }},
      {"tvpCmpiMIGetInstance", "tvpCmpiMIGetInstance", "tvpCmpiMIGetInstance", REQUEST, true,
       [](const Arguments& a) {
         return tvpCmpiMIGetInstance(a.interface<InstanceMI>(), a.context(), a.result(), a.path(),
                                     a.properties());
       }},
      {"tvpCmpiMIGetInstance", "ZelCmpiMICreateInstance", "tvpCmpiMICreateInstance", REQUEST | INSTANCE, true,
       [](const Arguments& a) {
         return tvpCmpiMICreateInstance(a.interface<InstanceMI>(), a.context(), a.result(), a.path(),
                                        a.object<CMPIInstance>(INSTANCE));
       }},
      {"tvpCmpiMIModifyInstance", "tvpCmpiMIModifyInstance", "tvpCmpiMIModifyInstance", MI | PROPERTIES, true,
       [](const Arguments& a) {
         return tvpCmpiMIModifyInstance(a.interface<InstanceMI>(), a.context(), a.result(), a.path(),
                                        a.object<CMPIInstance>(INSTANCE), a.properties());
       }},
      {"tvpCmpiMIDeleteInstance", "tvpCmpiMIDeleteInstance", "tvpCmpiMIDeleteInstance", REQUEST, true,
       [](const Arguments& a) {
         return tvpCmpiMIDeleteInstance(a.interface<InstanceMI>(), a.context(), a.result(), a.path());
       }},
      {"KvsCmpiMIExecQuery", "tvpCmpiMIExecQuery", "tvpCmpiMIExecQuery", REQUEST | FIRST_TEXT | SECOND_TEXT,
       false,
       [](const Arguments& a) {
         return tvpCmpiMIExecQuery(a.interface<InstanceMI>(), a.context(), a.result(), a.path(),
                                   a.text(FIRST_TEXT), a.text(SECOND_TEXT));
       }},
      {"tvpCmpiMIInvokeMethod", "tvpCmpiMIInvokeMethod", "tvpCmpiMIInvokeMethod",
       REQUEST | FIRST_TEXT | INPUT | OUTPUT, true,
       [](const Arguments& a) {
         return tvpCmpiMIInvokeMethod(a.interface<CMPIMethodMI>(), a.context(), a.result(), a.path(),
                                      a.text(FIRST_TEXT), a.object<CMPIArgs>(INPUT),
                                      a.object<CMPIArgs>(OUTPUT));
       }},
      {"tvpCmpiMIAssociators", "tvpCmpiMIAssociators", "tvpCmpiMIAssociators", REQUEST, true,
       [](const Arguments& a) {
         return tvpCmpiMIAssociators(a.interface<AssociationMI>(), a.context(), a.result(), a.path(),
                                     a.text(FIRST_TEXT), a.text(SECOND_TEXT), nullptr, nullptr,
                                     a.properties());
       }},
      {"tvpCmpiMIAssociatorNames", "tvpCmpiMIAssociatorNames", "tvpCmpiMIAssociatorNames",
       REQUEST | FIRST_TEXT, true,
       [](const Arguments& a) {
         return tvpCmpiMIAssociatorNames(a.interface<AssociationMI>(), a.context(), a.result(), a.path(),
                                         a.text(FIRST_TEXT), a.text(SECOND_TEXT), nullptr, nullptr);
       }},
      {"tvpCmpiMIReferences", "tvpCmpiMIReferences", "tvpCmpiMIReferences", REQUEST, true,
       [](const Arguments& a) {
         return tvpCmpiMIReferences(a.interface<AssociationMI>(), a.context(), a.result(), a.path(),
                                    a.text(FIRST_TEXT), a.text(SECOND_TEXT), a.properties());
       }},
      {"tvpCmpiMIReferenceNames", "tvpCmpiMIReferenceNames", "tvpCmpiMIReferenceNames", REQUEST, true,
       [](const Arguments& a) {
         return tvpCmpiMIReferenceNames(a.interface<AssociationMI>(), a.context(), a.result(), a.path(),
                                        a.text(FIRST_TEXT), a.text(SECOND_TEXT));
       }},
      {"tvpCmpiMIAuthorizeFilter", "tvpCmpiMIAuthorizeFilter", "tvpCmpiMIAuthorizeFilter",
       MI | CONTEXT | FILTER | PATH | FIRST_TEXT | SECOND_TEXT, false,
       [](const Arguments& a) {
         return tvpCmpiMIAuthorizeFilter(a.interface<IndicationMI>(), a.context(), a.filter(),
                                         a.text(FIRST_TEXT), a.path(), a.text(SECOND_TEXT));
       }},
      {"tvpCmpiMIMustPoll", "tvpCmpiMIMustPoll", "tvpCmpiMIMustPoll",
       MI | CONTEXT | FILTER | PATH | FIRST_TEXT, false,
       [](const Arguments& a) {
         return tvpCmpiMIMustPoll(a.interface<IndicationMI>(), a.context(), a.filter(), a.text(FIRST_TEXT),
                                  a.path());
       }},
      {"tvpCmpiMIActivateFilter", "tvpCmpiMIActivateFilter", "tvpCmpiMIActivateFilter", MI, true,
       [](const Arguments& a) {
         return tvpCmpiMIActivateFilter(a.interface<IndicationMI>(), a.context(), a.filter(),
                                        a.text(FIRST_TEXT), a.path(), 1);
       }},
      {"tvpCmpiMIDeActivateFilter", "tvpCmpiMIDeActivateFilter", "tvpCmpiMIDeActivateFilter", MI, true,
       [](const Arguments& a) {
         return tvpCmpiMIDeActivateFilter(a.interface<IndicationMI>(), a.context(), a.filter(),
                                          a.text(FIRST_TEXT), a.path(), 1);
       }},
      {"tvpCmpiMIEnableIndications", "tvpCmpiMIEnableIndications", "tvpCmpiMIEnableIndications", MI | CONTEXT,
       true,
       [](const Arguments& a) {
         return tvpCmpiMIEnableIndications(a.interface<IndicationMI>(), a.context());
       }},
      {"tvpCmpiMIDisableIndications", "tvpCmpiMIDisableIndications", "tvpCmpiMIDisableIndications",
       MI | CONTEXT, true,
       [](const Arguments& a) {
         return tvpCmpiMIDisableIndications(a.interface<IndicationMI>(), a.context());
       }},
  };
  return all;
}

std::string messageOf(const CMPIStatus& status) {
  return status.msg == nullptr ? "(none)" : host::Request::read(status.msg);
}

std::string entering(const char* name) {
  return LogCapture::trace(std::string("Entering CMPIMI ") + name + "()");
}
std::string exiting(const char* name) {
  return LogCapture::trace(std::string("Exiting CMPIMI ") + name + "()");
}

// Arguments that are fine are told from missing ones by what is answered once the adapter is gone.
TEST_F(RunningProviderTest, EveryFunctionChecksItsArgumentsBeforeItAsksForTheAdapter) {
  m_provider->cleanup(true);
  host::Request request(m_broker);
  const std::string invalid = LogCapture::message(5, "The input parameters are invalid");
  const std::string gone = LogCapture::message(1, "Failed to get CMPIAdapter singleton instance");
  for (const Function& function : functions()) {
    for (unsigned int bit = 1; bit <= ALL; bit <<= 1U) {
      for (const Missing missing : {Missing::Null, Missing::Empty}) {
        m_log.clear();
        const CMPIStatus status = function.call(Arguments(ALL & ~bit, missing));
        const std::vector<std::string> lines = m_log.lines();
        SCOPED_TRACE(std::string(function.exit) + " without " + std::to_string(bit));
        ASSERT_GE(lines.size(), 2U);
        EXPECT_EQ(lines.front(), entering(function.entry));
        if ((function.required & bit) != 0) {
          EXPECT_EQ(status.rc, CMPI_RC_ERR_INVALID_PARAMETER);
          EXPECT_EQ(messageOf(status), "The input parameters are invalid");
          EXPECT_EQ(lines[lines.size() - 2], invalid);
          EXPECT_EQ(lines.back(), exiting(function.invalidExit));
        } else if (function.reachesAdapter) {
          EXPECT_EQ(status.rc, CMPI_RC_ERR_FAILED);
          EXPECT_EQ(messageOf(status), "Failed to get CMPIAdapter singleton instance");
          EXPECT_EQ(lines,
                    (std::vector<std::string>{entering(function.entry), gone, exiting(function.exit)}));
        } else {
          EXPECT_EQ(status.rc, CMPI_RC_OK);
          EXPECT_EQ(status.msg, nullptr);
          EXPECT_EQ(lines.back(), exiting(function.exit));
        }
      }
    }
  }
  m_log.clear();
  tvpCmpiMIActivateFilter(nullptr, nullptr, nullptr, nullptr, nullptr, 0);
  EXPECT_EQ(m_log.lines().at(1), LogCapture::message(5, "INVALID : Indication MI"));
  EXPECT_EQ(m_log.lines().at(2), invalid);
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
  // Neighbours of the same type in a table are easily swapped.
  EXPECT_EQ(instances.deleteInstance, tvpCmpiMIDeleteInstance);
  EXPECT_EQ(instances.enumerateInstances, tvpCmpiMIEnumInstances);
  EXPECT_EQ(m_provider->indicationMI()->ft->activateFilter, tvpCmpiMIActivateFilter);
  EXPECT_EQ(m_provider->indicationMI()->ft->disableIndications, tvpCmpiMIDisableIndications);
}

}  // namespace
}  // namespace tvp::test
