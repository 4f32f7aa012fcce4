// SPDX-License-Identifier: Apache-2.0
#include "cmpi/CMPIMILifecycle.h"

#include "cmpi/CMPIAdapter.h"
#include "cmpi/CMPIAdapterOperation.h"
#include "cmpi/CMPIObjectGuard.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSMethodTrace.h"
#include "oslib/KVSMutex.h"
#include "oslib/KVSMutexGuard.h"

#include <atomic>
#include <cstdint>
#include <cstdio>

namespace tvp::cim::adap::cmpi {
namespace {

// What was last passed to the factories; they write it while requests read it.
std::atomic<const CMPIBroker*> g_Broker{nullptr};
std::atomic<const CMPIContext*> g_Context{nullptr};

/**
 * A lock that is no longer used. It is freed only when the library is unloaded, since a thread may still be
 * waiting for it.
 */
class RetiredMutex {
public:
  RetiredMutex() = default;
  ~RetiredMutex() { KvsMutexDelete(&m_handle); }
  RetiredMutex(const RetiredMutex&) = delete;
  RetiredMutex& operator=(const RetiredMutex&) = delete;

  void take(KvsMutexHandle handle) { m_handle = handle; }

private:
  KvsMutexHandle m_handle = nullptr;
};

/** Guards the count and the flags below; null once the provider has been torn down. */
std::atomic<KvsMutexHandle> mutexObject{KvsMutexInit()};
RetiredMutex retiredMutex;
std::int32_t refCnt = 0;
bool init = false;     ///< initialisation was attempted; it is not attempted again
bool cleanup = false;  ///< the provider was torn down

/** Starts the log and the adapter. Called once, under the lock. */
void startProvider() {
  KvsLogMsg(KVS_LOG_DEBUG, "I am working fine here");
  KvsLogInit("TVP");
  traceFunction("Entering", "tvpInitialize");
  CMPIAdapter* adapter = CMPIAdapter::getInstance();
  if (adapter == nullptr) {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to create CMPIAdapter instance");
    return;
  }
  adapter->setBroker(g_Broker);
  adapter->setContext(g_Context);
  if (adapter->initialize()) {
    KvsLogMsg(KVS_LOG_INFORMATION, "CMPIMI : Provider Initialized successfully");
  } else {
    KvsLogMsg(KVS_LOG_ERROR, "Failed to initialize CMPIAdapter");
  }
}

/** Counts one more interface and starts the provider with the first. */
void tvpInitialize() {
  traceFunction("Entering", "tvpInitialize");
  KvsMutexGuard guard(mutexObject.load());
  if (!guard.locked()) {
    KvsTrace("Leaving CMPIMI tvpInitialize()");
    return;
  }
  ++refCnt;
  KvsLogMsg(KVS_LOG_DEBUG, "Ref count = %d", static_cast<int>(refCnt));
  if (refCnt == 1 && !init) {
    init = true;
    try {
      startProvider();
    } catch (...) {
      KvsLogMsg(KVS_LOG_ERROR, "Failed to initialize CMPIAdapter");
    }
  } else {
    KvsLogMsg(KVS_LOG_INFORMATION, "Provider Initialization already done");
  }
  guard.unlock();
  traceFunction("Exiting", "tvpInitialize");
}

}  // namespace

const CMPIBroker* entryBroker() {
  return g_Broker;
}

CMPIString* newEntryMessage(const char* text) noexcept {
  return newMessage(g_Broker, text);
}

void traceFunction(const char* direction, const char* name) {
  fwf::traceParts({direction, " CMPIMI ", name, "()"});
}

void enterProvider(const CMPIBroker* broker, const CMPIContext* ctx) {
  g_Broker = broker;
  g_Context = ctx;
  tvpInitialize();
}

void CommonCleanup(const void* mi, const CMPIContext* ctx, CMPIStatus& status) {
  KvsMutexGuard guard(mutexObject.load());
  if (!guard.locked()) {
    return;
  }
  --refCnt;
  KvsLogMsg(KVS_LOG_DEBUG, "Ref count at cleanup = %d", static_cast<int>(refCnt));
  if (refCnt != 0 || cleanup) {
    guard.unlock();
    KvsLogMsg(KVS_LOG_INFORMATION, "Provider CleanUp already done");
    return;
  }
  if (mi == nullptr || !isObject(ctx)) {
    // Only a warning: bad arguments must not keep an object manager from shutting down.
    KvsLogMsg(KVS_LOG_INFORMATION, "%s", INVALID_PARAMETERS);
    status = CMPIStatus{CMPI_RC_OK, newEntryMessage("Warning : The input parameters are invalid")};
  }
  CMPIAdapter::deleteInstance();
  cleanup = true;
  guard.unlock();
  // Unavailable to all later callers. A factory that was called in the meantime waits for it with the old
  // handle.
  retiredMutex.take(mutexObject.exchange(nullptr));
}

}  // namespace tvp::cim::adap::cmpi
