// SPDX-License-Identifier: Apache-2.0
// What a plugin does that implements nothing, and how instances are composed from its hooks.
#include "CIM/Framework/AbstractCachedInstanceProviderPlugin.h"
#include "CIM/Framework/AbstractMethodProviderPlugin.h"
#include "CIM/Framework/CIMException.h"
#include "support/AssociationFixtures.h"
#include "support/Failure.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>

using namespace tvp::cim::fwf;
using namespace tvp::test;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/** Serves the given number of objects; throws the given exception from a hook. */
class HookPlugin : public AbstractInstanceProviderPlugin {
public:
  int objects = 1;
  bool bare = false;
  std::function<void(int object)> beforeKeys = [](int) {};
  int seen = 0;

  void getKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& keys) override {
    beforeKeys(++seen);
    if (!bare) {
      keys.push_back(textProperty("Id", std::to_string(seen), false));
    }
  }
  void getNonKeyAttributes(const CIMInstance&, std::vector<CIMProperty>& properties) override {
    if (!bare) {
      properties.push_back(textProperty("Label", "object " + std::to_string(seen), false));
    }
  }
  void getRepositoryObjects(const CIMObjectPath&, std::vector<CIMInstance>& found) override {
    found.resize(static_cast<std::size_t>(objects));
  }
};

/** A class with instances and a method, like those of pools and volumes. */
class MethodPlugin : public HookPlugin, public virtual AbstractMethodProviderPlugin {
public:
  unsigned int invokeMethod(
      const CIMObjectPath& path, const std::string& name, const CIMMethodParam& in,
      CIMMethodParam& out) override {
    return name == "default" ? AbstractMethodProviderPlugin::invokeMethod(path, name, in, out) : 5;
  }
};

class CachedPlugin : public AbstractCachedInstanceProviderPlugin {
public:
  void refreshCache() override {}
  void dropCache() override {}
};

struct Arguments {
  CIMObjectPath path{"h", "root/kvs/tvp/smi_15", "TEST_Class", {textProperty("Id", "asked", true)}};
  CIMInstance instance;
  std::vector<CIMInstance> instances;
  std::vector<CIMObjectPath> names;
  std::vector<std::string> list;
  std::string none;
};

struct OperationCase {
  const char* name;
  std::function<void(AbstractProviderPlugin&, Arguments&)> call;
};

const std::vector<OperationCase>& buildingOperations() {
  using P = AbstractProviderPlugin;
  static const std::vector<OperationCase> cases = {
      {"getCIMInstance", [](P& p, Arguments& a) { p.getCIMInstance(a.path, a.instances); }},
      {"enumerateInstances", [](P& p, Arguments& a) { p.enumerateInstances(a.path, a.instances, true); }},
      {"enumerateInstanceNames", [](P& p, Arguments& a) { p.enumerateInstanceNames(a.path, a.names); }}};
  return cases;
}

const std::vector<OperationCase>& refusedOperations() {
  using P = AbstractProviderPlugin;
  static const std::vector<OperationCase> cases = {
      {"modifyInstance", [](P& p, Arguments& a) { p.modifyInstance(a.path, a.instance, a.list); }},
      {"createInstance", [](P& p, Arguments& a) { p.createInstance(a.path, a.instance); }},
      {"deleteInstance", [](P& p, Arguments& a) { p.deleteInstance(a.path); }},
      {"associators",
       [](P& p, Arguments& a) {
         p.associators(a.path, a.none, a.instances, a.none, a.none, a.none, nullptr);
       }},
      {"associatorNames",
       [](P& p, Arguments& a) { p.associatorNames(a.path, a.none, a.names, a.none, a.none, a.none); }},
      {"references", [](P& p, Arguments& a) { p.references(a.path, a.none, a.instances, a.none); }},
      {"referencesNames", [](P& p, Arguments& a) { p.referencesNames(a.path, a.none, a.none, a.names); }}};
  return cases;
}

void expectRefusal(AbstractProviderPlugin& plugin, const OperationCase& operation) {
  Arguments arguments;
  EXPECT_EQ("7 " + std::string(operation.name) + " ::  :: Not supported", failureOf([&] {
              operation.call(plugin, arguments);
            }));
}

}  // namespace

TEST(ProviderPlugin, RefusesOperationsThatItsClassDoesNotImplement) {
  HookPlugin plain;
  CachedPlugin cached;
  for (const OperationCase& operation : refusedOperations()) {
    expectRefusal(plain, operation);
    expectRefusal(cached, operation);
  }
  for (const OperationCase& operation : buildingOperations()) {
    expectRefusal(cached, operation);
  }
}

TEST(ProviderPlugin, ReportsMethodsByReturnCode) {
  HookPlugin plain;
  CachedPlugin cached;
  MethodPlugin method;
  const CIMObjectPath path;
  const CIMMethodParam in;
  CIMMethodParam out;
  LogCapture log;
  const auto invoke = [&](AbstractProviderPlugin& plugin, const char* name) {
    return plugin.invokeMethod(path, name, in, out);
  };
  EXPECT_EQ(7U, invoke(plain, "any"));
  EXPECT_EQ(7U, invoke(cached, "any"));
  EXPECT_EQ(5U, invoke(method, "own"));
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_EQ(7U, invoke(method, "default"));
  EXPECT_THAT(
      log.lines(), ElementsAre(LogCapture::trace("Inside AbstractMethodProviderPlugin::invokeMethod()")));
}

TEST(ProviderPlugin, ComposesInstancesAndNamesFromTheHooks) {
  const std::vector<std::vector<std::string>> traces = {
      {LogCapture::trace("Entering AbstractInstanceProviderPlugin :: getCIMInstance()"),
       LogCapture::trace("Exiting AbstractInstanceProviderPlugin :: getCIMInstance()")},
      {LogCapture::trace("Entering AbstractInstanceProviderPlugin ::              enumerateInstances()"),
       LogCapture::trace("Exiting AbstractInstanceProviderPlugin :: enumerateInstances()")},
      {LogCapture::trace("Entering AbstractInstanceProviderPlugin :: enumerateInstanceNames()")}};
  for (std::size_t i = 0; i < traces.size(); ++i) {
    SCOPED_TRACE(traces[i].front());
    HookPlugin plugin;
    plugin.objects = 2;
    Arguments arguments;
    LogCapture log;
    buildingOperations()[i].call(plugin, arguments);
    EXPECT_EQ(traces[i], log.lines());
    ASSERT_EQ(2U, arguments.instances.size() + arguments.names.size());
    const bool hasInstances = !arguments.instances.empty();
    EXPECT_EQ(
        "//h/root/kvs/tvp/smi_15:TEST_Class.Id=\"2\"",
        (hasInstances ? arguments.instances[1].getPath() : arguments.names[1]).toString());
    if (hasInstances) {
      ASSERT_EQ(2U, arguments.instances[1].getPropertyCount());
      EXPECT_EQ("object 2", arguments.instances[1].getPropertyByName("Label")->stringSlot().m_values.front());
    }
  }
}

TEST(ProviderPlugin, ReturnsNothingFromAnEmptyRepository) {
  HookPlugin plugin;
  plugin.objects = 0;
  for (const OperationCase& operation : buildingOperations()) {
    SCOPED_TRACE(operation.name);
    Arguments arguments;
    LogCapture log;
    operation.call(plugin, arguments);
    EXPECT_EQ(0U, arguments.instances.size() + arguments.names.size());
    ASSERT_EQ(2U, log.lines().size());
    EXPECT_EQ(
        LogCapture::message(4, std::string(operation.name) + " :: Empty list returned for class TEST_Class"),
        log.lines().back());
  }
}

TEST(ProviderPlugin, ReturnsThePathOfTheRequestForAnObjectWithoutAttributes) {
  HookPlugin plugin;
  plugin.bare = true;
  Arguments arguments;
  plugin.getCIMInstance(arguments.path, arguments.instances);
  ASSERT_EQ(1U, arguments.instances.size());
  EXPECT_EQ("//h/root/kvs/tvp/smi_15:TEST_Class.", arguments.instances[0].getPath().toString());
  EXPECT_EQ(0U, arguments.instances[0].getPropertyCount());
}

TEST(ProviderPlugin, KeepsTheInstancesFoundBeforeAFailure) {
  for (const OperationCase& operation : buildingOperations()) {
    SCOPED_TRACE(operation.name);
    HookPlugin plugin;
    plugin.objects = 3;
    plugin.beforeKeys = [](int object) {
      if (object == 2) {
        throw CIMException(6, std::string("no object 2"));
      }
    };
    Arguments arguments;
    LogCapture log;
    EXPECT_THROW(operation.call(plugin, arguments), CIMException);
    EXPECT_EQ(1U, arguments.instances.size() + arguments.names.size());
    const std::string stop = std::string(operation.name) == "enumerateInstanceNames" ? "." : "";
    EXPECT_EQ(
        LogCapture::message(2, std::string(operation.name) + " :: no object 2" + stop), log.lines().back());

    plugin.beforeKeys = [](int) { throw std::runtime_error("another kind"); };
    EXPECT_THROW(operation.call(plugin, arguments), std::runtime_error);
    EXPECT_EQ(0U, log.count(LogCapture::message(2, std::string(operation.name) + " :: another kind")));
  }
}

TEST(ProviderPlugin, TracesTheViewClassOperationsOfTheCachedLayer) {
  CachedPlugin cached;
  CIMObjectPath path;
  std::vector<CIMProperty> eventKeys;
  std::vector<CIMProperty> keys;
  LogCapture log;
  EXPECT_EQ(0U, cached.getViewClassKeys(path, keys));
  EXPECT_EQ(0U, cached.getKeysFromEventKeys(eventKeys, keys));
  EXPECT_EQ("", cached.getConcreteClassName());
  EXPECT_THAT(
      log.lines(),
      ElementsAre(
          LogCapture::trace("Executing AbstractCachedInstanceProviderPlugin :: getViewClassKeys()"),
          LogCapture::trace("Executing AbstractCachedInstanceProviderPlugin :: getKeysFromEventKeys()")));
}
