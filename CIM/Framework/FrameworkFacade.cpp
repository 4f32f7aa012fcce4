// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"

#include "CIM/Framework/AbstractAssociationProviderPlugin.h"
#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/PluginsManager.h"
#include "CIM/Framework/Subscription.h"
#include "oslib/KVSLog.h"

#include <array>
#include <cstdio>
#include <new>
#include <utility>

namespace tvp::cim::fwf {

namespace {

constexpr const char* NO_REGISTRY = "Failed to retrieve PluginManager handle.";

/** Traces "Entering FrameworkFacade name()" or "Exiting FrameworkFacade name()". */
void trace(const char* direction, const char* name) {
  std::array<char, 128> line{};
  std::snprintf(line.data(), line.size(), "%s FrameworkFacade %s()", direction, name);
  KvsTrace(line.data());
}

void traceEntry(const char* name) {
  trace("Entering", name);
}

void traceExit(const char* name) {
  trace("Exiting", name);
}

/** The association plugin behind a plugin; null when it is none. */
AbstractAssociationProviderPlugin* asAssociationPlugin(AbstractProviderPlugin* plugin) {
  return dynamic_cast<AbstractAssociationProviderPlugin*>(plugin);
}

}  // namespace

/** The texts by which the operations differ. */
struct FrameworkFacade::Operation {
  const char* traceName;
  const char* logName;
  const char* noRegistry = nullptr;  ///< message without a registry; null: the logged text
};

/** Traces the entry of an operation. @return the operation */
FrameworkFacade::Operation FrameworkFacade::begin(const Operation& operation) {
  traceEntry(operation.traceName);
  return operation;
}

std::atomic<bool> m_subscription{false};

std::atomic<FrameworkFacade*> FrameworkFacade::m_ins{nullptr};
KvsMutexHandle FrameworkFacade::m_mutexObject = KvsMutexInit();
std::atomic<FrameworkFacade::DeliverIndication> FrameworkFacade::m_deliverIndication{nullptr};

FrameworkFacade::FrameworkFacade() {
  KvsTrace("Entering FrameworkFacade::FrameworkFacade()");
}

FrameworkFacade* FrameworkFacade::getInstance() {
  traceEntry("getInstance");
  if (FrameworkFacade* existing = m_ins.load()) {
    KvsLogMsg(KVS_LOG_INFORMATION, "Referencing the earlier formed FrameworkFacade singleton object");
    return existing;
  }
  if (KvsMutexLock(m_mutexObject) != 0) {
    return nullptr;
  }
  if (FrameworkFacade* existing = m_ins.load()) {
    // Intended: the mutex stays locked here. Nobody needs it again, since later calls find the facade.
    return existing;
  }
  FrameworkFacade* created = nullptr;
  try {
    created = new (std::nothrow) FrameworkFacade();
  } catch (const std::bad_alloc&) {
    created = nullptr;
  }
  m_ins.store(created);
  KvsMutexUnlock(m_mutexObject);
  if (created == nullptr) {
    KvsLogMsg(KVS_LOG_INFORMATION, "Unlocked the mutex object");
    KvsLogMsg(KVS_LOG_INFORMATION, "ERROR : Insufficient Memory : FrameworkFacade::getInstance");
  }
  return created;
}

FrameworkFacade::~FrameworkFacade() {
  KvsTrace("Entering FrameworkFacade::~FrameworkFacade()");
  if (m_mutexObject != nullptr && KvsMutexDelete(&m_mutexObject) != 0) {
    KvsLogMsg(KVS_LOG_ERROR, "%s :: Failed to delete mutex object.", "~FrameworkFacade");
  }
  if (PluginsManager* registry = PluginsManager::getInstance()) {
    delete registry;
  } else {
    KvsLogMsg(KVS_LOG_ERROR, "~FrameworkFacade :: Failed to get PluginsManager instance");
  }
  KvsTrace("Exiting ~FrameworkFacade()");
}

bool FrameworkFacade::initialize() {
  traceEntry("initialize");
  bool initialized = false;
  if (PluginsManager* registry = PluginsManager::getInstance()) {
    KvsLogMsg(KVS_LOG_INFORMATION, "SELECTIVE INITIALIZATION ? %d.", 0);
    initialized = registry->initialize(false);
    KvsLogMsg(
        KVS_LOG_INFORMATION, initialized ? "FrameworkFacade : Provider Initialized successfully"
                                         : "Failed to initialize PluginsManager");
  } else {
    KvsLogMsg(KVS_LOG_INFORMATION, "Failed to create PluginsManager instance");
  }
  traceExit("initialize");
  return initialized;
}

/**
 * Finds the plugin of the class and hands it to call; a class without one is answered with nothing.
 * A CIMException of any step is logged and passed on.
 */
template <typename Call>
void FrameworkFacade::withPlugin(const Operation& operation, const std::string& className, Call call) {
  try {
    PluginsManager* registry = PluginsManager::getInstance();
    if (registry == nullptr) {
      KvsLogMsg(KVS_LOG_ERROR, "%s :: %s", operation.logName, NO_REGISTRY);
      if (operation.noRegistry != nullptr) {
        throw CIMException(FW_RC_FAILED, std::string(operation.noRegistry));
      }
      throw frameworkError(FW_RC_FAILED, operation.logName, NO_REGISTRY);
    }
    if (AbstractProviderPlugin* plugin = registry->getPlugin(className)) {
      call(*plugin);
    }
  } catch (const CIMException& failure) {
    KvsLogMsg(KVS_LOG_ERROR, "%s :: %s", operation.logName, failure.message().c_str());
    throw CIMException(failure);
  }
  traceExit(operation.traceName);
}

/** As withPlugin; a plugin that is no association plugin is answered with nothing as well. */
template <typename Call>
void FrameworkFacade::withAssociationPlugin(
    const Operation& operation, const std::string& className, Call call) {
  withPlugin(operation, className, [&](AbstractProviderPlugin& plugin) {
    if (asAssociationPlugin(&plugin) != nullptr) {
      call(plugin);
    }
  });
}

void FrameworkFacade::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances) {
  withPlugin(
      begin({"enumerateInstances", "enumerateInstances"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.enumerateInstances(path, instances, false); });
}

void FrameworkFacade::enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) {
  withPlugin(
      begin({"enumerateInstanceNames", "enumerateInstanceNames", "Internal Error."}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.enumerateInstanceNames(path, names); });
}

void FrameworkFacade::getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances) {
  withPlugin(
      begin({"getCIMInstance", "getCIMInstance"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.getCIMInstance(path, instances); });
}

void FrameworkFacade::createInstance(CIMObjectPath& path, CIMInstance& instance) {
  withPlugin(
      begin({"createInstance", "createInstance"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.createInstance(path, instance); });
}

void FrameworkFacade::modifyInstance(
    CIMObjectPath& path, CIMInstance& instance, std::vector<std::string>& propertyList) {
  withPlugin(
      begin({"modifyInstance", "modifyInstance"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.modifyInstance(path, instance, propertyList); });
}

void FrameworkFacade::deleteInstance(const CIMObjectPath& path) {
  withPlugin(
      begin({"deleteInstance", "deleteInstance"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.deleteInstance(path); });
}

unsigned int FrameworkFacade::invokeMethod(
    const CIMObjectPath& path, std::string methodName, CIMMethodParam& in, CIMMethodParam& out) {
  unsigned int returnValue = 0;
  withPlugin(begin({"invokeMethod", "invokeMethod"}), path.className(), [&](AbstractProviderPlugin& plugin) {
    returnValue = plugin.invokeMethod(path, methodName, in, out);
  });
  return returnValue;
}

void FrameworkFacade::references(
    CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
    const std::string& role) {
  withAssociationPlugin(
      begin({"references", "references"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.references(path, resultClass, instances, role); });
}

void FrameworkFacade::referencesNames(
    CIMObjectPath& path, const std::string& resultClass, const std::string& role,
    std::vector<CIMObjectPath>& names) {
  withAssociationPlugin(
      begin({"referenceNames", "referencesNames"}), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.referencesNames(path, resultClass, role, names); });
}

void FrameworkFacade::associators(
    CIMObjectPath& path, std::string& assocClass, std::vector<CIMInstance>& instances,
    std::string& resultClass, std::string& role, std::string& resultRole, const char** propertyList) {
  const Operation operation = begin({"associators", "associators", NO_REGISTRY});
  KvsLogMsg(KVS_LOG_INFORMATION, "################ FrameworkFacade::associators() ######################");
  KvsLogMsg(KVS_LOG_INFORMATION, "LHS ObjectPath = %s", path.toString().c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "AssociationClass Name = %s", assocClass.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "RHS resultClass = %s", resultClass.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "Role = %s", role.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "ResultRole = %s", resultRole.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "######################################################################");
  withAssociationPlugin(operation, assocClass, [&](AbstractProviderPlugin& plugin) {
    plugin.associators(path, assocClass, instances, resultClass, role, resultRole, propertyList);
  });
}

void FrameworkFacade::associatorsNames(
    CIMObjectPath& path, std::string& assocClass, std::vector<CIMObjectPath>& names, std::string& resultClass,
    std::string& role, std::string& resultRole) {
  withAssociationPlugin(
      begin({"associatorNames", "associatorsNames"}), assocClass, [&](AbstractProviderPlugin& plugin) {
        plugin.associatorNames(path, assocClass, names, resultClass, role, resultRole);
      });
}

AbstractProviderPlugin* FrameworkFacade::getPlugIn(const std::string& className) {
  traceEntry("getPlugIn");
  PluginsManager* registry = PluginsManager::getInstance();
  if (registry == nullptr) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to get PlugManager Object");
    throw CIMException(FW_RC_FAILED, std::string("Failed to get PlugManager Object"));
  }
  AbstractProviderPlugin* plugin = registry->getPlugin(CommonFunctions::toLower(className));
  traceExit("getPlugIn");
  return plugin;
}

void FrameworkFacade::getAllPluginNames(std::vector<std::string>& names, std::string nameSpace) {
  if (PluginsManager* registry = PluginsManager::getInstance()) {
    names = registry->getPluginNames(std::move(nameSpace));
  }
}

void FrameworkFacade::getAntecedentAndDependentNames(
    std::string className, std::string& antecedent, std::string& dependent) {
  PluginsManager* registry = PluginsManager::getInstance();
  if (registry == nullptr) {
    return;
  }
  if (const AbstractAssociationProviderPlugin* plugin =
          asAssociationPlugin(registry->getPlugin(std::move(className)))) {
    antecedent = plugin->getAntecedentName();
    dependent = plugin->getDependentName();
  }
}

bool FrameworkFacade::registerForEvent(DeliverIndication callback) {
  traceEntry("registerForEvent");
  if (callback != nullptr) {
    m_deliverIndication.store(callback);
    KvsLogMsg(KVS_LOG_DEBUG, "CALLBACK REGISTRATION Successful.");
  } else {
    KvsLogMsg(KVS_LOG_ERROR, "_deliverIndication is NULL.");
  }
  traceExit("registerForEvent");
  return callback != nullptr;
}

void FrameworkFacade::deRegisterForEvent() {
  // The wording of the registration is intended here too.
  traceEntry("registerForEvent");
  m_deliverIndication.store(nullptr);
  traceExit("registerForEvent");
}

bool FrameworkFacade::notify(CIMInstance instance) {
  traceEntry("notify");
  if (!m_subscription.load()) {
    KvsLogMsg(KVS_LOG_ERROR, "*###* Unable to deliver indication since no client subscription present");
    return false;
  }
  const DeliverIndication deliver = m_deliverIndication.load();
  if (deliver == nullptr) {
    traceExit("notify");
    return false;
  }
  const bool delivered = deliver(instance);
  if (delivered) {
    KvsLogMsg(KVS_LOG_INFORMATION, "FrameworkFacade::notify -> Successfully Delivered Indication");
  } else {
    KvsLogMsg(KVS_LOG_ERROR, "FrameworkFacade::notify -> Failed To Deliver Indication");
  }
  return delivered;
}

}  // namespace tvp::cim::fwf
