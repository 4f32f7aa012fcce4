// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_INDICATIONS_SUBSCRIPTIONS_H
#define HOST_CIMXML_INDICATIONS_SUBSCRIPTIONS_H

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
    /** Receives a line for each indication that was dropped, and why. Called by several threads. */
    std::function<void(const std::string&)> log;
  };
  /** Reads the file; a file that cannot be read is an error. @throws std::runtime_error */
  Subscriptions(std::shared_ptr<const Schema> interop, Options options);
  ~Subscriptions();
  Subscriptions(const Subscriptions&) = delete;
  Subscriptions& operator=(const Subscriptions&) = delete;

  /** Activates the stored subscriptions; called once, before anything else is asked of this object. */
  void attach(Provider& provider);
  /** Gives an indication to every subscription that wants it; never waits for a handler. */
  void deliver(const std::string& nameSpace, const Instance& indication);
  /** Ends the deliveries; what waits for a handler is dropped. */
  void stop();

  /** Of one class of the three or a class above it. */
  std::vector<Instance> instances(const std::string& className) const;
  /** @throws CimFailure when there is none */
  Instance get(const ObjectPath& path) const;
  /** @return its path @throws CimFailure: already exists, invalid parameter, not supported (query) ... */
  ObjectPath create(const Instance& instance, const std::string& user);
  /** @throws CimFailure */
  void modify(const Instance& instance, const PropertyList& properties, const std::string& user);
  /** @throws CimFailure, also while a subscription uses it */
  void remove(const ObjectPath& path, const std::string& user);

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
