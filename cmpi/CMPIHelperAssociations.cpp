// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMException.h"
#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/FrameworkFacade.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIHelperPaths.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMException;
using fwf::CIMObjectPath;
using fwf::CommonFunctions;
using fwf::FrameworkFacade;

constexpr char STANDARD_PREFIX[] = "CIM_";

CMPIObjectGuard<CMPIObjectPath>
pathOfClass(const CIMObjectPath& path, const std::string& className, const CMPIBroker* broker) {
  return CMPIObjectGuard<CMPIObjectPath>(
      makeObjectPath(path.nameSpace(), className, {}, KeySelection::All, broker));
}

/** Whether the object manager says that the class of the path derives from either end. */
bool derivesFromAnEnd(
    const CIMObjectPath& path, const std::string& antecedent, const std::string& dependent,
    const CMPIBroker* broker) {
  const CMPIObjectGuard<CMPIObjectPath> source = pathOfClass(path, path.className(), broker);
  if (!source.usable()) {
    return false;
  }
  KvsLogMsg(KVS_LOG_INFORMATION, "[CIMPAT:GetAssociationClasses] CMClassPathIsA");
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const bool fromAntecedent = CMClassPathIsA(broker, source.get(), antecedent.c_str(), &rc) != 0;
  const bool fromDependent = CMClassPathIsA(broker, source.get(), dependent.c_str(), &rc) != 0;
  return rc.rc == CMPI_RC_OK && (fromAntecedent || fromDependent);
}

/** Whether a registered class is an association that the class of the path takes part in. */
bool isRelated(
    FrameworkFacade& facade, const CIMObjectPath& path, const std::string& plugin, const CMPIBroker* broker) {
  std::string antecedent;
  std::string dependent;
  facade.getAntecedentAndDependentNames(plugin, antecedent, dependent);
  if (antecedent.empty() || dependent.empty()) {
    return false;
  }
  const char* source = path.className().c_str();
  if (antecedent == path.className() || dependent == path.className()) {
    KvsLogMsg(KVS_LOG_DEBUG, "[STRING EQUAL] %s is related in %s", source, plugin.c_str());
    return true;
  }
  const bool hasStandardEnd = antecedent.find(STANDARD_PREFIX) != std::string::npos ||
                              dependent.find(STANDARD_PREFIX) != std::string::npos;
  if (!hasStandardEnd || !derivesFromAnEnd(path, antecedent, dependent, broker)) {
    return false;
  }
  KvsLogMsg(KVS_LOG_DEBUG, "[IsRelated] %s is related in %s", source, plugin.c_str());
  return true;
}

bool isChild(
    const CIMObjectPath& path, const std::string& plugin, const char* assocClass, const CMPIBroker* broker) {
  if (plugin == CommonFunctions::toLower(assocClass)) {
    return false;
  }
  const CMPIObjectGuard<CMPIObjectPath> candidate = pathOfClass(path, plugin, broker);
  if (!candidate.usable()) {
    return false;
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  if (CMClassPathIsA(broker, candidate.get(), assocClass, &rc) == 0 || rc.rc != CMPI_RC_OK) {
    return false;
  }
  KvsLogMsg(KVS_LOG_DEBUG, "%s is a child of %s", plugin.c_str(), assocClass);
  return true;
}

}  // namespace

void CMPIHelper::GetAssociationClasses(
    CIMObjectPath const& path, char const* assocClass, CMPIBroker const* broker,
    std::vector<std::string>& out) {
  KvsLogMsg(KVS_LOG_DEBUG, "Entering CMPIHelper::GetAssociationClasses()");
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  if (facade == nullptr) {
    return;
  }
  std::vector<std::string> plugins;
  facade->getAllPluginNames(plugins, path.nameSpace());
  for (const std::string& plugin : plugins) {
    try {
      if (assocClass != nullptr ? isChild(path, plugin, assocClass, broker)
                                : isRelated(*facade, path, plugin, broker)) {
        out.push_back(plugin);
      }
    } catch (const CIMException&) {
      // A class whose path cannot be made is not a candidate; the conversion has logged why.
      continue;
    }
  }
}

}  // namespace tvp::cim::adap::cmpi
