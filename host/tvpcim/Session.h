// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_SESSION_H
#define HOST_TVPCIM_SESSION_H

#include "host/broker/Broker.h"
#include "host/provider/Provider.h"
#include "host/schema/Schema.h"
#include "host/tvpcim/Options.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/**
 * The way to the operations: the classes, and either the broker and the provider itself with the user's name
 * on the requests, or the connection to a server; each is made when it is first needed.
 *
 * A request that fails is an OperationError with the name of its status, its message and what to do. Belongs
 * to one thread. The destructor does not clean the provider up and must not run while the provider is loaded:
 * the process ends first, or cleanUp() was called.
 */
class Session {
public:
  explicit Session(const Options& options) : m_options(options) {}
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /** @throws OperationError when the file is missing or is wrong (file, line, what was expected). */
  const Schema& schema();
  /** A class of the schema, or one without properties for a name of the standard schema ("CIM_..."), valid as
   *  long as the session. @throws UsageError with names that are near, for an unknown class. */
  const SchemaClass& classNamed(const std::string& name);
  /** A path without keys, in the namespace of the options. @throws UsageError for an unknown class. */
  ObjectPath pathOf(const std::string& className);
  /** Reads a path; the namespace is that of the options when the text has none. @throws UsageError for a
   *  malformed text, an unknown class or a key that the class does not have. */
  ObjectPath parsePath(const std::string& text);

  /** Whether a server is asked, and not the provider of this machine. */
  bool isRemote() const { return !m_options.url.empty(); }
  /** What the verbs ask. @throws OperationError when the provider cannot be loaded, UsageError for a wrong
   * URL; those of a server throw cimxml::ServerError */
  Operations& operations();
  /** The server at the URL of the options, else at the given one, with the schema if it is at hand.
   *  @throws as operations() */
  Operations& server(const std::string& defaultUrl = "");
  /** The provider of this machine. @throws OperationError when it cannot be loaded. */
  Provider& provider();
  /** Handlers for the broker, to be set before provider() is called. */
  void setHandlers(BrokerHandlers handlers) { m_handlers = std::move(handlers); }

  InstancesOutcome enumerate(const std::string& className);
  /** @throws OperationError unless the request succeeded; see hintOf for the hint. */
  void check(const Outcome& outcome) const;

  /**
   * Ends the provider's own threads and its interfaces; nothing can be asked afterwards. A clean-up that
   * takes longer than the limit goes on by itself: what it uses has to live until the process ends.
   * @throws OperationError when it failed within the limit
   */
  void cleanUp(std::chrono::milliseconds limit);
  /** The rules that the provider has broken so far, a sentence each. */
  std::vector<std::string> breaches();

private:
  Broker& broker();

  const Options& m_options;
  BrokerHandlers m_handlers;
  std::shared_ptr<const Schema> m_schema;
  std::string m_schemaFile;
  std::map<std::string, SchemaClass> m_standardClasses;
  std::unique_ptr<Broker> m_broker;
  std::unique_ptr<Provider> m_provider;
  std::unique_ptr<Operations> m_server;
};

/** How long a command waits for the provider to clean up. Its listener sleeps for seconds at a time, which
 * nobody wants to wait for, except who looks for breaches of the rules: some are only seen at the end. */
std::chrono::milliseconds cleanUpLimit();

/** "CIM_ERR_FAILED: message" */
std::string describe(const Outcome& outcome);
/** What the provider remarked while it worked on the request, on one line; empty when it did not. */
std::string remarksOf(const Outcome& outcome);
/** What to say beside a failure: the provider's remarks, else what to do; empty where there is neither. */
std::string hintOf(const Outcome& outcome);
/** A method's answer as one object: "ReturnValue" and the output arguments. */
Instance answerOf(const std::string& method, const MethodOutcome& outcome);
/** @throws UsageError with names that are near, for an unknown property. */
const SchemaProperty& propertyNamed(const SchemaClass& schemaClass, const std::string& name);

}  // namespace tvp::host::tvpcim

#endif
