// SPDX-License-Identifier: Apache-2.0
#ifndef CMPI_CMPIADAPTER_H
#define CMPI_CMPIADAPTER_H

#include "CIM/Framework/CIMInstance.h"
#include "CIM/Framework/CIMMethodParam.h"
#include "CIM/Framework/CIMObjectPath.h"
#include "cmpidt.h"
#include "oslib/KVSMutex.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace tvp::cim::adap::cmpi {

/**
 * Connects the CMPI entry points with the framework facade: converts what the object manager passes in, calls
 * the facade, and returns the results.
 *
 * Every operation reports through its status, which the caller has set to CMPI_RC_OK with a null message, and
 * throws nothing. A CIMException becomes the CMPI status of its code with its message, any other exception
 * CMPI_RC_ERR_FAILED with "Failed : Unknown Error"; without a broker the message is null.
 *
 * One per process. Operations take no lock and run concurrently on the object manager's threads; indications
 * are delivered on the event listener's thread.
 */
class CMPIAdapter {
public:
  /**
   * The singleton, created on the first call; every call takes the class lock.
   * @return null if the lock cannot be taken, memory runs out, or the adapter was deleted: it is created only
   * once per load of the library
   */
  static CMPIAdapter* getInstance();

  /** Destroys the singleton; waits for the event listener. Does nothing if there is none. */
  static void deleteInstance();

  /**
   * Starts the storage interface with its event listener, and the framework. Called once, with broker and
   * context set. @return false, with the reason in the log, if one of them failed
   */
  bool initialize();

  /** The most recent request context that was recorded; only ever compared, never used later. */
  void setContext(const CMPIContext* context) { m_baseContext = context; }
  const CMPIContext* getContext() const { return m_baseContext; }
  void setBroker(const CMPIBroker* broker) { m_broker = broker; }
  const CMPIBroker* getBroker() const { return m_broker; }

  /** The context with which threads of the provider attach to the broker. */
  const CMPIContext* getThreadContext() const { return m_threadContext; }
  /** Has the broker prepare a thread context from a request's context; null if it returns none. */
  void setThreadContext(const CMPIBroker* broker, const CMPIContext* context);
  /** Uses a request's own context instead, with which no thread is ever attached. */
  void resetThreadContextToContext(const CMPIContext* context);

  void EnumInstances(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char** properties, const CMPIBroker* broker, CMPIStatus* status);
  void EnumInstanceNames(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const CMPIBroker* broker, CMPIStatus* status);
  /** An instance that is not found is success without an instance. */
  void GetInstance(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char** properties, const CMPIBroker* broker, CMPIStatus* status);
  /** Accepts every instance and ignores it. */
  void CreateInstance(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const CMPIInstance* instance, const CMPIBroker* broker, CMPIStatus* status);
  /** For administrators only, see VerifyUserRole. Writes nothing to the result. */
  void ModifyInstance(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const CMPIInstance* instance, const char** properties, const CMPIBroker* broker, CMPIStatus* status);
  /** Accepts every path and does nothing. */
  void DeleteInstance(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const CMPIBroker* broker, CMPIStatus* status);

  /** For administrators only. Return values 0 and 5 are success; any other is CMPI_RC_ERR_FAILED. */
  void InvokeMethod(
      CMPIMethodMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char* methodName, const CMPIArgs* in, CMPIArgs* out, const CMPIBroker* broker,
      CMPIStatus* status);

  /**
   * The association operations. Texts may be null. When no plugin serves the association class, Associators,
   * References and ReferenceNames use every registered class that CMPIHelper's GetAssociationClasses finds.
   * AssociatorNames without a usable plugin returns without the end mark.
   */
  void Associators(
      CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
      const char** properties, const CMPIBroker* broker, CMPIStatus* status);
  void AssociatorNames(
      CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char* assocClass, const char* resultClass, const char* role, const char* resultRole,
      const CMPIBroker* broker, CMPIStatus* status);
  void References(
      CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char* resultClass, const char* role, const char** properties, const CMPIBroker* broker,
      CMPIStatus* status);
  void ReferenceNames(
      CMPIAssociationMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const char* resultClass, const char* role, const CMPIBroker* broker, CMPIStatus* status);

  /** Counts one more subscription; the first switches indications on. */
  void EnableIndications(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPIBroker* broker, CMPIStatus* status);
  /** Counts one subscription less, even below zero; reaching zero switches indications off. */
  void DisableIndications(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPIBroker* broker, CMPIStatus* status);
  /** Stores broker and context and prepares the thread context for deliveries. */
  void ActivateFilter(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, CMPIBoolean firstActivation, const CMPIBroker* broker, CMPIStatus* status);
  /** Does not change what ActivateFilter stored. */
  void DeActivateFilter(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, CMPIBoolean lastActivation, const CMPIBroker* broker, CMPIStatus* status);
  /** Always succeeds, as does AuthorizeFilter. */
  void MustPoll(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, const CMPIBroker* broker, CMPIStatus* status);
  void AuthorizeFilter(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, const char* owner, const CMPIBroker* broker, CMPIStatus* status);

  /**
   * Delivers an indication to the object manager; runs on the event listener's thread. Takes the class lock
   * only until the adapter exists.
   * @return true if it was delivered or nobody is subscribed; false with the reason in the log
   */
  static bool DeliverIndication(fwf::CIMInstance& indication);

  /**
   * Returns converted instances and marks the end. An instance that yields no CMPI object sets
   * CMPI_RC_ERR_FAILED and is left out; the others are returned.
   * @throws CIMException what a conversion throws; the end mark is then missing
   */
  static void ReturnInstances(
      const CMPIBroker* broker, const CMPIResult* rslt, const char** properties,
      std::vector<fwf::CIMInstance> instances, CMPIStatus* status);
  /** The same for object paths. */
  static void ReturnObjectPaths(
      const CMPIBroker* broker, const CMPIResult* rslt, std::vector<fwf::CIMObjectPath> paths,
      CMPIStatus* status);
  /** Converts a method's output, if there is any. @throws CIMException what the conversion throws */
  static void FormArguments(
      const CMPIBroker* broker, const CMPIResult* rslt, const fwf::CIMMethodParam& out, CMPIArgs* outArgs,
      CMPIStatus* status);

  /**
   * Whether the user's primary group in the password file is 0. Supplementary groups and the user id are
   * ignored. The file is read again on every call. @param hostName unused
   */
  static bool VerifyUserRole(const std::string& userName, const std::string& hostName);

  /** The text in lower case, as CommonFunctions::toLower returns it. */
  static std::string ToLower(const std::string& text);

private:
  CMPIAdapter();
  ~CMPIAdapter();
  CMPIAdapter(const CMPIAdapter&) = delete;
  CMPIAdapter& operator=(const CMPIAdapter&) = delete;

  static CMPIAdapter* instanceWithoutLock();
  void getPegasusSMISProfRegObjPaths();

  static std::atomic<CMPIAdapter*> m_adapins;  ///< not cleared when the adapter is deleted
  static std::atomic<bool> m_deleted;
  static KvsMutexHandle m_mutexObject;
  static std::atomic<std::int32_t> m_numOfSubscriptions;
  static fwf::CIMObjectPath m_smisProfile;    ///< of the registered profile "SNIA+SMI-S+1.5.0"
  static fwf::CIMObjectPath m_serverProfile;  ///< of the registered profile "SNIA+Server+1.5.0"

  std::atomic<const CMPIContext*> m_baseContext{nullptr};
  std::atomic<const CMPIBroker*> m_broker{nullptr};
  std::atomic<const CMPIContext*> m_threadContext{nullptr};
  /**
   * The thread context if the broker prepared it, else null. A single atomic, so that the listener never
   * mistakes a request's context for a prepared one.
   */
  std::atomic<const CMPIContext*> m_preparedContext{nullptr};
};

}  // namespace tvp::cim::adap::cmpi

#endif
