// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_PROVIDER_REQUEST_H
#define HOST_PROVIDER_REQUEST_H

#include "cmpift.h"
#include "host/broker/Broker.h"
#include "host/schema/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tvp::host {

class Scope;
struct ResultContent;

/** The contents of a request's context. */
struct CallOptions {
  /** Whether the context has the entry CMPIPrincipal at all. */
  bool withPrincipal = true;
  /** The user name; without a value, the entry's string has a null text. */
  std::optional<std::string> principal = "root";
  /** The entry CMPIInvocationFlags. */
  CMPIFlags flags = 0;
};

/**
 * The scope of one call into a provider, on the thread that makes the call: its context, its result and every
 * object created on this thread in the meantime. When it ends, the objects are dead (a later use is a
 * breach); the results remain readable as C++ values.
 *
 * Requests nest (an upcall within a call). Not thread-safe: created, used and ended on one thread.
 */
class Request {
public:
  explicit Request(Broker& broker, const CallOptions& options = {});
  /** Ends the request. */
  ~Request();
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;

  CMPIContext* context() const { return m_context; }
  CMPIResult* result() const { return m_result; }

  /** Create objects of this request from values; owned by the request, not checked against the schema. */
  CMPIObjectPath* objectPath(const ObjectPath& path);
  CMPIInstance* instance(const Instance& instance);
  CMPIArgs* arguments(const Arguments& arguments);
  CMPISelectExp* selectExpression(const std::string& query, const std::string& language);
  /**
   * Creates the list for a method's output; if the method is given, names and types are checked against its
   * parameters.
   */
  CMPIArgs* outputArguments(const SchemaMethod* method = nullptr);

  /** Read objects back into values. @throws std::invalid_argument for an invalid or a dead object. */
  static ObjectPath read(const CMPIObjectPath* path);
  static Instance read(const CMPIInstance* instance);
  static Arguments read(const CMPIArgs* arguments);
  static std::string read(const CMPIString* text);

  /** Marks every object of the request dead and frees it; a second call does nothing. */
  void end();

  /** What the provider has returned, in order; also after the end. */
  const std::vector<Instance>& instances() const;
  const std::vector<ObjectPath>& paths() const;
  const std::vector<Value>& data() const;
  /** The message of the last error that the provider put into the result; empty if there was none. */
  const std::string& error() const;
  /** What the provider has logged through the broker on this thread, in order. */
  std::vector<std::string> remarks() const;
  /** Whether the end mark was set. */
  bool done() const;

private:
  Broker& m_broker;
  const std::unique_ptr<Scope> m_scope;
  Scope* m_before;
  bool m_ended = false;
  const std::shared_ptr<ResultContent> m_returned;  ///< shared with the result, which it outlives
  CMPIContext* m_context;
  CMPIResult* m_result;
};

}  // namespace tvp::host

#endif
