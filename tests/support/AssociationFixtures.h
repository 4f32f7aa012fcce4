// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_ASSOCIATIONFIXTURES_H
#define TESTS_SUPPORT_ASSOCIATIONFIXTURES_H

#include "CIM/Framework/AbstractAssociationProviderPlugin.h"
#include "CIM/Framework/AbstractInstanceProviderPlugin.h"
#include "CIM/Framework/PluginsManager.h"

#include <string>
#include <utility>
#include <vector>

/**
 * Classes that only tests register, since the product has no association: shelves that contain disks.
 *
 *   TEST_Shelf "A" contains TEST_Disk "1" and "2"; shelf "B" contains disk "3"; shelf "C" is empty.
 *
 * Call registerAssociationFixtures() after FrameworkFacade::initialize. TEST_Contains also refers to
 * disks of the class TEST_Spare, which has no plugin: shelf "B" contains spare "9".
 */
namespace tvp::test {

inline constexpr char FIXTURE_NAMESPACE[] = "root/kvs/tvp/smi_15";

/** The classes for a schema. */
inline constexpr char ASSOCIATION_FIXTURES_MOF[] = R"mof(
class TEST_Shelf { [Key] string Id; string Label; };
class TEST_Disk { [Key] string Id; string Label; };
class TEST_Spare { [Key] string Id; };
[Association] class TEST_Contains { [Key] TEST_Shelf REF Antecedent; [Key] TEST_Disk REF Dependent; };
)mof";

inline cim::fwf::CIMProperty textProperty(const char* name, const std::string& text, bool isKey) {
  using namespace cim::fwf;
  return CIMProperty(name, CIMValue<std::string>(text, false, false), isKey, PDT_STRING, false);
}

/** Path of the shelf, disk or spare with the identifier. */
inline cim::fwf::CIMObjectPath fixturePath(const std::string& className, const std::string& id) {
  return cim::fwf::CIMObjectPath("", FIXTURE_NAMESPACE, className, {textProperty("Id", id, true)});
}

/** Serves shelves or disks: key Id, and a Label made of class and identifier. */
class FixtureEndPlugin : public cim::fwf::AbstractInstanceProviderPlugin {
public:
  FixtureEndPlugin(std::string className, std::vector<std::string> ids)
      : m_className(std::move(className)), m_ids(std::move(ids)) {}

  void
  getKeyAttributes(const cim::fwf::CIMInstance& object, std::vector<cim::fwf::CIMProperty>& keys) override {
    keys.push_back(*object.getPropertyByName("Id"));
  }
  void getNonKeyAttributes(
      const cim::fwf::CIMInstance& object, std::vector<cim::fwf::CIMProperty>& properties) override {
    const std::string id = object.getPropertyByName("Id")->stringSlot().m_values.front();
    properties.push_back(textProperty("Label", m_className + " " + id, false));
  }
  /** All of the class, or the one that the path's key names. */
  void getRepositoryObjects(
      const cim::fwf::CIMObjectPath& path, std::vector<cim::fwf::CIMInstance>& objects) override {
    for (const std::string& id : m_ids) {
      if (path.keyBindings().empty() || path == fixturePath(m_className, id)) {
        cim::fwf::CIMInstance object(m_className);
        object.addProperty(textProperty("Id", id, true));
        objects.push_back(std::move(object));
      }
    }
  }

private:
  std::string m_className;
  std::vector<std::string> m_ids;
};

/** Serves TEST_Contains. */
class FixtureAssociationPlugin : public cim::fwf::AbstractAssociationProviderPlugin {
public:
  FixtureAssociationPlugin()
      : AbstractAssociationProviderPlugin("TEST_Contains", "TEST_Shelf", "TEST_Disk") {}

  void enumerateInstances(
      cim::fwf::CIMObjectPath& path, std::vector<cim::fwf::CIMInstance>& instances, bool) override {
    const std::vector<std::pair<const char*, cim::fwf::CIMObjectPath>> contents = {
        {"A", fixturePath("TEST_Disk", "1")},
        {"A", fixturePath("TEST_Disk", "2")},
        {"B", fixturePath("TEST_Disk", "3")},
        {"B", fixturePath("TEST_Spare", "9")}};
    for (const auto& [shelf, content] : contents) {
      cim::fwf::CIMInstance instance;
      instance.setPath(path);
      instance.addProperty(reference("Antecedent", fixturePath("TEST_Shelf", shelf)));
      instance.addProperty(reference("Dependent", content));
      instances.push_back(std::move(instance));
    }
  }
  void getKeyAttributes(const cim::fwf::CIMInstance&, std::vector<cim::fwf::CIMProperty>&) override {}
  void getNonKeyAttributes(const cim::fwf::CIMInstance&, std::vector<cim::fwf::CIMProperty>&) override {}
  void getRepositoryObjects(const cim::fwf::CIMObjectPath&, std::vector<cim::fwf::CIMInstance>&) override {}

private:
  static cim::fwf::CIMProperty reference(const char* name, const cim::fwf::CIMObjectPath& target) {
    using namespace cim::fwf;
    return CIMProperty(name, CIMValue<CIMObjectPath>(target, false, false), true, PDT_REFERENCE, false);
  }
};

/** Adds the plugins to the registry, which takes ownership. */
inline void registerAssociationFixtures() {
  cim::fwf::PluginsManager* registry = cim::fwf::PluginsManager::getInstance();
  registry->registerPlugin(
      "test_shelf", new FixtureEndPlugin("TEST_Shelf", std::vector<std::string>{"A", "B", "C"}));
  registry->registerPlugin(
      "test_disk", new FixtureEndPlugin("TEST_Disk", std::vector<std::string>{"1", "2", "3"}));
  registry->registerPlugin("test_contains", new FixtureAssociationPlugin());
}

}  // namespace tvp::test

#endif
