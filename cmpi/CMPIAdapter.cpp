// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIAdapter.h"

#include "CIM/Framework/CommonFunctions.h"
#include "CIM/Framework/FrameworkFacade.h"
#include "backend/TarvexProInterface.h"
#include "cmpi/CMPIHelper.h"
#include "cmpi/CMPIObjectGuard.h"
#include "cmpimacs.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMutexGuard.h"
#include "oslib/KVSSingleton.h"

namespace tvp::cim::adap::cmpi {
namespace {

using fwf::CIMObjectPath;
using fwf::FrameworkFacade;
using fwf::TVPInterface;

constexpr char PROFILE_NAMESPACE[] = "root/PG_InterOp";
constexpr char PROFILE_CLASS[] = "PG_RegisteredProfile";
constexpr char SMIS_PROFILE[] = "SNIA+SMI-S+1.5.0";
constexpr char SERVER_PROFILE[] = "SNIA+Server+1.5.0";

/** The string value of a path's first key; empty if there is no key. */
std::string firstKeyText(const CIMObjectPath& path) {
  if (path.keyBindings().empty() || path.keyBindings().front().stringSlot().m_values.empty()) {
    return std::string();
  }
  return path.keyBindings().front().stringSlot().m_values.front();
}

/** The registered profiles as the object manager lists them. @return null if it cannot list them */
CMPIEnumeration* enumerateProfiles(const CMPIBroker* broker, const CMPIContext* context) {
  if (broker == nullptr || context == nullptr || broker->bft == nullptr ||
      broker->bft->enumerateInstanceNames == nullptr) {
    return nullptr;
  }
  CMPIStatus rc{CMPI_RC_OK, nullptr};
  const CMPIObjectGuard<CMPIObjectPath> profileClass(
      CMNewObjectPath(broker, PROFILE_NAMESPACE, PROFILE_CLASS, &rc));
  if (rc.rc != CMPI_RC_OK || !profileClass.usable()) {
    return nullptr;
  }
  CMPIObjectGuard<CMPIEnumeration> profiles(CBEnumInstanceNames(broker, context, profileClass.get(), &rc));
  return rc.rc == CMPI_RC_OK ? profiles.leave() : nullptr;
}

}  // namespace

std::atomic<CMPIAdapter*> CMPIAdapter::m_adapins{nullptr};
std::atomic<bool> CMPIAdapter::m_deleted{false};
KvsMutexHandle CMPIAdapter::m_mutexObject = KvsMutexInit();
CIMObjectPath CMPIAdapter::m_smisProfile;
CIMObjectPath CMPIAdapter::m_serverProfile;

CMPIAdapter::CMPIAdapter() {
  KvsTrace("Entering CMPIAdapter::CMPIAdapter()");
}

CMPIAdapter::~CMPIAdapter() {
  KvsTrace("Entering CMPIAdapter::~CMPIAdapter()");
  if (FrameworkFacade* facade = FrameworkFacade::getInstance()) {
    facade->deRegisterForEvent();
    delete facade;
  }
  TVPInterface* library = TVPInterface::getInstance();
  if (library != nullptr && library->terminate() == 0) {
    KvsTrace(" TVP Interface pointer deleted successfully");
  }
  // deleteInstance holds this lock, so deleting it fails and the handle survives. COMPAT: a thread that waits
  // in getInstance must find a lock to wake up with.
  if (m_mutexObject != nullptr && KvsMutexDelete(&m_mutexObject) != 0) {
    KvsLogMsg(KVS_LOG_ERROR, "%s :: Failed to delete mutex object.", "~CMPIAdapter");
  }
  KvsTrace("Exiting CMPIAdapter::~CMPIAdapter()");
}

CMPIAdapter* CMPIAdapter::instanceWithoutLock() {
  return m_deleted ? nullptr : m_adapins.load();
}

CMPIAdapter* CMPIAdapter::getInstance() {
  const KvsMutexGuard guard(m_mutexObject);
  if (!guard.locked()) {
    return nullptr;
  }
  kvsCreateSingleton(m_adapins, guard, [] { return new CMPIAdapter; });
  return instanceWithoutLock();
}

void CMPIAdapter::deleteInstance() {
  if (KvsMutexLock(m_mutexObject) != 0) {
    return;
  }
  if (CMPIAdapter* adapter = instanceWithoutLock()) {
    // First, so that the listener, which the destructor waits for, no longer finds an adapter.
    m_deleted = true;
    delete adapter;
  }
  KvsMutexUnlock(m_mutexObject);
}

bool CMPIAdapter::initialize() {
  KvsTrace("Entering CMPIAdapter initialize()");
  TVPInterface* library = TVPInterface::getInstance();
  if (library == nullptr || library->initialize(true) != 0) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to intialize interface with library");
    return false;
  }
  FrameworkFacade* facade = FrameworkFacade::getInstance();
  if (facade == nullptr) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to create FrameworkFacade instance");
    return false;
  }
  getPegasusSMISProfRegObjPaths();
  if (!facade->registerForEvent(&CMPIAdapter::DeliverIndication)) {
    KvsLogMsg(KVS_LOG_DEBUG, "CALLBACK REGISTRATION UnSuccessful.");
    return false;
  }
  KvsLogMsg(KVS_LOG_DEBUG, "CALLBACK REGISTRATION Successful.");
  if (!facade->initialize()) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to initialize FrameworkFacade");
    return false;
  }
  KvsLogMsg(KVS_LOG_INFORMATION, "Successfully initialized FrameworkFacade");
  KvsTrace("Exiting CMPIAdapter initialize()");
  return true;
}

/**
 * Keeps the paths of the two profiles that the product belongs to; everything works the same without them.
 */
void CMPIAdapter::getPegasusSMISProfRegObjPaths() {
  KvsLogMsg(KVS_LOG_INFORMATION, "Initializing the PG_* object paths for SMI-S Registered Profiles");
  try {
    const CMPIObjectGuard<CMPIEnumeration> profiles(enumerateProfiles(m_broker, m_baseContext));
    if (!profiles.usable()) {
      KvsLogMsg(KVS_LOG_ERROR, "Failed to Create Association");
      return;
    }
    CMPIStatus rc{CMPI_RC_OK, nullptr};
    while (rc.rc == CMPI_RC_OK && CMHasNext(profiles.get(), &rc) != 0) {
      const CMPIData profile = CMGetNext(profiles.get(), &rc);
      if (rc.rc != CMPI_RC_OK || profile.type != CMPI_ref) {
        continue;
      }
      CIMObjectPath path;
      CMPIHelper::CMPIObjectPathToFrameworkObjectPath(profile.value.ref, true, path);
      const std::string identifier = firstKeyText(path);
      if (identifier == SMIS_PROFILE) {
        m_smisProfile = path;
      } else if (identifier == SERVER_PROFILE) {
        m_serverProfile = path;
      }
    }
  } catch (...) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to Create Association");
  }
}

std::string CMPIAdapter::ToLower(const std::string& text) {
  return fwf::CommonFunctions::toLower(text);
}

}  // namespace tvp::cim::adap::cmpi
