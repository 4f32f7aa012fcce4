// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/PluginsManager.h"

#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/PluginTable.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSSingleton.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <string_view>

namespace tvp::cim::fwf {

namespace {

constexpr const char* OWN_NAMESPACE = "root/kvs/tvp/smi_15";

/** COMPAT: clients may ask for these classes of registered profiles by name; no plugin serves them. */
constexpr std::array<std::string_view, 6> PROFILE_KEYS = {
    "tvp_registeredprofile",
    "tvp_elementconformstoprofile",
    "tvp_controllercomputersystemconformstoprofile",
    "tvp_hostcomputersystemconformstoprofile",
    "tvp_registeredsubprofile",
    "tvp_subprofilerequiresprofile"};

/**
 * The provider's own namespace shows all but the profile classes; every other one shows these and those of
 * the table.
 */
bool isVisible(const std::string& key, bool ownNamespace) {
  if (std::find(PROFILE_KEYS.begin(), PROFILE_KEYS.end(), key) != PROFILE_KEYS.end()) {
    return !ownNamespace;
  }
  const PluginTable table = pluginTable();
  return ownNamespace ||
         std::any_of(table.begin(), table.end(), [&](const PluginTableRow& row) { return key == row.key; });
}

}  // namespace

std::atomic<PluginsManager*> PluginsManager::m_PluginIns{nullptr};
KvsMutexHandle PluginsManager::m_Mutex = KvsMutexInit();

PluginsManager::PluginsManager() {
  KvsTrace("Entering PluginsManager::PluginsManager()");
}

PluginsManager* PluginsManager::getInstance() {
  KvsLogMsg(KVS_LOG_INFORMATION, "Entering PluginsManager getInstance()");
  if (PluginsManager* existing = m_PluginIns.load()) {
    KvsLogMsg(KVS_LOG_INFORMATION, "Referencing the earlier formed PluginsManager singleton object");
    return existing;
  }
  KvsMutexGuard lock(m_Mutex);
  const auto creation =
      kvsCreateSingleton(m_PluginIns, lock, [] { return new (std::nothrow) PluginsManager; });
  if (creation == KvsSingletonCreation::NotLocked) {
    return nullptr;
  }
  lock.unlock();
  KvsLogMsg(KVS_LOG_INFORMATION, "Unlocked the mutex object");
  KvsLogMsg(
      KVS_LOG_INFORMATION, creation == KvsSingletonCreation::Failed
                               ? "ERROR : Insufficient Memory : PluginsManager::getInstance"
                               : "Returning successfully formed PluginsManager singleton object");
  return m_PluginIns.load();
}

PluginsManager::~PluginsManager() {
  // COMPAT: entry and exit write the same line; logs are searched for it.
  KvsTrace("Exiting PluginsManager::~PluginsManager()");
  for (auto& [key, plugin] : m_plugins) {
    delete plugin;
    plugin = nullptr;
  }
  if (m_Mutex != nullptr && KvsMutexDelete(&m_Mutex) != 0) {
    KvsLogMsg(KVS_LOG_ERROR, "%s :: Failed to delete mutex object.", "~PluginsManager");
  }
  KvsTrace("Exiting PluginsManager::~PluginsManager()");
}

bool PluginsManager::initialize(bool) {
  KvsTrace("Entering PluginsManager::initialize()");
  for (const PluginTableRow& row : pluginTable()) {
    std::unique_ptr<AbstractProviderPlugin> plugin(row.create());
    registerPlugin(row.key, plugin.get());
    static_cast<void>(plugin.release());
  }
  m_complete = true;
  KvsTrace("Exiting PluginsManager::initialize()");
  return true;
}

void PluginsManager::registerPlugin(const std::string& key, AbstractProviderPlugin* plugin) {
  m_plugins[key] = plugin;
}

AbstractProviderPlugin* PluginsManager::getPlugin(std::string className) {
  KvsTrace("Entering PluginsManager::getPlugin()");
  const auto found = m_plugins.find(CommonFunctions::toLower(className));
  if (found == m_plugins.end()) {
    KvsLogMsg(KVS_LOG_ERROR, "Plugin not initialized for %s.", className.c_str());
    if (!m_complete) {
      throw CIMException(FW_RC_FAILED, std::string("The provider could not be started"));
    }
    return nullptr;
  }
  return found->second;
}

std::vector<std::string> PluginsManager::getPluginNames(std::string nameSpace) {
  KvsLogMsg(KVS_LOG_DEBUG, "Entering PluginsManager::getPluginNames()");
  const bool ownNamespace = nameSpace == OWN_NAMESPACE;
  std::vector<std::string> names;
  for (const auto& [key, plugin] : m_plugins) {
    if (isVisible(key, ownNamespace)) {
      names.push_back(key);
    }
  }
  KvsLogMsg(KVS_LOG_DEBUG, "Leaving PluginsManager::getPluginNames()");
  return names;
}

}  // namespace tvp::cim::fwf
