// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_BROKER_BROKERSTATE_H
#define HOST_BROKER_BROKERSTATE_H

#include "cmpift.h"
#include "host/broker/Broker.h"
#include "host/broker/Scope.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tvp::host {

/** What a broker consists of; its function tables and objects work on it. Thread-safe. */
class BrokerState {
public:
  BrokerState(std::shared_ptr<const Schema> schema, BrokerOptions options);
  ~BrokerState();
  BrokerState(const BrokerState&) = delete;
  BrokerState& operator=(const BrokerState&) = delete;

  /** The broker behind the interface; null for a null or foreign one. */
  static BrokerState* of(const CMPIBroker* broker);

  const CMPIBroker* cmpi() const { return &m_face; }
  const std::shared_ptr<const Schema>& schema() const { return m_schema; }
  const BrokerOptions& options() const { return m_options; }

  void setHandlers(BrokerHandlers handlers);
  std::shared_ptr<const BrokerHandlers> handlers() const;

  /**
   * Begins a call of a function: counts and records it, and notes a thread that is not attached when
   * that matters. @return the status that it must fail with, or CMPI_RC_OK.
   */
  CMPIrc enter(const char* function, bool mustBeAttached = true);
  void failCall(std::uint64_t n, CMPIrc rc);
  std::uint64_t callCount() const { return m_calls.load(); }
  void resetCalls(bool recordNames);
  std::string callName(std::size_t i) const;

  /** Makes an object in the scope of the current thread. */
  template <class Face>
  Face* make(typename ObjectTraits<Face>::Content content) {
    return makeIn<Face>(scope(), std::move(content));
  }
  template <class Face>
  Face* makeIn(Scope& scope, typename ObjectTraits<Face>::Content content) {
    auto object = std::make_unique<Object<Face>>(*this, std::move(content));
    Face* face = object->face();
    scope.adopt(std::move(object));
    return face;
  }

  /** The current thread's scope; for a thread that has none, the one of strays. */
  Scope& scope();
  /** Makes a scope the current thread's. @return the one before, null when there was none. */
  Scope* enterScope(Scope* scope);
  void attachThread();
  void detachThread();
  /** Objects that live as long as the broker: the contexts prepared for threads. */
  Scope& lastingScope() { return m_lasting; }
  /** Clones, which belong to who made them. */
  Scope& cloneScope() { return m_clones; }
  /** Keeps dead objects for a while. */
  void bury(std::vector<std::unique_ptr<ObjectCore>> dead);

  void addBreach(BreachKind kind, const std::string& text);
  /** Notes the use of a dead object by a function. */
  void addLateUse(const ObjectCore& object, const char* function);
  std::vector<Breach> breaches() const;
  void clearBreaches();
  /** Descriptions of what attached threads made, and of clones, not released. */
  std::vector<std::string> leaks() const;

private:
  Scope* threadScope() const;

  CMPIBroker m_face{};
  const std::uint64_t m_serial;  ///< tells this broker from one that stood at the same address before
  std::shared_ptr<const Schema> m_schema;
  const BrokerOptions m_options;

  std::atomic<std::uint64_t> m_calls{0};
  std::atomic<std::uint64_t> m_failAt{0};
  std::atomic<int> m_failCode{0};
  std::atomic<bool> m_recording{false};

  mutable std::mutex m_mutex;  ///< guards all that follows, up to the graveyards
  std::shared_ptr<const BrokerHandlers> m_handlers;
  std::vector<const char*> m_callNames;
  std::vector<Breach> m_breaches;
  std::vector<std::unique_ptr<Scope>> m_attached;

  /** The dead of a thread; apart, so that threads do not wait for each other nor free each other's memory. */
  struct Graveyard {
    std::mutex mutex;
    std::deque<std::unique_ptr<ObjectCore>> objects;
  };
  std::array<Graveyard, 16> m_graveyards;

  Scope m_lasting;
  Scope m_clones;
  Scope m_strays;
};

/** The broker's own function tables, the same for all brokers. */
CMPIBrokerFT* brokerServiceTable();
CMPIBrokerEncFT* brokerEncapsulationTable();
CMPIBrokerExtFT* brokerSystemTable();
CMPIBrokerMemFT* brokerMemoryTable();

}  // namespace tvp::host

#endif
