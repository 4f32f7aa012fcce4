// SPDX-License-Identifier: Apache-2.0
#include "backend/TarvexProEventManager.h"

#include "backend/EventIndication.h"
#include "backend/LibraryAccess.h"
#include "backend/Refusal.h"
#include "backend/tvpCIMInstanceWrapper.h"
#include "oslib/KVSLog.h"
#include "oslib/KVSSystem.h"
#include "voltvk/Specs.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

namespace tvp::cim::fwf {

std::atomic<TvproEventManager*> TvproEventManager::pOwnInstance{nullptr};
KvsMutexHandle TvproEventManager::s_CreateMutex = nullptr;
std::atomic<bool> TvproEventManager::flagTermThread{false};
TvproEventManagerCleanUp TvproEventManager::_cleanup(&s_CreateMutex);

namespace {

constexpr std::uint32_t POLL_SECONDS = 5;
constexpr std::uint32_t POLICY_ENGINE_STARTED = 0x701;
constexpr std::uint32_t POLICY_ENGINE_STOPPED = 0x702;

bool isPolicyEngineRunning() {
  RaidObject* root = getTarvexProRoot();
  return root != nullptr && root->isPolicyEngineRunning();
}

/** The code in hexadecimal, read as a decimal number up to the first letter: 0x701 is published as 701. */
unsigned int publishedCode(std::uint32_t code) {
  constexpr int DECIMAL = 10;
  char digits[sizeof code * 2 + 1];
  std::snprintf(digits, sizeof digits, "%X", code);
  return static_cast<unsigned int>(std::strtoul(digits, nullptr, DECIMAL));
}

/** Runs work for an event; on allocation failure this one is lost, with a line in the log, not those after
 * it. */
template <typename Work>
void orLose(const VolEvent& event, Work work) {
  try {
    work();
  } catch (const std::bad_alloc&) {
    KvsLogMsg(
        KVS_LOG_ERROR, "An event is lost, there is not enough memory to report it: %s", event.description);
  }
}

/** Stops the listener at unload, before anything that the listener uses is destroyed. */
class ListenerStopper {
public:
  explicit ListenerStopper(TvproEventManager& manager) : m_manager(manager) {}
  ~ListenerStopper() { m_manager.stopListener(); }
  ListenerStopper(const ListenerStopper&) = delete;
  ListenerStopper& operator=(const ListenerStopper&) = delete;

private:
  TvproEventManager& m_manager;
};

}  // namespace

TvproEventManager::TvproEventManager(bool policyEngineRunning)
    : m_listener(nullptr), m_policyEngineRunning(policyEngineRunning), m_listenerProcess(0) {}

TvproEventManager::~TvproEventManager() {
  stopListener();
}

void TvproEventManager::stopListener() {
  if (m_listenerProcess != KvsGetProcessId()) {
    // A forked child has the handle but not the thread, so it must not wait for it.
    KvsThreadRelease(m_listener.exchange(nullptr));
  } else if (m_listener.load() != nullptr) {
    terminateEventListener();
  }
}

TvproEventManager* TvproEventManager::getInstance() {
  KvsTrace("Entering TvproEventManager::getInstance()");
  if (TvproEventManager* existing = pOwnInstance.load(std::memory_order_acquire)) {
    KvsTrace("Exiting TvproEventManager::getInstance()");
    return existing;
  }
  return kvsSingletonThatKeepsItsLock(pOwnInstance, s_CreateMutex, _cleanup, [] {
    return new (std::nothrow) TvproEventManager(isPolicyEngineRunning());
  });
}

bool TvproEventManager::initEventListener() {
  KvsTrace("Entering TvproEventManager::initEventListener()");
  {
    const std::lock_guard<std::mutex> oneStarter(m_listenerMutex);
    if (m_listener.load() == nullptr) {
      static ListenerStopper stopper(*this);
      m_listenerProcess = KvsGetProcessId();
      m_listener.store(KvsThreadCreate(TvproEventListenerThread, nullptr));
    }
  }
  if (m_listener.load() == nullptr) {
    KvsLogMsg(KVS_LOG_ERROR, "[TVPRO]Failed to create the Event listener thread!");
    return false;
  }
  KvsTrace("Exiting TvproEventManager::initEventListener()");
  return true;
}

bool TvproEventManager::terminateEventListener() {
  KvsTrace("Entering TvproEventManager::terminateEventListener()");
  flagTermThread.store(true);
  // Exchanged, so that only one of two callers waits for the thread and frees the handle.
  KvsThreadHandle listener = m_listener.exchange(nullptr);
  if (KvsCancelThreadSyncIO(listener) == 0) {
    KvsLogMsg(KVS_LOG_ERROR, "CancelSynchronousIo Failed for listner thread");
  }
  KvsWaitForThreadTerminate(listener);
  KvsThreadRelease(listener);
  KvsTrace("Exiting TvproEventManager::terminateEventListener()");
  return true;
}

void* TvproEventListenerThread(void*) {
  KvsTrace("Entering TvproEventManager::TvproEventListenerThread()");
  try {
    TvproEventManager::getInstance()->pollForEvent();
  } catch (...) {
    KvsLogMsg(KVS_LOG_ERROR, "TvproEventListenerThread could not poll for event");
  }
  KvsTrace("Exiting TvproEventManager::TvproEventListenerThread()");
  return nullptr;
}

void TvproEventManager::pollForEvent() {
  KvsTrace("Entering TvproEventManager::pollForEvent()");
  for (;;) {
    KvsSleep(POLL_SECONDS);
    if (flagTermThread.load()) {
      return;
    }
    try {
      pollOnce();
    } catch (const std::bad_alloc&) {
      // Unlike other exceptions, which end the listener: events that were not fetched are still there.
      KvsLogMsg(
          KVS_LOG_ERROR, "TvproEventListenerThread could not poll for event: there is not enough memory; it "
                         "tries again");
    }
  }
}

void TvproEventManager::pollOnce() {
  VolEventCollection events(0, 8, 0);
  Ret ret;
  if (TvkAdapter* adapter = getTvkAdapter()) {
    ret = adapter->getEvents(events);
    for (long index = 0; index < events.count(); ++index) {
      VolEvent* event = events.Obj_P(index);
      orLose(*event, [&] { report(event); });
    }
    reportPolicyEngineEvent();
  }
  KvsTrace("Exiting TvproEventManager::pollForEvent()");
  reportRefusedPoll(ret);
}

void TvproEventManager::report(VolEvent* event) {
  bool skip = false;
  if (!getEventdescription(event, skip)) {
    KvsLogMsg(KVS_LOG_DEBUG, "Going with event description from driver");
  }
  KvsLogMsg(
      KVS_LOG_DEBUG, "TvproEventManager::pollForEvent() - EventDesc after processing: %s",
      event->description);
  if (skip) {
    KvsLogMsg(KVS_LOG_DEBUG, "TvproEventManager::pollForEvent() - Ignoring internal pool related event ");
  } else {
    SendEventIndication(event);
  }
}

void TvproEventManager::reportRefusedPoll(const Ret& ret) {
  if (ret.getReturn() == TVK_OK && *ret.getDetail() != '\0') {
    KvsLogMsg(KVS_LOG_WARNING, "TvkAdapter::getEvents(): %s", ret.getDetail());
    return;
  }
  if (m_refusal != ret.getDetail()) {
    m_refusal = ret.getDetail();
    reportRefusal("TvkAdapter::getEvents", m_refusal.c_str());
  }
}

void TvproEventManager::reportPolicyEngineEvent() {
  VolEvent event;
  RaidObject* root = getTarvexProRoot();
  if (root == nullptr) {
    return;
  }
  const bool running = root->isPolicyEngineRunning();
  if (running == m_policyEngineRunning) {
    return;
  }
  m_policyEngineRunning = running;
  event.time = static_cast<std::uint32_t>(std::time(nullptr));
  event.code = running ? POLICY_ENGINE_STARTED : POLICY_ENGINE_STOPPED;
  event.type = running ? TVK_EVENT_INFORMATION : TVK_EVENT_ERROR;
  tvkSetText(
      event.description, TVK_EVENT_DESCRIPTION_SIZE,
      running ? "tarvex Plus - Policy Engine Service has started running"
              : "tarvex Plus - Policy Engine Service has stopped");
  orLose(event, [&] { SendEventIndication(&event); });
  KvsLogMsg(
      KVS_LOG_DEBUG, "Delivered Policy Engine status Event with Code = %d", static_cast<int>(event.code));
}

void TvproEventManager::SendEventIndication(VolEvent* event) {
  KvsTrace("Entering TvproEventManager::SendEventIndication()");
  unsigned char eventTime[TVP_TIME_STAMP_SIZE] = {};
  formatTimeStamp(eventTime, static_cast<long>(event->time));
  std::vector<CIMProperty> eventKeys;
  eventKeys.push_back(makeProperty<std::string>("eventTime", reinterpret_cast<const char*>(eventTime), true));
  eventKeys.push_back(makeProperty<unsigned int>("eventCode", publishedCode(event->code)));
  eventKeys.push_back(makeProperty<unsigned int>("eventType", event->type));
  eventKeys.push_back(makeProperty<std::string>("eventDesc", event->description, true));
  eventKeys.push_back(makeProperty<unsigned int>("Id", event->id));
  eventKeys.push_back(makeProperty<unsigned int>("ActionId", event->actionId));
  char localTime[KVS_LOCAL_TIME_SIZE] = {};
  KvsGetLocalTime(localTime, KVS_LOCAL_TIME_LOG);
  notifyEventIndication(localTime, eventKeys);
  KvsTrace("Exiting TvproEventManager::SendEventIndication()");
}

void formatTimeStamp(unsigned char* buffer, long time) {
  KvsTrace("Entering formatTimeStamp()");
  if (buffer == nullptr) {
    KvsLogMsg(KVS_LOG_ERROR, " Buffer is empty");
  } else {
    std::time_t seconds = time;
    std::tm local = {};
    tzset();  // so that a changed time zone counts, as it does for localtime
    if (localtime_r(&seconds, &local) == nullptr) {
      KvsLogMsg(KVS_LOG_ERROR, "Failed to proces supplied timestamp");
      seconds = std::time(nullptr);
      localtime_r(&seconds, &local);
    }
    constexpr long FIRST_YEAR = 1900;
    std::snprintf(
        reinterpret_cast<char*>(buffer), TVP_TIME_STAMP_SIZE, "%.2d/%.2d/%ld %.2d:%.2d:%.2d",
        local.tm_mon + 1, local.tm_mday, local.tm_year + FIRST_YEAR, local.tm_hour, local.tm_min,
        local.tm_sec);
  }
  KvsTrace("Exiting formatTimeStamp()");
}

}  // namespace tvp::cim::fwf
