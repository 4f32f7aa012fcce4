// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/FrameworkFacade.h"

#include "CIM/Framework/AbstractAssociationProviderPlugin.h"
#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/PluginsManager.h"
#include "CIM/Framework/Subscription.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"
#include "oslib/KVSSingleton.h"

#include <new>
#include <utility>

namespace tvp::cim::fwf {

namespace {

constexpr const char* NO_REGISTRY = "Failed to retrieve PluginManager handle.";

void traceEntry(const char* name) {
  traceParts({"Entering FrameworkFacade ", name, "()"});
}

void traceExit(const char* name) {
  traceParts({"Exiting FrameworkFacade ", name, "()"});
}

/** The association plugin behind a plugin; null when it is not one. */
AbstractAssociationProviderPlugin* asAssociationPlugin(AbstractProviderPlugin* plugin) {
  return dynamic_cast<AbstractAssociationProviderPlugin*>(plugin);
}

/** Wraps a call so that it skips every plugin that is not an association plugin. */
template <typename Call>
auto ifAssociation(Call call) {
  return [call](AbstractProviderPlugin& plugin) {
    if (asAssociationPlugin(&plugin) != nullptr) {
      call(plugin);
    }
  };
}

}  // namespace

/** The names in which the operations differ. */
struct FrameworkFacade::Operation {
  /** @param name used in all log lines */
  explicit Operation(const char* name) : traceName(name), logName(name) {}

  /** Gives the traces a name of their own. */
  Operation& tracedAs(const char* name) {
    traceName = name;
    return *this;
  }
  /** Gives the exception thrown without a registry its own message instead of the logged text. */
  Operation& withoutRegistry(const char* message) {
    noRegistry = message;
    return *this;
  }

  const char* traceName;
  const char* logName;
  const char* noRegistry = nullptr;
};

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
  KvsMutexGuard lock(m_mutexObject);
  switch (kvsCreateSingleton(m_ins, lock, [] { return new (std::nothrow) FrameworkFacade; })) {
  case KvsSingletonCreation::NotLocked:
    return nullptr;
  case KvsSingletonCreation::Found:
    // COMPAT: the mutex stays locked here. Nobody needs it afterwards, since later calls find the facade.
    lock.keepLocked();
    break;
  case KvsSingletonCreation::Created:
    break;
  case KvsSingletonCreation::Failed:
    lock.unlock();
    KvsLogMsg(KVS_LOG_INFORMATION, "Unlocked the mutex object");
    KvsLogMsg(KVS_LOG_INFORMATION, "ERROR : Insufficient Memory : FrameworkFacade::getInstance");
    break;
  }
  return m_ins.load();
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

/** Traces the entry, finds the plugin of the class and passes it to call. */
template <typename Call>
void FrameworkFacade::withPlugin(const Operation& operation, const std::string& className, Call call) {
  traceEntry(operation.traceName);
  withPluginAfterEntry(operation, className, call);
}

/**
 * Finds the plugin of the class and passes it to call; the result is empty for a class without one. A
 * CIMException from any step is logged and rethrown.
 */
template <typename Call>
void FrameworkFacade::withPluginAfterEntry(
    const Operation& operation, const std::string& className, Call call) {
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

void FrameworkFacade::enumerateInstances(CIMObjectPath& path, std::vector<CIMInstance>& instances) {
  withPlugin(Operation("enumerateInstances"), path.className(), [&](AbstractProviderPlugin& plugin) {
    plugin.enumerateInstances(path, instances, false);
  });
}

void FrameworkFacade::enumerateInstanceNames(CIMObjectPath& path, std::vector<CIMObjectPath>& names) {
  withPlugin(
      Operation("enumerateInstanceNames").withoutRegistry("Internal Error."), path.className(),
      [&](AbstractProviderPlugin& plugin) { plugin.enumerateInstanceNames(path, names); });
}

void FrameworkFacade::getCIMInstance(CIMObjectPath& path, std::vector<CIMInstance>& instances) {
  withPlugin(Operation("getCIMInstance"), path.className(), [&](AbstractProviderPlugin& plugin) {
    plugin.getCIMInstance(path, instances);
  });
}

void FrameworkFacade::createInstance(CIMObjectPath& path, CIMInstance& instance) {
  withPlugin(Operation("createInstance"), path.className(), [&](AbstractProviderPlugin& plugin) {
    plugin.createInstance(path, instance);
  });
}

void FrameworkFacade::modifyInstance(
    CIMObjectPath& path, CIMInstance& instance, std::vector<std::string>& propertyList) {
  withPlugin(Operation("modifyInstance"), path.className(), [&](AbstractProviderPlugin& plugin) {
    plugin.modifyInstance(path, instance, propertyList);
  });
}

void FrameworkFacade::deleteInstance(const CIMObjectPath& path) {
  withPlugin(Operation("deleteInstance"), path.className(), [&](AbstractProviderPlugin& plugin) {
    plugin.deleteInstance(path);
  });
}

unsigned int FrameworkFacade::invokeMethod(
    const CIMObjectPath& path, std::string methodName, CIMMethodParam& in, CIMMethodParam& out) {
  unsigned int returnValue = 0;
  withPlugin(Operation("invokeMethod"), path.className(), [&](AbstractProviderPlugin& plugin) {
    returnValue = plugin.invokeMethod(path, methodName, in, out);
  });
  return returnValue;
}

void FrameworkFacade::references(
    CIMObjectPath& path, const std::string& resultClass, std::vector<CIMInstance>& instances,
    const std::string& role) {
  withPlugin(Operation("references"), path.className(), ifAssociation([&](AbstractProviderPlugin& plugin) {
               plugin.references(path, resultClass, instances, role);
             }));
}

void FrameworkFacade::referencesNames(
    CIMObjectPath& path, const std::string& resultClass, const std::string& role,
    std::vector<CIMObjectPath>& names) {
  withPlugin(
      Operation("referencesNames").tracedAs("referenceNames"), path.className(),
      ifAssociation(
          [&](AbstractProviderPlugin& plugin) { plugin.referencesNames(path, resultClass, role, names); }));
}

void FrameworkFacade::associators(
    CIMObjectPath& path, std::string& assocClass, std::vector<CIMInstance>& instances,
    std::string& resultClass, std::string& role, std::string& resultRole, const char** propertyList) {
  const Operation operation = Operation("associators").withoutRegistry(NO_REGISTRY);
  traceEntry(operation.traceName);
  KvsLogMsg(KVS_LOG_INFORMATION, "################ FrameworkFacade::associators() ######################");
  KvsLogMsg(KVS_LOG_INFORMATION, "LHS ObjectPath = %s", path.toString().c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "AssociationClass Name = %s", assocClass.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "RHS resultClass = %s", resultClass.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "Role = %s", role.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "ResultRole = %s", resultRole.c_str());
  KvsLogMsg(KVS_LOG_INFORMATION, "######################################################################");
  withPluginAfterEntry(operation, assocClass, ifAssociation([&](AbstractProviderPlugin& plugin) {
                         plugin.associators(
                             path, assocClass, instances, resultClass, role, resultRole, propertyList);
                       }));
}

void FrameworkFacade::associatorsNames(
    CIMObjectPath& path, std::string& assocClass, std::vector<CIMObjectPath>& names, std::string& resultClass,
    std::string& role, std::string& resultRole) {
  withPlugin(
      Operation("associatorsNames").tracedAs("associatorNames"), assocClass,
      ifAssociation([&](AbstractProviderPlugin& plugin) {
        plugin.associatorNames(path, assocClass, names, resultClass, role, resultRole);
      }));
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
  // COMPAT: logs are searched for the registration's wording here too.
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
