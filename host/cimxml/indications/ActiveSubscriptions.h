// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_ACTIVESUBSCRIPTIONS_H
#define HOST_CIMXML_INDICATIONS_ACTIVESUBSCRIPTIONS_H

#include "host/cimxml/indications/ExportQueue.h"
#include "host/cimxml/indications/Query.h"
#include "host/provider/Provider.h"

#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>

namespace tvp::host::cimxml {

/** What a subscription needs to be active. */
struct SubscriptionParts {
  ObjectPath subscription;
  Instance filter;
  Instance handler;
  std::string owner;  ///< the user in whose name the provider is asked
};

/**
 * The subscriptions that deliver: they are active with the provider, and each has the queue of its
 * destination. One change at a time; deliver() may be called during a change, by any thread.
 */
class ActiveSubscriptions {
public:
  /** @param nameSpace that of the provider's classes */
  ActiveSubscriptions(
      Provider& provider, std::string nameSpace, DeliveryOptions delivery,
      std::function<void(const std::string&)> log);
  ActiveSubscriptions(const ActiveSubscriptions&) = delete;
  ActiveSubscriptions& operator=(const ActiveSubscriptions&) = delete;

  /** The query of a filter of this provider. @throws CimFailure */
  Query query(const Instance& filter) const;
  /** @throws CimFailure with the provider's status and message; then nothing has changed */
  void start(const SubscriptionParts& parts);
  /** Does nothing for a subscription that is not active. */
  void end(const ObjectPath& subscription);
  /** Ends the deliveries without asking the provider. */
  void clear();

  /** Queues the indication for the subscriptions that want it; never waits for a listener, never throws. */
  void deliver(const Instance& indication);

private:
  struct Active;
  using List = std::list<std::shared_ptr<Active>>;

  bool isUsed(const std::string& className) const;
  std::shared_ptr<ExportQueue> queueFor(const Instance& handler) const;
  void activate(const Active& active);
  void deactivate(const Active& active);
  void deactivateFilters(const Active& active, std::size_t count);
  void report(const Outcome& outcome, const std::string& what) const;
  void report(const std::string& line) const;

  Provider& m_provider;
  const std::string m_nameSpace;
  const DeliveryOptions m_delivery;
  const std::function<void(const std::string&)> m_log;
  mutable std::mutex m_mutex;  ///< guards what follows
  List m_active;
  std::uint64_t m_exports = 0;
};

}  // namespace tvp::host::cimxml

#endif
