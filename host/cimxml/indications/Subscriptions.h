// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_SUBSCRIPTIONS_H
#define HOST_CIMXML_INDICATIONS_SUBSCRIPTIONS_H

#include "host/cimxml/indications/ExportQueue.h"
#include "host/provider/Provider.h"
#include "host/schema/Schema.h"
#include "host/schema/Value.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace tvp::host::cimxml {

/**
 * The filters, handlers and subscriptions of the interop namespace: kept in a file, active with the provider,
 * and fed with its indications, which are delivered to the handlers' destinations. Thread-safe.
 */
class Subscriptions {
public:
  struct Options {
    std::string file;  ///< empty: kept in memory only
    /** That of the provider's classes: a filter may name it as its source, besides the interop namespace. */
    std::string nameSpace;
    DeliveryOptions delivery;
    /** Receives a line for each indication that was dropped, and why, and for each stored subscription that
     * the provider does not accept. Called by several threads. */
    std::function<void(const std::string&)> log;
  };
  /** Of filters, of destinations and of subscriptions; one more cannot be created. */
  static constexpr std::size_t LIMIT = 256;

  /** Reads the file; one that cannot be read, or that another server uses, is an error.
   * @throws std::runtime_error */
  Subscriptions(std::shared_ptr<const Schema> interop, Options options);
  ~Subscriptions();
  Subscriptions(const Subscriptions&) = delete;
  Subscriptions& operator=(const Subscriptions&) = delete;

  /** Activates the stored subscriptions; called once, before anything else is asked of this object. */
  void attach(Provider& provider);
  /** Gives an indication to every subscription that wants it; never waits for a handler, never throws. */
  void deliver(const std::string& nameSpace, const Instance& indication);
  /** Ends the deliveries; what waits for a handler is dropped. The provider is not asked any more. */
  void stop();

  /** Of one class of the three, or a class above or below it. */
  std::vector<Instance> instances(const std::string& className) const;
  /** @throws CimFailure when there is none */
  Instance get(const ObjectPath& path) const;
  /**
   * Keys and other properties that the instance does not have get their usual values. A subscription is
   * activated with the provider, which may refuse it.
   * @param user who asks; the owner of a subscription
   * @return its path
   * @throws CimFailure: already exists; invalid parameter; not supported; failed, when it cannot be stored
   */
  ObjectPath create(const Instance& instance, const std::string& user);
  /** Enables or disables a subscription; nothing else can be changed. @throws CimFailure */
  void modify(const Instance& instance, const PropertyList& properties, const std::string& user);
  /** @throws CimFailure; a filter and a handler cannot be removed while a subscription uses them */
  void remove(const ObjectPath& path, const std::string& user);

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
