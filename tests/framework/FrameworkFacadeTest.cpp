// SPDX-License-Identifier: Apache-2.0
// The path of a request and of an indication through the facade. Every case needs a facade of its own, and so
// a process of its own.
#include "CIM/Framework/FrameworkFacade.h"

#include "CIM/Framework/PluginsManager.h"
#include "CIM/Framework/Subscription.h"
#include "ShortMemory.h"
#include "support/AssociationFixtures.h"
#include "support/Failure.h"
#include "support/LogCapture.h"
#include "support/ScriptedPlugin.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

using namespace tvp::cim::fwf;
using namespace tvp::test;
using testing::ElementsAre;

namespace {

/** The arguments of the operations. */
struct Request {
  CIMObjectPath path;
  std::string assocClass;
  CIMInstance instance;
  std::vector<CIMInstance> instances;
  std::vector<CIMObjectPath> paths;
  std::vector<std::string> names;
  std::string none;
  CIMMethodParam in;
  CIMMethodParam out;
  unsigned int returned = 99;

  explicit Request(const std::string& className)
      : path("", "root/kvs/tvp/smi_15", className, {}), assocClass(className) {}
};

struct FacadeCase {
  std::string name;
  std::function<void(FrameworkFacade&, Request&)> call;
  std::string traceName = name;
  std::string pluginCall = name;
  std::string noRegistry = name + " :: Failed to retrieve PluginManager handle.";
};

const std::vector<FacadeCase>& operations() {
  using F = FrameworkFacade;
  static const std::vector<FacadeCase> cases = {
      {"enumerateInstances", [](F& f, Request& r) { f.enumerateInstances(r.path, r.instances); }},
      {"enumerateInstanceNames", [](F& f, Request& r) { f.enumerateInstanceNames(r.path, r.paths); },
       "enumerateInstanceNames", "enumerateInstanceNames", "Internal Error."},
      {"getCIMInstance", [](F& f, Request& r) { f.getCIMInstance(r.path, r.instances); }},
      {"createInstance", [](F& f, Request& r) { f.createInstance(r.path, r.instance); }},
      {"modifyInstance", [](F& f, Request& r) { f.modifyInstance(r.path, r.instance, r.names); }},
      {"deleteInstance", [](F& f, Request& r) { f.deleteInstance(r.path); }},
      {"invokeMethod", [](F& f, Request& r) { r.returned = f.invokeMethod(r.path, "Flush", r.in, r.out); },
       "invokeMethod", "invokeMethod Flush"},
      {"references", [](F& f, Request& r) { f.references(r.path, r.none, r.instances, r.none); }},
      {"referencesNames", [](F& f, Request& r) { f.referencesNames(r.path, r.none, r.none, r.paths); },
       "referenceNames"},
      {"associators",
       [](F& f, Request& r) {
         f.associators(r.path, r.assocClass, r.instances, r.none, r.none, r.none, nullptr);
       },
       "associators", "associators", "Failed to retrieve PluginManager handle."},
      {"associatorsNames",
       [](F& f, Request& r) { f.associatorsNames(r.path, r.assocClass, r.paths, r.none, r.none, r.none); },
       "associatorNames", "associatorNames"}};
  return cases;
}

std::string trace(const std::string& direction, const FacadeCase& operation) {
  return LogCapture::trace(direction + " FrameworkFacade " + operation.traceName + "()");
}

}  // namespace

TEST(FrameworkFacade, PassesEveryOperationToThePluginOfTheClass) {
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  ASSERT_TRUE(facade->initialize());
  auto* plugin = dynamic_cast<ScriptedPlugin*>(facade->getPlugIn("TVP_VIRTUALVOLUME"));
  ASSERT_NE(nullptr, plugin);
  plugin->returnValue = 42;
  LogCapture log;
  for (const FacadeCase& operation : operations()) {
    SCOPED_TRACE(operation.name);
    const bool isMethod = operation.name == "invokeMethod";
    log.clear();
    plugin->calls.clear();
    plugin->beforeAnswer = [] {};
    Request request("TVP_VirtualVolume");
    operation.call(*facade, request);
    EXPECT_THAT(plugin->calls, ElementsAre(operation.pluginCall));
    EXPECT_EQ(trace("Entering", operation), log.lines().front());
    EXPECT_EQ(trace("Exiting", operation), log.lines().back());
    EXPECT_EQ(isMethod ? 42U : 99U, request.returned);

    plugin->beforeAnswer = [] { throw CIMException(6, std::string("100%s gone")); };
    EXPECT_EQ("6 100%s gone", failureOf([&] { operation.call(*facade, request); }));
    EXPECT_EQ(LogCapture::message(2, operation.name + " :: 100%s gone"), log.lines().back());

    Request unknown("CIM_Unknown");
    EXPECT_NO_THROW(operation.call(*facade, unknown));
    EXPECT_EQ(0U, unknown.instances.size() + unknown.paths.size());
    EXPECT_TRUE(log.has(LogCapture::message(2, "Plugin not initialized for CIM_Unknown.")));
    EXPECT_EQ(trace("Exiting", operation), log.lines().back());
    EXPECT_EQ(isMethod ? 0U : 99U, unknown.returned);
  }
}

TEST(FrameworkFacade, ReturnsNoAssociationsOfAnInstancePlugin) {
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  facade->initialize();
  registerAssociationFixtures();
  for (const FacadeCase& operation : operations()) {
    if (operation.name.rfind("associator", 0) == 0 || operation.name.rfind("reference", 0) == 0) {
      Request request("TEST_Shelf");
      EXPECT_NO_THROW(operation.call(*facade, request)) << operation.name;
      EXPECT_EQ(0U, request.instances.size() + request.paths.size()) << operation.name;
    }
  }
  std::string antecedent = "kept";
  std::string dependent = "kept";
  facade->getAntecedentAndDependentNames("TEST_Shelf", antecedent, dependent);
  EXPECT_EQ("kept kept", antecedent + " " + dependent);
  facade->getAntecedentAndDependentNames("Test_CONTAINS", antecedent, dependent);
  EXPECT_EQ("TEST_Shelf TEST_Disk", antecedent + " " + dependent);
}

TEST(FrameworkFacade, LogsWhatAssociatorsAreAskedFor) {
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  ASSERT_TRUE(facade->initialize());
  LogCapture log;
  CIMObjectPath path = fixturePath("TEST_Shelf", "A");
  std::string assocClass = "TEST_Contains";
  std::string resultClass = "TEST_Disk";
  std::string role = "Antecedent";
  std::string resultRole = "Dependent";
  std::vector<CIMInstance> found;
  facade->associators(path, assocClass, found, resultClass, role, resultRole, nullptr);
  const std::vector<std::string> lines = log.lines();
  ASSERT_LE(8U, lines.size());
  EXPECT_THAT(
      std::vector<std::string>(lines.begin() + 1, lines.begin() + 8),
      ElementsAre(
          LogCapture::message(5, "################ FrameworkFacade::associators() ######################"),
          LogCapture::message(5, "LHS ObjectPath = " + path.toString()),
          LogCapture::message(5, "AssociationClass Name = TEST_Contains"),
          LogCapture::message(5, "RHS resultClass = TEST_Disk"), LogCapture::message(5, "Role = Antecedent"),
          LogCapture::message(5, "ResultRole = Dependent"),
          LogCapture::message(5, "######################################################################")));
}

TEST(FrameworkFacade, FailsWithoutARegistry) {
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  LogCapture log;
  const ShortMemory shortage;
  for (const FacadeCase& operation : operations()) {
    SCOPED_TRACE(operation.name);
    log.clear();
    Request request("TVP_VirtualVolume");
    EXPECT_EQ("1 " + operation.noRegistry, failureOf([&] { operation.call(*facade, request); }));
    EXPECT_TRUE(
        log.has(LogCapture::message(2, operation.name + " :: Failed to retrieve PluginManager handle.")));
    EXPECT_EQ(LogCapture::message(2, operation.name + " :: " + operation.noRegistry), log.lines().back());
  }
  EXPECT_THROW(facade->getPlugIn("TVP_VirtualVolume"), CIMException);
  EXPECT_EQ(LogCapture::message(2, "Failed to get PlugManager Object"), log.lines().back());
  std::vector<std::string> names = {"kept"};
  facade->getAllPluginNames(names, "root/kvs/tvp/smi_15");
  EXPECT_THAT(names, ElementsAre("kept"));
  EXPECT_FALSE(facade->initialize());
  EXPECT_TRUE(log.has(LogCapture::message(5, "Failed to create PluginsManager instance")));
  EXPECT_EQ(LogCapture::trace("Exiting FrameworkFacade initialize()"), log.lines().back());
}

TEST(FrameworkFacade, LooksPluginsUpByTheLoweredName) {
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  facade->initialize();
  LogCapture log;
  EXPECT_EQ(nullptr, facade->getPlugIn("CIM_Unknown"));
  EXPECT_THAT(
      log.lines(), testing::Contains(LogCapture::message(2, "Plugin not initialized for cim_unknown.")));
}

namespace {

/** What getInstance returned while there was no mutex yet, before static construction. */
FrameworkFacade* withoutFacadeMutex;
PluginsManager* withoutRegistryMutex;

__attribute__((constructor(101))) void askBeforeStaticConstruction() {
  withoutFacadeMutex = FrameworkFacade::getInstance();
  withoutRegistryMutex = PluginsManager::getInstance();
}

}  // namespace

TEST(FrameworkFacade, IsNotCreatedWithoutItsLock) {
  EXPECT_EQ(nullptr, withoutFacadeMutex);
  EXPECT_EQ(nullptr, withoutRegistryMutex);
  EXPECT_NE(nullptr, FrameworkFacade::getInstance());
  EXPECT_NE(nullptr, PluginsManager::getInstance());
}

TEST(FrameworkFacade, LeavesItsLockToAThreadThatFindsItMeanwhile) {
  LogCapture log;
  FrameworkFacade* found = nullptr;
  std::thread second;
  ShortMemory::beforeAllocation = [&] {  // of the facade, with the lock held
    std::atomic<pid_t> number{0};
    second = std::thread([&] {
      number = threadNumber();
      found = FrameworkFacade::getInstance();
    });
    EXPECT_TRUE(waitFor([&] {
      return log.count(LogCapture::trace("Entering FrameworkFacade getInstance()")) == 2 && isAsleep(number);
    }));
  };
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  second.join();
  EXPECT_EQ(facade, found);
  EXPECT_FALSE(
      log.has(LogCapture::message(5, "Referencing the earlier formed FrameworkFacade singleton object")));
  delete facade;
  EXPECT_TRUE(log.has(LogCapture::message(2, "~FrameworkFacade :: Failed to delete mutex object.")));
}

TEST(FrameworkFacade, LivesFromFirstUseToTearDown) {
  LogCapture log;
  {
    const ShortMemory shortage;
    EXPECT_EQ(nullptr, FrameworkFacade::getInstance());
  }
  EXPECT_THAT(
      log.lines(), ElementsAre(
                       LogCapture::trace("Entering FrameworkFacade getInstance()"),
                       LogCapture::message(5, "Unlocked the mutex object"),
                       LogCapture::message(5, "ERROR : Insufficient Memory : FrameworkFacade::getInstance")));
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  EXPECT_EQ(facade, FrameworkFacade::getInstance());
  EXPECT_TRUE(facade->initialize());
  std::vector<std::string> names = {"replaced"};
  facade->getAllPluginNames(names, "root/kvs/tvp/smi_15");
  EXPECT_THAT(names, ElementsAre("test_extra", "tvp_virtualvolume"));
  delete facade;
  EXPECT_EQ(0, ScriptedPlugin::living);
  EXPECT_EQ(0U, log.count(LogCapture::message(2, "~FrameworkFacade :: Failed to delete mutex object.")));
}

namespace {

int deliveries = 0;

bool deliver(CIMInstance& indication) {
  ++deliveries;
  return indication.className() == "TVP_CIMIndication";
}

}  // namespace

TEST(FrameworkFacade, DeliversIndicationsOnlyToSubscribers) {
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  const CIMInstance indication("TVP_CIMIndication");
  LogCapture log;
  EXPECT_TRUE(facade->registerForEvent(deliver));
  EXPECT_FALSE(facade->registerForEvent(nullptr));
  EXPECT_TRUE(log.has(LogCapture::message(2, "_deliverIndication is NULL.")));
  EXPECT_FALSE(facade->notify(indication));
  EXPECT_EQ(0, deliveries);
  m_subscription.store(true);
  EXPECT_TRUE(facade->notify(indication));
  EXPECT_FALSE(facade->notify(CIMInstance("Other")));
  EXPECT_EQ(2, deliveries);

  log.clear();
  facade->deRegisterForEvent();
  EXPECT_FALSE(facade->notify(indication));
  EXPECT_EQ(2, deliveries);
  EXPECT_THAT(
      log.lines(), ElementsAre(
                       LogCapture::trace("Entering FrameworkFacade registerForEvent()"),
                       LogCapture::trace("Exiting FrameworkFacade registerForEvent()"),
                       LogCapture::trace("Entering FrameworkFacade notify()"),
                       LogCapture::trace("Exiting FrameworkFacade notify()")));
}
