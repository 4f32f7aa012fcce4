// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROEVENTMANAGER_H
#define BACKEND_TARVEXPROEVENTMANAGER_H

#include "oslib/KVSMutex.h"
#include "oslib/KVSSingleton.h"
#include "oslib/KVSThread.h"
#include "voltvk/Ret.h"
#include "voltvk/VolEvent.h"

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

class TvproEventManager;

/** Destroys the event manager, and with it the listener, when the library is unloaded. */
using TvproEventManagerCleanUp = KvsSingletonCleanUp<TvproEventManager>;

/**
 * Watches the storage library for events: one thread fetches them every five seconds, describes each from
 * the description catalogue, drops those of internal pools and sends the rest as indications. It also
 * reports when the policy engine starts or stops.
 *
 * getInstance, initEventListener and terminateEventListener may be called from any thread; everything
 * else belongs to the listener thread.
 */
class TvproEventManager {
public:
  /** @param policyEngineRunning the state from which the first change is reported */
  explicit TvproEventManager(bool policyEngineRunning);
  /** Stops the listener if it is running. */
  virtual ~TvproEventManager();
  TvproEventManager(const TvproEventManager&) = delete;
  TvproEventManager& operator=(const TvproEventManager&) = delete;

  /** The singleton, created on first use; null if that failed. */
  static TvproEventManager* getInstance();

  /** Starts the listener thread if none runs. @return false if it cannot be created (logged) */
  bool initEventListener();

  /**
   * Stops the listener permanently and waits for it, up to five seconds. If no listener is running, this only
   * keeps one from polling later. @return true
   */
  bool terminateEventListener();

  /** Stops the listener if one is running in this process; does nothing else. */
  void stopListener();

  /** The listener's loop; returns when the listener is told to stop. */
  void pollForEvent();

  /** One round of the loop: fetches, describes and sends the new events and checks the policy engine. */
  void pollOnce();

  /**
   * Replaces the event's description with the catalogue's text with the event's arguments filled in,
   * truncated to the size of the field at a character boundary.
   * @param skip set if the event concerns an internal pool and must not be sent
   * @return false if the catalogue has no text; the description is unchanged
   */
  bool getEventdescription(VolEvent* event, bool& skip);

  /** Rewrites the arguments and substitutes them for "{0}" to "{9}" in text. */
  void parse(std::string& text, std::vector<std::string>& args, unsigned int code, bool& skip);

  /** Turns arguments into readable words and sizes, depending on the event code. @param skip as above */
  void rephraseEventDescription(std::vector<std::string>& args, unsigned int code, bool& skip);

  /** The text without leading and trailing blanks and tabs. */
  static std::string trim(std::string text);

  /** Sends one event as an indication. */
  void SendEventIndication(VolEvent* event);

  /** Sends an event if the policy engine has started or stopped since the last call. */
  void reportPolicyEngineEvent();

private:
  /** Describes an event and sends it, unless it concerns an internal pool. */
  void report(VolEvent* event);
  /** Logs why the events could not be fetched, once for as long as the reason is the same. */
  void reportRefusedPoll(const Ret& ret);

  static std::atomic<TvproEventManager*> pOwnInstance;
  static KvsMutexHandle s_CreateMutex;
  static std::atomic<bool> flagTermThread;  ///< never cleared: a stopped listener stays stopped
  static TvproEventManagerCleanUp _cleanup;

  std::atomic<KvsThreadHandle> m_listener;  ///< null if no thread is running
  bool m_policyEngineRunning;
  std::string m_refusal;       ///< of the latest poll; empty if it was not refused
  int m_listenerProcess;       ///< the process that the listener runs in
  std::mutex m_listenerMutex;  ///< two callers start only one thread
};

/** Thread entry: polls until the listener is stopped. @return null */
void* TvproEventListenerThread(void* unused);

/** Directory of the description catalogue, with a trailing "/". */
std::string getEvtdescPath();

/** Room for any time that formatTimeStamp writes, with the terminating NUL. */
constexpr std::size_t TVP_TIME_STAMP_SIZE = 80;

/**
 * Writes the local time as "month/day/year hours:minutes:seconds".
 * @param buffer at least TVP_TIME_STAMP_SIZE bytes; null is logged and nothing is written
 * @param time seconds since the epoch; a time that cannot be converted is logged and the current one used
 */
void formatTimeStamp(unsigned char* buffer, long time);

}  // namespace tvp::cim::fwf

#endif
