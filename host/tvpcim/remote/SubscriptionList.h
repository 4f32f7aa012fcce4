// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_SUBSCRIPTIONLIST_H
#define HOST_TVPCIM_REMOTE_SUBSCRIPTIONLIST_H

#include "host/tvpcim/Session.h"

#include <string>
#include <vector>

namespace tvp::host::tvpcim {

/** A subscription of a server: a filter, which selects indications, and a handler, which says where they go.
 */
struct Subscription {
  std::string name;  ///< of the filter
  std::string query;
  std::string destination;
  ObjectPath path = {};  ///< the subscription itself, its filter and its handler
  ObjectPath filter = {};
  ObjectPath handler = {};
};

/** The subscriptions in the interop namespace of a server. One thread. */
class SubscriptionList {
public:
  enum class Lifetime { Permanent, Transient };

  /** Where 'tvpcim serve' listens unless it is told otherwise. */
  static constexpr const char* DEFAULT_URL = "http://localhost:5988";

  /** Finds the namespace. @throws OperationError when the server has none; cimxml::ServerError */
  explicit SubscriptionList(Session& session);

  std::vector<Subscription> all();
  /** Creates filter, handler and subscription, or none of them. @return with the paths @throws OperationError
   */
  Subscription add(Subscription added, Lifetime lifetime);
  /** Deletes a subscription, and its filter and handler unless others use them. @throws OperationError */
  void remove(const std::string& name);

private:
  /** Makes a first request. @throws cimxml::ServerError; OperationError where nobody named the server */
  Outcome probe(const ObjectPath& path);
  /** @return its path */
  ObjectPath create(const std::string& className, std::vector<NamedValue> properties);
  /** Text of a property of what a path leads to; empty when it cannot be had. */
  std::string textAt(const ObjectPath& path, const std::string& property);
  /** A path that a reference property holds, complete with its namespace. */
  ObjectPath referenceOf(const Instance& subscription, const std::string& property) const;

  Session& m_session;
  Operations& m_server;
  std::string m_nameSpace;
};

}  // namespace tvp::host::tvpcim

#endif
