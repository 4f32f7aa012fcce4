// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/PluginsManager.h"

#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/PluginTable.h"
#include "oslib/KVSLog.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

namespace tvp::cim::fwf {

namespace {

constexpr const char* OWN_NAMESPACE = "root/kvs/tvp/smi_15";

// What getPluginNames shows; which plugins there are says pluginTable() alone.
constexpr std::array<std::string_view, 6> PROFILE_KEYS = {
    "tvp_registeredprofile",
    "tvp_elementconformstoprofile",
    "tvp_controllercomputersystemconformstoprofile",
    "tvp_hostcomputersystemconformstoprofile",
    "tvp_registeredsubprofile",
    "tvp_subprofilerequiresprofile"};

constexpr std::array<std::string_view, 10> CLASS_KEYS = {
    "tvp_tarvexproidentity", "tvp_logicaldevice", "tvp_logicaldevices",      "tvp_virtualpoolmember",
    "tvp_virtualpool",       "tvp_virtualpools",  "tvp_virtualvolumesource", "tvp_virtualvolume",
    "tvp_virtualvolumes",    "tvp_tierservice"};

template <typename Keys>
bool contains(const Keys& keys, const std::string& key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

/** The own namespace shows all but the profile classes; every other one shows these and the listed classes of
 * the model. */
bool isVisible(const std::string& key, bool ownNamespace) {
  if (ownNamespace) {
    return !contains(PROFILE_KEYS, key);
  }
  return contains(PROFILE_KEYS, key) || contains(CLASS_KEYS, key);
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
  if (KvsMutexLock(m_Mutex) != 0) {
    return nullptr;
  }
  PluginsManager* instance = m_PluginIns.load();
  if (instance == nullptr) {
    // Short memory makes either a null pointer or an exception, depending on the module's allocator.
    try {
      instance = new (std::nothrow) PluginsManager();
    } catch (const std::bad_alloc&) {
      instance = nullptr;
    }
    m_PluginIns.store(instance);
  }
  KvsMutexUnlock(m_Mutex);
  KvsLogMsg(KVS_LOG_INFORMATION, "Unlocked the mutex object");
  KvsLogMsg(
      KVS_LOG_INFORMATION, instance != nullptr
                               ? "Returning successfully formed PluginsManager singleton object"
                               : "ERROR : Insufficient Memory : PluginsManager::getInstance");
  return instance;
}

PluginsManager::~PluginsManager() {
  // Entry and end write the same line; log readers know it twice.
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
    registerPlugin(row.key, row.create());
  }
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
