// SPDX-License-Identifier: Apache-2.0
// Which plugin serves a class, and who deletes it. Every case needs a registry of its own, and so a process
// of its own.
#include "CIM/Framework/PluginsManager.h"

#include "ShortMemory.h"
#include "support/LogCapture.h"
#include "support/ScriptedPlugin.h"

#include <gmock/gmock.h>

using namespace tvp::cim::fwf;
using namespace tvp::test;
using testing::ElementsAre;

TEST(PluginsManager, FindsAPluginWhateverTheCaseOfTheClassName) {
  PluginsManager* registry = PluginsManager::getInstance();
  ASSERT_TRUE(registry->initialize(false));
  AbstractProviderPlugin* plugin = registry->getPlugin("TVP_VirtualVolume");
  EXPECT_NE(nullptr, plugin);
  EXPECT_EQ(plugin, registry->getPlugin("tvp_virtualvolume"));
  EXPECT_EQ(plugin, registry->getPlugin("Tvp_VIRTUALvolume"));

  LogCapture log;
  EXPECT_EQ(nullptr, registry->getPlugin("CIM_ComputerSystem"));
  EXPECT_THAT(
      log.lines(), ElementsAre(
                       LogCapture::trace("Entering PluginsManager::getPlugin()"),
                       LogCapture::message(2, "Plugin not initialized for CIM_ComputerSystem.")));
}

TEST(PluginsManager, ListsTheClassesOfEveryNamespace) {
  PluginsManager* registry = PluginsManager::getInstance();
  registry->initialize(false);
  registry->registerPlugin("test_unlisted", new ScriptedPlugin());
  EXPECT_THAT(
      registry->getPluginNames("root/kvs/tvp/smi_15"),
      ElementsAre("test_extra", "test_unlisted", "tvp_virtualvolume"));
  for (const char* other : {"root/PG_InterOp", "ROOT/KVS/TVP/SMI_15", ""}) {
    EXPECT_THAT(
        registry->getPluginNames(other),
        ElementsAre("test_extra", "tvp_registeredprofile", "tvp_virtualvolume"))
        << other;
  }
}

TEST(PluginsManager, ReplacesPluginsWithoutDeletingThem) {
  PluginsManager* registry = PluginsManager::getInstance();
  registry->initialize(false);
  std::vector<AbstractProviderPlugin*> earlier;
  for (const char* key : {"tvp_virtualvolume", "tvp_registeredprofile", "test_extra"}) {
    earlier.push_back(registry->getPlugin(key));
  }
  registry->initialize(true);
  EXPECT_EQ(6, ScriptedPlugin::living);
  EXPECT_NE(earlier.front(), registry->getPlugin("tvp_virtualvolume"));
  for (AbstractProviderPlugin* plugin : earlier) {
    delete plugin;
  }
}

TEST(PluginsManager, IsCreatedAsSoonAsThereIsMemory) {
  LogCapture log;
  {
    const ShortMemory shortage;
    EXPECT_EQ(nullptr, PluginsManager::getInstance());
  }
  EXPECT_THAT(
      log.lines(), ElementsAre(
                       LogCapture::message(5, "Entering PluginsManager getInstance()"),
                       LogCapture::message(5, "Unlocked the mutex object"),
                       LogCapture::message(5, "ERROR : Insufficient Memory : PluginsManager::getInstance")));
  PluginsManager* registry = PluginsManager::getInstance();
  EXPECT_NE(nullptr, registry);
  EXPECT_EQ(registry, PluginsManager::getInstance());
}
