// SPDX-License-Identifier: Apache-2.0
// The association operations, on an association class that only tests have.
#include "CIM/Framework/FrameworkFacade.h"
#include "support/AssociationFixtures.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace tvp::cim::fwf;
using namespace tvp::test;
using testing::UnorderedElementsAreArray;

namespace {

class AssociationPlugin : public testing::Test {
protected:
  void SetUp() override {
    m_facade = FrameworkFacade::getInstance();
    m_facade->initialize();
    registerAssociationFixtures();
    m_plugin = m_facade->getPlugIn("TEST_Contains");
  }

  FrameworkFacade* m_facade = nullptr;
  AbstractProviderPlugin* m_plugin = nullptr;
};

std::string shortName(const CIMObjectPath& path) {
  return path.className() + " " + path.getKey("Id").stringSlot().m_values.front();
}

}  // namespace

TEST_F(AssociationPlugin, FindsTheFarEndsThatPassTheFilters) {
  struct Case {
    CIMObjectPath source;
    std::string resultClass;
    std::string role;
    std::string resultRole;
    std::vector<std::string> found;
  };
  CIMObjectPath otherCase = fixturePath("test_shelf", "A");
  otherCase.setHost("elsewhere");
  const CIMObjectPath otherNamespace("", "root/other", "TEST_Shelf", otherCase.getKeyBindings());
  const std::vector<Case> cases = {
      {fixturePath("TEST_Shelf", "A"), "", "", "", {"TEST_Disk 1", "TEST_Disk 2"}},
      {otherCase, "", "", "", {"TEST_Disk 1", "TEST_Disk 2"}},
      {otherNamespace, "", "", "", {}},
      {fixturePath("TEST_Shelf", "B"), "", "", "", {"TEST_Disk 3", "TEST_Spare 9"}},
      {fixturePath("TEST_Shelf", "B"), "test_SPARE", "", "", {"TEST_Spare 9"}},
      {fixturePath("TEST_Shelf", "B"), "TEST_Shelf", "", "", {}},
      {fixturePath("TEST_Shelf", "B"), "", "ANTECEDENT", "dependent", {"TEST_Disk 3", "TEST_Spare 9"}},
      {fixturePath("TEST_Shelf", "B"), "", "Dependent", "", {}},
      {fixturePath("TEST_Shelf", "B"), "", "", "Antecedent", {}},
      {fixturePath("TEST_Shelf", "C"), "", "", "", {}},
      {fixturePath("TEST_Disk", "2"), "", "", "", {"TEST_Shelf A"}},
  };
  for (Case tested : cases) {
    SCOPED_TRACE(
        tested.source.toString() + " " + tested.resultClass + " " + tested.role + " " + tested.resultRole);
    std::string association = "Test_Contains";
    std::vector<CIMObjectPath> names;
    m_facade->associatorsNames(
        tested.source, association, names, tested.resultClass, tested.role, tested.resultRole);
    std::vector<std::string> found;
    std::transform(names.begin(), names.end(), std::back_inserter(found), shortName);
    EXPECT_THAT(found, UnorderedElementsAreArray(tested.found));

    std::vector<CIMInstance> instances;
    m_facade->associators(
        tested.source, association, instances, tested.resultClass, tested.role, tested.resultRole, nullptr);
    found.clear();
    for (const CIMInstance& instance : instances) {
      found.push_back(shortName(instance.getPath()));
    }
    EXPECT_THAT(found, UnorderedElementsAreArray(tested.found));
  }
}

TEST_F(AssociationPlugin, ReturnsTheRequestedPropertiesOfAFarEnd) {
  CIMObjectPath disk = fixturePath("TEST_Disk", "2");
  std::string association = "TEST_Contains";
  std::string any;
  const char* label[] = {"LABEL", nullptr};
  const char* nothing[] = {nullptr};
  const std::vector<std::pair<const char**, std::size_t>> cases = {{nullptr, 2}, {label, 2}, {nothing, 1}};
  for (const auto& [list, count] : cases) {
    std::vector<CIMInstance> found;
    m_facade->associators(disk, association, found, any, any, any, list);
    ASSERT_EQ(1U, found.size());
    EXPECT_EQ(count, found[0].getPropertyCount());
    EXPECT_EQ(fixturePath("TEST_Shelf", "A"), found[0].getPath());
  }
}

TEST_F(AssociationPlugin, FindsTheAssociationsOfAnEnd) {
  struct Case {
    CIMObjectPath source;
    const char* resultClass;
    const char* role;
    std::size_t count;
  };
  const std::vector<Case> cases = {
      {fixturePath("TEST_Shelf", "A"), "", "", 2},
      {fixturePath("TEST_Shelf", "A"), "test_contains", "antecedent", 2},
      {fixturePath("TEST_Shelf", "A"), "", "Dependent", 0},
      {fixturePath("TEST_Shelf", "A"), "TEST_Other", "", 0},
      {fixturePath("TEST_Disk", "3"), "", "", 1},
      {fixturePath("TEST_Shelf", "C"), "", "", 0}};
  for (Case tested : cases) {
    SCOPED_TRACE(tested.source.toString() + " " + tested.resultClass + " " + tested.role);
    std::vector<CIMInstance> instances;
    m_plugin->references(tested.source, tested.resultClass, instances, tested.role);
    EXPECT_EQ(tested.count, instances.size());
    std::vector<CIMObjectPath> names;
    m_plugin->referencesNames(tested.source, tested.resultClass, tested.role, names);
    ASSERT_EQ(tested.count, names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ("TEST_Contains", names[i].className());
      EXPECT_EQ(2U, names[i].keyBindings().size());
      EXPECT_EQ(instances[i].getPath().toString(), names[i].toString());
    }
  }
}

TEST_F(AssociationPlugin, ReturnsAFarEndOnce) {
  /** The same two ends are linked twice, and one end to itself. */
  class Doubled : public FixtureAssociationPlugin {
  public:
    void enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances, bool flag) override {
      FixtureAssociationPlugin::enumerateInstances(path, instances, flag);
      FixtureAssociationPlugin::enumerateInstances(path, instances, flag);
      CIMInstance self;
      self.setPath(path);
      for (const char* name : {"Antecedent", "Dependent"}) {
        self.addProperty(CIMProperty(
            name, CIMValue<CIMObjectPath>(fixturePath("TEST_Shelf", "C"), false, false), true, PDT_REFERENCE,
            false));
      }
      instances.push_back(self);
    }
  };
  Doubled plugin;
  std::string any;
  for (const auto& [shelf, count] : {std::pair{"A", 2U}, std::pair{"C", 1U}}) {
    CIMObjectPath source = fixturePath("TEST_Shelf", shelf);
    std::vector<CIMObjectPath> names;
    plugin.associatorNames(source, any, names, any, any, any);
    EXPECT_EQ(count, names.size()) << shelf;
    std::vector<CIMInstance> associations;
    plugin.references(source, any, associations, any);
    EXPECT_EQ(std::string(shelf) == "A" ? 4U : 1U, associations.size()) << shelf;
  }
}
