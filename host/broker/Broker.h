// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_BROKER_H
#define HOST_BROKER_BROKER_H

#include "cmpift.h"
#include "host/broker/Breach.h"
#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tvp::host {

class ObjectCore;
class Scope;

/** A call from the provider back into the broker: one of the intrinsic operations or a method call. */
struct Upcall {
  std::string operation;  ///< the name of the broker's function, for example "enumerateInstanceNames"
  ObjectPath path;
  Instance instance;  ///< for createInstance and modifyInstance
  std::string name;   ///< the method or property; the query of execQuery
  Arguments input;    ///< for invokeMethod; for setProperty, the value under its name
};

/** The result of an upcall: instances, paths or one value, depending on the operation. */
struct UpcallAnswer {
  CMPIrc rc = CMPI_RC_ERR_NOT_SUPPORTED;
  std::string message;  ///< accompanies a status that is not success
  std::vector<Value> values;
  Arguments output;  ///< for invokeMethod
};

/** What the host does when the provider calls. Called on the provider's threads, several at once. */
struct BrokerHandlers {
  /** Receives an indication; the result is the status of deliverIndication. Default: accepts and drops it. */
  std::function<CMPIrc(const std::string& nameSpace, const Instance& indication)> onIndication;
  /** Whether prepareAttachThread returns a context. Default: it does. */
  std::function<bool()> onPrepareAttachThread;
  /** The status of attachThread; the thread is attached if it is CMPI_RC_OK. Default: CMPI_RC_OK. */
  std::function<CMPIrc()> onAttachThread;
  /** Handles an upcall. Default: enumerations return nothing, everything else is not supported. */
  std::function<UpcallAnswer(const Upcall&)> onUpcall;
  /** Receives logMessage and trace, with the complete text. Default: drops it. */
  std::function<void(int severity, const std::string& id, const std::string& text)> onLog;
};

/** The object manager that a broker behaves like where they differ. */
enum class ObjectManager {
  /** None: it has every function and makes every check. */
  Strict,
  /**
   * "Pegasus". A path without its keys counts those of its class, and answers CMPI_RC_ERR_NO_SUCH_PROPERTY
   * for each. It has no memory functions.
   */
  OpenPegasus,
  /**
   * "RequestHandler". Its statuses have no messages. An empty array arrives as a null value of no
   * element type. With
   * authentication off, that is, without a principal's text, that text is a string with a null handle, and
   * the owner of a filter is null. A property list that the client left out is null. A creation must return a
   * path. What it makes itself while delivering is only freed by its memory functions. Providers are cleaned
   * up by two threads, twice.
   */
  Sfcb
};

/** How a broker behaves where object managers differ; fixed for its lifetime. */
struct BrokerOptions {
  /** State that getKey and getKeyAt report. COMPAT: an object manager that passes keys as plain good values.
   */
  CMPIValueState keyState = CMPI_keyValue;
  /** Accept unknown properties and wrong types silently. COMPAT: object managers that do. */
  bool lenient = false;
  /**
   * Number of dead objects that are kept, so that a late use is reported instead of reading freed memory. A
   * thread gets a sixteenth of them, at least one; from the 17th on, threads share.
   */
  std::size_t graveyard = 16384;
  ObjectManager manager = ObjectManager::Strict;
};

/**
 * The options for an object manager. @param name "strict", "openpegasus" or "sfcb"; null and empty mean
 * strict
 * @throws std::invalid_argument for any other name
 */
BrokerOptions optionsAs(const char* name);

/** How a call fails that was requested to. */
enum class Failing { WithStatus, WithException };

/** On which threads a function of the broker may be called. */
enum class Thread {
  Attached,  ///< one that is in a request or attached; any other is noted as a breach
  Any
};

/**
 * The object manager's side of CMPI 2.0: the function tables and every encapsulated object.
 *
 * It is stricter than any object manager (see setProperty and addKey in Strictness below), checks the handle
 * passed to each call (returning CMPI_RC_ERR_INVALID_HANDLE for an invalid one), gives every failure a
 * message, can make any call fail, and notes breaches of the rules.
 *
 * Strictness: an instance of an unknown class cannot be created (CMPI_RC_ERR_INVALID_CLASS); setProperty
 * fails for an unknown property (CMPI_RC_ERR_NO_SUCH_PROPERTY) and for a wrong type
 * (CMPI_RC_ERR_TYPE_MISMATCH; a string accepts CMPI_string and CMPI_chars, every type accepts null); addKey
 * with an array type fails (CMPI_RC_ERR_INVALID_DATA_TYPE). Values are copied when they are set.
 *
 * Thread-safe. It must outlive the requests, the providers and the threads that use it.
 */
class Broker {
public:
  explicit Broker(std::shared_ptr<const Schema> schema, BrokerOptions options = {});
  ~Broker();
  Broker(const Broker&) = delete;
  Broker& operator=(const Broker&) = delete;

  /** The interface passed to a provider; valid as long as this object exists. */
  const CMPIBroker* cmpi() const;
  const Schema& schema() const;
  const BrokerOptions& options() const;

  /** Replaces all handlers; calls already in progress may still use the old ones. */
  void setHandlers(BrokerHandlers handlers);

  /**
   * Makes the n-th call from now fail, counted from 1 over all functions of the broker and of its objects: a
   * function that returns a status returns rc, any other returns null or 0 and sets rc; or, how a C++ object
   * manager fails that is short of memory, it throws a std::bad_alloc. n = 0 cancels the request. Only one
   * call fails.
   */
  void failCall(std::uint64_t n, CMPIrc rc, Failing how = Failing::WithStatus);
  /** Calls made since the construction or resetCalls(). */
  std::uint64_t callCount() const;
  /** Sets the count to 0, clears the names, and records names from now on if requested. */
  void resetCalls(bool recordNames = false);
  /** Name of the i-th recorded call, from 0, for example "CMPIInstance.setProperty"; empty past the last. */
  std::string callName(std::size_t i) const;

  /** The breaches noted so far, in order. Leaks appear after reportLeaks(). */
  std::vector<Breach> breaches() const;
  void clearBreaches();
  /** Notes a breach, as the host's own checks do. */
  void addBreach(BreachKind kind, const std::string& text);
  /**
   * Notes every object that attached threads created and have not released. Call it after they have ended.
   */
  void reportLeaks();
  /** Number of objects that attached threads have created and not yet released. */
  std::size_t unreleasedObjects() const;

  /* What follows is for the function tables and objects of the broker, and for requests. */

  /** The broker behind the interface; null for a null or foreign one. */
  static Broker* of(const CMPIBroker* broker);
  std::shared_ptr<const BrokerHandlers> handlers() const;
  /**
   * Begins a call of a function: counts and records it, and notes a thread that is not attached if that
   * matters. @throws CallFailure if failCall() requested it.
   */
  void enter(const char* function, Thread thread);
  /** The current thread's scope; for a thread that has none, the scope for such stray threads. */
  Scope& scope();
  /** Sets the current thread's scope. @return the previous one, null if there was none. */
  Scope* enterScope(Scope* scope);
  void attachThread();
  void detachThread();
  /** The scope of objects that live as long as the broker: the contexts prepared for threads. */
  Scope& lastingScope();
  /** The scope of clones, which belong to their creator. */
  Scope& cloneScope();
  /** Keeps dead objects for a while. */
  void bury(std::vector<std::unique_ptr<ObjectCore>> dead);
  /** Notes the use of a dead object by a function. */
  void addLateUse(const ObjectCore& object, const char* function);

private:
  struct State;

  Scope* threadScope() const;
  std::vector<std::string> leaks() const;

  const std::unique_ptr<State> m_state;
};

/** The broker's own function tables, the same for all brokers like one object manager. */
CMPIBrokerFT* brokerServiceTable(ObjectManager manager);
CMPIBrokerEncFT* brokerEncapsulationTable();
CMPIBrokerExtFT* brokerSystemTable();
CMPIBrokerMemFT* brokerMemoryTable();

}  // namespace tvp::host

#endif
