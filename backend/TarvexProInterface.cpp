// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProInterface.h"

#include "backend/BackendResult.h"
#include "backend/TarvexProEventManager.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"

#include <memory>
#include <new>

namespace tvp::cim::fwf {

std::atomic<TVPInterface*> TVPInterface::pTVPInterface{nullptr};
KvsMutexHandle TVPInterface::s_CreateMutex = nullptr;
KvsMutexHandle TVPInterface::tarvexProlibGuard = nullptr;
TVPInterfaceCleanUp TVPInterface::_cleanup(&s_CreateMutex, &tarvexProlibGuard);

TVPInterface::TVPInterface() : m_library(nullptr), m_released(false) {
  KvsLogInit("tvpIf");
  tvpMethodTrace trace("TVPInterface");
  initializeRoutineList(m_routines);
}

TVPInterface::~TVPInterface() {
  if (!m_released.exchange(true)) {
    delete m_library.load();
  }
}

TVPInterface* TVPInterface::getInstance() {
  return kvsSingletonThatKeepsItsLock(pTVPInterface, s_CreateMutex, _cleanup, []() -> TVPInterface* {
    try {
      return new (std::nothrow) TVPInterface;
    } catch (...) {
      KvsTrace("Exception caught in TVPInterface::getInstance()");
      return nullptr;
    }
  });
}

unsigned int TVPInterface::initialize(bool startEventListener, bool) {
  tvpMethodTrace trace("TVPInterface::initialize");
  if (m_released.load()) {
    m_library.store(nullptr);
    m_released.store(false);
  }
  refreshConfiguration();
  if (startEventListener) {
    TvproEventManager* eventManager = TvproEventManager::getInstance();
    if (eventManager == nullptr || !eventManager->initEventListener()) {
      KvsLogMsg(KVS_LOG_FATAL, "Somthing went wrong!!! Event Listener didn't start");
      return BACKEND_FAILED;
    }
  }
  return BACKEND_DONE;
}

unsigned int TVPInterface::terminate() {
  tvpMethodTrace trace("TVPInterface::terminate");
  if (TvproEventManager* eventManager = TvproEventManager::getInstance()) {
    eventManager->terminateEventListener();
  }
  if (!m_released.exchange(true)) {
    delete m_library.load();
  }
  return BACKEND_DONE;
}

TvkLib* TVPInterface::getTarvexProLib() {
  if (m_released.load()) {
    return nullptr;
  }
  TvkLib* library = m_library.load(std::memory_order_acquire);
  if (library != nullptr) {
    return library;
  }
  try {
    std::unique_ptr<TvkLib> created(new (std::nothrow) TvkLib);
    // If two threads make the first call together, only one keeps its object; nobody takes the guard mutex.
    if (created && m_library.compare_exchange_strong(library, created.get())) {
      library = created.release();
      reportMissingDriver(*library);
    }
  } catch (...) {
    KvsLogMsg(KVS_LOG_ERROR, "The storage library cannot be set up: its top object threw an exception");
  }
  return library;
}

void TVPInterface::refreshConfiguration() {
  try {
    if (TvkLib* library = getTarvexProLib()) {
      library->refreshConfiguration();
      reportMissingDriver(*library);
    }
  } catch (...) {
    KvsLogMsg(KVS_LOG_ERROR, "The storage library threw an exception while it re-read its configuration");
  }
}

void TVPInterface::reportMissingDriver(TvkLib& library) {
  const std::string reason = library.getOpenError();
  const std::lock_guard<std::mutex> oneReporter(m_reasonMutex);
  if (reason != m_reason) {
    m_reason = reason;
    if (!reason.empty()) {
      KvsLogMsg(KVS_LOG_ERROR, "The storage driver is not available: %s", reason.c_str());
    }
  }
}

unsigned int TVPInterface::GetConfig() {
  tvpMethodTrace trace("TVPInterface::GetConfig");
  refreshConfiguration();
  return BACKEND_DONE;
}

unsigned int TVPInterface::execute(
    const CIMObjectPath& path, const std::string& name, const CIMMethodParam& in, CIMMethodParam& out) {
  tvpMethodTrace trace("TVPInterface::execute");
  const auto routine = m_routines.find(name);
  if (routine == m_routines.end()) {
    return BACKEND_NO_SUCH_ROUTINE;
  }
  try {
    return routine->second.function(path, in, out);
  } catch (...) {
    KvsLogMsg(
        KVS_LOG_ERROR, "The method %s ended with an exception; nothing is known of its outcome",
        name.c_str());
    return BACKEND_FAILED;
  }
}

unsigned int TVPInterface::TVPGetSupportedRoutines(std::vector<std::string>& names) {
  names.clear();
  for (const auto& routine : m_routines) {
    names.push_back(routine.first);
  }
  return BACKEND_DONE;
}

}  // namespace tvp::cim::fwf
