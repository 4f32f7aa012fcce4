// SPDX-License-Identifier: Apache-2.0
#ifndef CIM_FRAMEWORK_PLUGINSMANAGER_H
#define CIM_FRAMEWORK_PLUGINSMANAGER_H

#include "CIM/Framework/AbstractProviderPlugin.h"
#include "oslib/KVSMutex.h"

#include <atomic>
#include <map>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

/**
 * The registry of the process: which plugin serves which CIM class. It creates the plugins once and owns
 * them. Class names are looked up ignoring case.
 *
 * The map is written only while the provider initialises; afterwards any thread may read it.
 */
class PluginsManager {
public:
  /**
   * The registry, created on the first call. Null if the lock cannot be taken or memory runs out. The pointer
   * is kept after the registry is deleted: nothing may be called after the provider's tear-down.
   */
  static PluginsManager* getInstance();

  /** Deletes all plugins. */
  ~PluginsManager();
  PluginsManager(const PluginsManager&) = delete;
  PluginsManager& operator=(const PluginsManager&) = delete;

  /**
   * Creates and registers the plugins of pluginTable(). A second call replaces them without deleting the
   * earlier ones, which other threads may still be using. @param selective ignored @return true
   */
  bool initialize(bool selective);

  /**
   * Registers one plugin and takes ownership of it; a plugin that already has the key is replaced, not
   * deleted. initialize registers every row of the table with it; a class that is not in the table is added
   * the same way, before requests are served.
   * @param key the class name in lower case
   */
  void registerPlugin(const std::string& key, AbstractProviderPlugin* plugin);

  /**
   * The plugin of the class, owned by the registry; null, with an error in the log, if there is none.
   * @throws CIMException FW_RC_FAILED for a class without one if initialize() was not completed: the plugin
   *         may only be missing because the provider could not be started
   */
  AbstractProviderPlugin* getPlugin(std::string className);

  /**
   * The registered class names, in lower case and ascending order, that are visible in the namespace: in
   * root/kvs/tvp/smi_15 all but the classes of profiles, elsewhere those and the classes of pluginTable().
   */
  std::vector<std::string> getPluginNames(std::string nameSpace);

private:
  PluginsManager();

  static std::atomic<PluginsManager*> m_PluginIns;
  static KvsMutexHandle m_Mutex;

  std::map<std::string, AbstractProviderPlugin*> m_plugins;
  bool m_complete = false;  ///< initialize() reached its end
};

}  // namespace tvp::cim::fwf

#endif
