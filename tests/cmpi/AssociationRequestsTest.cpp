// SPDX-License-Identifier: Apache-2.0
#include "CmpiTest.h"
#include "cmpi/CMPIHelper.h"
#include "support/ScriptedPlugin.h"

namespace tvp::test {
namespace {

using namespace cim::fwf;
using cim::adap::cmpi::CMPIHelper;
using host::AssociationFilter;
using host::Value;

class AssociationRequestsTest : public RunningProviderTest {
protected:
  AssociationRequestsTest() { registerAssociationFixtures(); }

  static host::ObjectPath shelf(const char* id) { return path("TEST_Shelf", {{"Id", Value::string(id)}}); }
  static host::ObjectPath disk(const char* id) { return path("TEST_Disk", {{"Id", Value::string(id)}}); }
  static AssociationFilter through(const char* associationClass, const char* resultClass = "") {
    return {associationClass, resultClass, "", ""};
  }
  /** Class and identifier of every path. */
  static std::vector<std::string> ids(const std::vector<host::ObjectPath>& paths) {
    std::vector<std::string> result;
    result.reserve(paths.size());
    for (const host::ObjectPath& p : paths) {
      result.push_back(p.className + " " + p.key("Id")->asString());
    }
    return result;
  }
  using Texts = std::vector<std::string>;
};

TEST_F(AssociationRequestsTest, WithoutARelatedAssociationTheAnswerIsEmptySuccess) {
  const host::ObjectPath spare = path("TEST_Spare", {{"Id", Value::string("9")}});
  const AssociationFilter asResult = through("", "TEST_Contains");
  const host::PathsOutcome names = m_provider->associatorNames(spare, through("TEST_Contains"));
  EXPECT_TRUE(names.ok() && names.paths.empty());
  EXPECT_TRUE(m_provider->associators(spare, through("TEST_Contains")).ok());
  EXPECT_TRUE(m_provider->references(spare, asResult).ok());
  EXPECT_TRUE(m_provider->referenceNames(spare, asResult).ok());
  EXPECT_EQ(
      m_log.count(LogCapture::message(2, "Unrelated Association class TEST_Contains for TEST_Spare")), 4U);
}

// The source is at one end or it is not, whatever the other end is called.
TEST_F(AssociationRequestsTest, AnEndWithoutANameIsNobodysClass) {
  PluginsManager::getInstance()->registerPlugin(
      "test_oneend", new ScriptedPlugin("TEST_OneEnd", "", "TEST_Near"));
  for (const std::string source : {"TEST_Near", "TEST_Far", ""}) {
    m_log.clear();
    static_cast<void>(m_provider->associatorNames(path(source), through("TEST_OneEnd")));
    const bool unrelated = source != "TEST_Near";
    EXPECT_EQ(
        m_log.has(LogCapture::message(2, "Unrelated Association class TEST_OneEnd for " + source)),
        unrelated);
    EXPECT_EQ(m_log.has(LogCapture::trace("Exiting CMPIAdapter::ReturnObjectPaths()")), !unrelated);
  }
}

TEST_F(AssociationRequestsTest, AllButAssociatorNamesFindTheirClassesThemselves) {
  EXPECT_EQ(
      ids(m_provider->associatorNames(disk("3"), through("test_contains")).paths), Texts{"TEST_Shelf B"});
  EXPECT_EQ(
      ids(m_provider->associatorNames(shelf("B"), through("TEST_Contains", "TEST_Spare")).paths),
      Texts{"TEST_Spare 9"});
  AssociationFilter wrongRole = through("TEST_Contains");
  wrongRole.role = "Dependent";
  EXPECT_TRUE(m_provider->associatorNames(shelf("A"), wrongRole).paths.empty());
  for (const AssociationFilter& filter : {through("TEST_Contains"), through("")}) {
    const host::InstancesOutcome found = m_provider->associators(shelf("A"), filter);
    ASSERT_EQ(found.instances.size(), 2U);
    EXPECT_EQ(*found.instances[1].property("Label"), Value::string("TEST_Disk 2"));
  }
  const host::InstancesOutcome spares = m_provider->associators(shelf("B"), through("", "TEST_Spare"));
  ASSERT_EQ(spares.instances.size(), 1U);
  EXPECT_EQ(ids({spares.instances[0].path}), Texts{"TEST_Spare 9"});
  for (const char* name : {"", "TEST_Contains"}) {
    const AssociationFilter filter = through("", name);
    const host::InstancesOutcome instances = m_provider->references(disk("1"), filter);
    ASSERT_EQ(instances.instances.size(), 1U);
    EXPECT_EQ(instances.instances[0].property("Antecedent")->asReference().key("Id")->asString(), "A");
    const host::PathsOutcome names = m_provider->referenceNames(shelf("A"), filter);
    ASSERT_EQ(names.paths.size(), 2U);
    EXPECT_EQ(names.paths[0].className, "TEST_Contains");
    EXPECT_EQ(names.paths[1].key("Dependent")->asReference().key("Id")->asString(), "2");
  }
  EXPECT_TRUE(m_provider->references(shelf("C"), through("")).instances.empty());
}

TEST_F(AssociationRequestsTest, AssociationClassesAreChosenByNameAndByInheritance) {
  const auto schema = host::MofReader::readText(
      "class CIM_Box { [Key] string Id; }; class TEST_Crate : CIM_Box { string A; };"
      "class TEST_Base { [Key] string Id; }; class TEST_Derived : TEST_Base { string B; };",
      "classes.mof");
  host::Broker broker(schema);
  host::Request request(broker);
  PluginsManager* registry = PluginsManager::getInstance();
  registry->registerPlugin("test_base", new ScriptedPlugin("TEST_Base", "TEST_Near", "TEST_Far"));
  registry->registerPlugin("test_derived", new ScriptedPlugin("TEST_Derived", "TEST_Near", "TEST_Other"));
  registry->registerPlugin("test_standard", new ScriptedPlugin("TEST_Standard", "TEST_Near2", "CIM_Box"));
  registry->registerPlugin("test_oneend", new ScriptedPlugin("TEST_OneEnd", "", "TEST_Near"));
  const auto classes = [&](const char* source, const char* associationClass) {
    std::vector<std::string> out = {"kept"};
    CMPIHelper::GetAssociationClasses(
        CIMObjectPath("h", TEST_NAMESPACE, source, {}), associationClass, broker.cmpi(), out);
    return out;
  };
  EXPECT_EQ(classes("any", "test_BASE"), (Texts{"kept", "test_derived"})) << "not the class itself";
  EXPECT_TRUE(m_log.has(LogCapture::message(4, "test_derived is a child of test_BASE")));

  broker.resetCalls();
  EXPECT_EQ(classes("TEST_Near", nullptr), (Texts{"kept", "test_base", "test_derived"}));
  EXPECT_TRUE(m_log.has(LogCapture::message(4, "[STRING EQUAL] TEST_Near is related in test_base")));
  EXPECT_EQ(classes("test_near", nullptr), Texts{"kept"}) << "names are compared exactly";
  EXPECT_EQ(classes("TEST_Crate", nullptr), (Texts{"kept", "test_standard"}));
  EXPECT_TRUE(m_log.has(LogCapture::message(4, "[IsRelated] TEST_Crate is related in test_standard")));

  // The second test of an end decides when it alone can be made.
  int call = 0;
  failEveryCall(
      broker, CMPI_RC_ERR_FAILED, [&] { classes("TEST_Crate", nullptr); },
      [&](const std::string& name) {
        const bool chosen = ++call == 2 || isRelease(name);
        EXPECT_EQ(classes("TEST_Crate", nullptr).size(), chosen ? 2U : 1U);
      });
}

TEST_F(AssociationRequestsTest, ACandidateThatIsRefusedDoesNotHideTheOthers) {
  host::Broker broker(host::MofReader::readText(
      "class TEST_Base { [Key] string Id; }; class TEST_First : TEST_Base {}; class TEST_Last : TEST_Base "
      "{};",
      "classes.mof"));
  host::Request request(broker);
  PluginsManager* registry = PluginsManager::getInstance();
  registry->registerPlugin("test_first", new ScriptedPlugin("TEST_First", "TEST_Near", "TEST_Far"));
  registry->registerPlugin("test_last", new ScriptedPlugin("TEST_Last", "TEST_Near", "TEST_Far"));
  const auto candidates = [&] {
    Texts out;
    CMPIHelper::GetAssociationClasses(
        CIMObjectPath("h", TEST_NAMESPACE, "any", {}), "TEST_Base", broker.cmpi(), out);
    return out;
  };
  EXPECT_EQ(candidates(), (Texts{"test_first", "test_last"}));
  std::size_t refusals = 0;
  failEveryCall(broker, CMPI_RC_ERR_FAILED, candidates, [&](const std::string& call) {
    const Texts found = candidates();
    EXPECT_GE(found.size(), 1U);
    refusals += !isRelease(call) && found == Texts{"test_last"} ? 1 : 0;
  });
  EXPECT_EQ(refusals, 2U) << "its path cannot be made, or cannot be judged";
}

}  // namespace
}  // namespace tvp::test
