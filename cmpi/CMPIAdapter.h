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
 * Stands between the CMPI entry points and the framework facade: converts what the object manager
 * hands in, calls the facade, and hands the results back.
 *
 * Every operation reports through its status, which the caller has set to CMPI_RC_OK with a null message,
 * and throws nothing. A CIMException becomes the CMPI status of its code with its message, anything else
 * thrown CMPI_RC_ERR_FAILED with "Failed : Unknown Error"; without a broker the message is null.
 *
 * One per process. Operations take no lock and run concurrently on the object manager's threads;
 * indications are delivered on the event listener's thread.
 */
class CMPIAdapter {
public:
  /**
   * The singleton, made on the first call; every call takes the class lock.
   * @return null when the lock cannot be taken, memory is short, or the adapter was deleted: there is one
   * life per load of the library
   */
  static CMPIAdapter* getInstance();

  /** Destroys the singleton; waits for the event listener. Nothing happens when there is none. */
  static void deleteInstance();

  /**
   * Starts the storage interface with its event listener, and the framework. Called once, with broker
   * and context set. @return false, with the reason on the log, when one of them failed
   */
  bool initialize();

  /** The context of the latest request that left one; kept to be compared, never to be used later. */
  void setContext(const CMPIContext* context) { m_baseContext = context; }
  const CMPIContext* getContext() const { return m_baseContext; }
  void setBroker(const CMPIBroker* broker) { m_broker = broker; }
  const CMPIBroker* getBroker() const { return m_broker; }

  /** The context with which threads of the provider attach to the broker. */
  const CMPIContext* getThreadContext() const { return m_threadContext; }
  /** Has the broker prepare a thread context from a request's context; null when it gives none. */
  void setThreadContext(const CMPIBroker* broker, const CMPIContext* context);
  /** Takes a request's own context instead, with which no thread will ever be attached. */
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
  /** Accepts every instance and does nothing with it. */
  void CreateInstance(
      CMPIInstanceMI* mi, const CMPIContext* ctx, const CMPIResult* rslt, const CMPIObjectPath* op,
      const CMPIInstance* instance, const CMPIBroker* broker, CMPIStatus* status);
  /** For administrators only, see VerifyUserRole. Nothing is written to the result. */
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
   * The association operations. Texts may be null. Associators, References and ReferenceNames take,
   * when no plugin serves the association class, every registered class that CMPIHelper's
   * GetAssociationClasses finds. AssociatorNames without a usable plugin ends without the end mark.
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

  /** Counts one subscription more; the first switches indications on. */
  void EnableIndications(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPIBroker* broker, CMPIStatus* status);
  /** Counts one less, below zero too; reaching zero switches indications off. */
  void DisableIndications(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPIBroker* broker, CMPIStatus* status);
  /** Remembers broker and context and prepares the thread context for deliveries. */
  void ActivateFilter(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, CMPIBoolean firstActivation, const CMPIBroker* broker, CMPIStatus* status);
  /** Keeps what ActivateFilter remembered. */
  void DeActivateFilter(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, CMPIBoolean lastActivation, const CMPIBroker* broker, CMPIStatus* status);
  /** Always fine, as is AuthorizeFilter. */
  void MustPoll(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, const CMPIBroker* broker, CMPIStatus* status);
  void AuthorizeFilter(
      CMPIIndicationMI* mi, const CMPIContext* ctx, const CMPISelectExp* filter, const char* className,
      const CMPIObjectPath* op, const char* owner, const CMPIBroker* broker, CMPIStatus* status);

  /**
   * Hands an indication to the object manager; runs on the event listener's thread. Takes the class lock only
   * while there has been no adapter yet.
   * @return true when it was delivered or nobody is subscribed; false with the reason on the log
   */
  static bool DeliverIndication(fwf::CIMInstance& indication);

  /**
   * Returns converted instances and marks the end. One that gives no CMPI object sets
   * CMPI_RC_ERR_FAILED and is left out; the others are returned.
   * @throws CIMException what a conversion throws; then there is no end mark
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
   * Whether the user's primary group in the password file is 0. Supplementary groups and the user id
   * do not count. The file is read anew on every call. @param hostName not used
   */
  static bool VerifyUserRole(const std::string& userName, const std::string& hostName);

  /** The text with every byte lowered, as CommonFunctions::toLower does it. */
  static std::string ToLower(const std::string& text);

private:
  CMPIAdapter();
  ~CMPIAdapter();
  CMPIAdapter(const CMPIAdapter&) = delete;
  CMPIAdapter& operator=(const CMPIAdapter&) = delete;

  static CMPIAdapter* instanceWithoutLock();
  void getPegasusSMISProfRegObjPaths();

  static std::atomic<CMPIAdapter*> m_adapins;  ///< not reset when the adapter is deleted
  static std::atomic<bool> m_deleted;
  static KvsMutexHandle m_mutexObject;
  static std::atomic<std::int32_t> m_numOfSubscriptions;
  static fwf::CIMObjectPath m_smisProfile;    ///< of the registered profile "SNIA+SMI-S+1.5.0"
  static fwf::CIMObjectPath m_serverProfile;  ///< of the registered profile "SNIA+Server+1.5.0"

  std::atomic<const CMPIContext*> m_baseContext{nullptr};
  std::atomic<const CMPIBroker*> m_broker{nullptr};
  std::atomic<const CMPIContext*> m_threadContext{nullptr};
  /** The thread context if the broker prepared it, else null. One atomic, so that the listener never takes
   * a request's context for a prepared one. */
  std::atomic<const CMPIContext*> m_preparedContext{nullptr};
};

}  // namespace tvp::cim::adap::cmpi

#endif
