// SPDX-License-Identifier: Apache-2.0
#ifndef BACKEND_TARVEXPROINTERFACE_H
#define BACKEND_TARVEXPROINTERFACE_H

#include "backend/TarvexProExecute.h"
#include "oslib/KVSMutex.h"
#include "oslib/KVSSingleton.h"
#include "voltvk/TvkLib.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace tvp::cim::fwf {

class TVPInterface;
using TVPInterfaceCleanUp = KvsSingletonCleanUp<TVPInterface>;

/**
 * The only gateway to the storage library: owns its top object, starts and stops the event listener and
 * executes the extrinsic methods by name. No operation throws. All operations may be called from any thread;
 * calls into the storage library are not serialised here.
 */
class TVPInterface {
public:
  virtual ~TVPInterface();
  TVPInterface(const TVPInterface&) = delete;
  TVPInterface& operator=(const TVPInterface&) = delete;

  /** The singleton, created on first use; null if that failed, and a later call tries again. */
  static TVPInterface* getInstance();

  /**
   * Creates the storage library's top object and has it read the configuration. After terminate it creates a
   * new one.
   * @param startEventListener also starts the listener thread
   * @return BACKEND_DONE; BACKEND_FAILED if the listener did not start (logged as fatal)
   */
  unsigned int initialize(bool startEventListener, bool unused = false);

  /**
   * Stops the event listener, which takes up to its sleep of five seconds, and destroys the storage library's
   * top object. No object of that library may be in use. Always returns 0.
   */
  unsigned int terminate();

  /**
   * The storage library's top object, created on first use. Owned here.
   * @return null after terminate, until initialize is called again
   */
  TvkLib* getTarvexProLib();

  /** Has the storage library re-read its configuration, between two trace lines. Always returns 0. */
  unsigned int GetConfig();

  /**
   * Carries out an extrinsic method.
   * @return the routine's result; BACKEND_NO_SUCH_ROUTINE for another name
   */
  unsigned int
  execute(const CIMObjectPath& path, const std::string& name, const CIMMethodParam& in, CIMMethodParam& out);

  /** Replaces names with the names of all routines in ascending order. Always returns 0. */
  unsigned int TVPGetSupportedRoutines(std::vector<std::string>& names);

private:
  TVPInterface();

  /** Logs what the library throws, and the reason for a missing driver, once for each new reason. */
  void refreshConfiguration();
  void reportMissingDriver(TvkLib& library);

  static std::atomic<TVPInterface*> pTVPInterface;
  static KvsMutexHandle s_CreateMutex;
  static KvsMutexHandle tarvexProlibGuard;  ///< made and destroyed with s_CreateMutex; no operation takes it
  static TVPInterfaceCleanUp _cleanup;

  std::atomic<TvkLib*> m_library;  ///< not cleared by terminate
  std::atomic<bool> m_released;    ///< what m_library points to has been destroyed
  std::mutex m_reasonMutex;
  std::string m_reason;  ///< the last logged reason for a missing driver
  routineTable m_routines;
};

}  // namespace tvp::cim::fwf

#endif
