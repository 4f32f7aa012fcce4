// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/AbstractAssociationProviderPlugin.h"
#include "CIM/Framework/FrameworkFacade.h"
#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIHelperPaths.h"
#include "cmpi/CMPIHelperValues.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

#include <algorithm>
#include <utility>

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::AbstractAssociationProviderPlugin;
using fwf::CIMInstance;
using fwf::CIMObjectPath;
using fwf::FrameworkFacade;

constexpr char NO_PLUGIN[] = "Failed to get plugin for association class";

std::string textOrEmpty(const char* text) {
  return text == nullptr ? std::string() : std::string(text);
}

/** What an association request asks for; an empty text asks for anything. */
struct AssociationRequest {
  AssociationRequest(
      const char* operation, const CMPIObjectPath* op, const char* through, const char* resultClassName)
      : assocClass(textOrEmpty(through)), resultClass(textOrEmpty(resultClassName)) {
    CMPIHelper::CMPIObjectPathToFrameworkObjectPath(op, true, source);
    KvsLogMsg(
        KVS_LOG_INFORMATION, "CMPIAdapter::%s: From:%s To:%s Tru:%s", operation, source.className().c_str(),
        resultClass.c_str(), assocClass.c_str());
  }

  CIMObjectPath source;
  std::string assocClass;
  std::string resultClass;  ///< class of the far end
};

/**
 * Whether the source is at one end of the association; if not, there is an error in the log. The other end
 * may be without a name.
 */
bool isRelated(FrameworkFacade& facade, const AssociationRequest& request) {
  std::string antecedent;
  std::string dependent;
  facade.getAntecedentAndDependentNames(request.assocClass, antecedent, dependent);
  const std::string source = CMPIAdapter::ToLower(request.source.className());
  if (!source.empty() &&
      (source == CMPIAdapter::ToLower(antecedent) || source == CMPIAdapter::ToLower(dependent))) {
    return true;
  }
  KvsLogMsg(
      KVS_LOG_ERROR, "Unrelated Association class %s for %s", request.assocClass.c_str(),
      request.source.className().c_str());
  return false;
}

/** The registered classes that serve a request: the named class if it is registered, else the candidates. */
std::vector<std::string>
associationClasses(FrameworkFacade& facade, const AssociationRequest& request, const CMPIBroker* broker) {
  std::vector<std::string> classes;
  if (!request.assocClass.empty() && facade.getPlugIn(request.assocClass) != nullptr) {
    if (isRelated(facade, request)) {
      classes.push_back(request.assocClass);
    }
    return classes;
  }
  CMPIHelper::GetAssociationClasses(
      request.source, request.assocClass.empty() ? nullptr : request.assocClass.c_str(), broker, classes);
  if (classes.empty()) {
    KvsLogMsg(KVS_LOG_ERROR, "%s", NO_PLUGIN);
  }
  return classes;
}

/**
 * Calls an operation of every association plugin that serves the request. For a reference operation the
 * facade chooses the plugin by the class of the path, which is the source here, so the plugins are called
 * directly.
 */
template <typename Call>
void askPlugins(const AssociationRequest& request, const CMPIBroker* broker, Call call) {
  FrameworkFacade& facade = requireFacade();
  for (const std::string& className : associationClasses(facade, request, broker)) {
    if (auto* plugin = dynamic_cast<AbstractAssociationProviderPlugin*>(facade.getPlugIn(className))) {
      call(*plugin);
    }
  }
}

/**
 * Whether the object manager considers a class the wanted one or a subclass of it; a class that it does not
 * know is not. @throws CIMException if it cannot say, since the result would be incomplete
 */
bool isWanted(
    const std::string& nameSpace, const std::string& className, const std::string& wanted,
    const CMPIBroker* broker) {
  const CMPIObjectGuard<CMPIObjectPath> path(
      makeObjectPath(nameSpace, className, {}, KeySelection::All, broker));
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const bool wantedClass = path.usable() && CMClassPathIsA(broker, path.get(), wanted.c_str(), &rc) != 0;
  if (!path.usable() ||
      (rc.rc != CMPI_RC_OK && rc.rc != CMPI_RC_ERR_INVALID_CLASS && rc.rc != CMPI_RC_ERR_NOT_FOUND)) {
    fail();
  }
  return wantedClass && rc.rc == CMPI_RC_OK;
}

/**
 * Drops everything that is not of the wanted class. The result class is not passed to the plugins: they know
 * only names, and only the object manager knows which classes derive from which.
 */
template <typename Item>
void keepWanted(std::vector<Item>& items, const std::string& wanted, const CMPIBroker* broker) {
  if (wanted.empty()) {
    return;
  }
  std::vector<Item> kept;
  for (Item& item : items) {
    if (isWanted(item.nameSpace(), item.className(), wanted, broker)) {
      kept.push_back(std::move(item));
    }
  }
  items.swap(kept);
}

}  // namespace

void CMPIAdapter::Associators(
    CMPIAssociationMI*, const CMPIContext*, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
    const char** properties, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("Associators", broker, status, [&] {
    AssociationRequest request("Associators", op, assocClass, resultClass);
    FrameworkFacade& facade = requireFacade();
    std::string nearRole = textOrEmpty(role);
    std::string farRole = textOrEmpty(resultRole);
    std::string anyClass;
    std::vector<CIMInstance> instances;
    for (std::string& className : associationClasses(facade, request, broker)) {
      facade.associators(request.source, className, instances, anyClass, nearRole, farRole, properties);
    }
    keepWanted(instances, request.resultClass, broker);
    ReturnInstances(broker, rslt, properties, std::move(instances), status);
  });
}

void CMPIAdapter::AssociatorNames(
    CMPIAssociationMI*, const CMPIContext*, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
    const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("AssociatorNames", broker, status, [&] {
    AssociationRequest request("AssociatorNames", op, assocClass, resultClass);
    FrameworkFacade& facade = requireFacade();
    // COMPAT: clients get a result that is not even marked as done without a plugin that relates the source.
    if (facade.getPlugIn(request.assocClass) == nullptr) {
      KvsLogMsg(KVS_LOG_ERROR, "%s", NO_PLUGIN);
      return;
    }
    if (!isRelated(facade, request)) {
      return;
    }
    std::string nearRole = textOrEmpty(role);
    std::string farRole = textOrEmpty(resultRole);
    std::string anyClass;
    std::vector<CIMObjectPath> names;
    facade.associatorsNames(request.source, request.assocClass, names, anyClass, nearRole, farRole);
    keepWanted(names, request.resultClass, broker);
    ReturnObjectPaths(broker, rslt, std::move(names), status);
  });
}

void CMPIAdapter::References(
    CMPIAssociationMI*, const CMPIContext*, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* resultClass, const char* role, const char** properties, const CMPIBroker* broker,
    CMPIStatus* status) {
  runOperation("References", broker, status, [&] {
    AssociationRequest request("References", op, resultClass, nullptr);
    const std::string nearRole = textOrEmpty(role);
    std::vector<CIMInstance> instances;
    askPlugins(request, broker, [&](AbstractAssociationProviderPlugin& plugin) {
      plugin.references(request.source, std::string(), instances, nearRole);
    });
    ReturnInstances(broker, rslt, properties, std::move(instances), status);
  });
}

void CMPIAdapter::ReferenceNames(
    CMPIAssociationMI*, const CMPIContext*, const CMPIResult* rslt, const CMPIObjectPath* op,
    const char* resultClass, const char* role, const CMPIBroker* broker, CMPIStatus* status) {
  runOperation("ReferenceNames", broker, status, [&] {
    AssociationRequest request("ReferenceNames", op, resultClass, nullptr);
    const std::string nearRole = textOrEmpty(role);
    std::vector<CIMObjectPath> names;
    askPlugins(request, broker, [&](AbstractAssociationProviderPlugin& plugin) {
      plugin.referencesNames(request.source, std::string(), nearRole, names);
    });
    ReturnObjectPaths(broker, rslt, std::move(names), status);
  });
}

}  // namespace tvp::cim::adap::cmpi
