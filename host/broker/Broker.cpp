// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Broker.h"

#include "host/broker/BrokerState.h"

namespace tvp::host {

Broker::Broker(std::shared_ptr<const Schema> schema, BrokerOptions options)
    : m_state(std::make_unique<BrokerState>(std::move(schema), options)) {}

Broker::~Broker() = default;

const CMPIBroker* Broker::cmpi() const {
  return m_state->cmpi();
}

const Schema& Broker::schema() const {
  return *m_state->schema();
}

std::shared_ptr<const Schema> Broker::sharedSchema() const {
  return m_state->schema();
}

const BrokerOptions& Broker::options() const {
  return m_state->options();
}

void Broker::setHandlers(BrokerHandlers handlers) {
  m_state->setHandlers(std::move(handlers));
}

void Broker::failCall(std::uint64_t n, CMPIrc rc) {
  m_state->failCall(n, rc);
}

std::uint64_t Broker::callCount() const {
  return m_state->callCount();
}

void Broker::resetCalls(bool recordNames) {
  m_state->resetCalls(recordNames);
}

std::string Broker::callName(std::size_t i) const {
  return m_state->callName(i);
}

std::vector<Breach> Broker::breaches() const {
  return m_state->breaches();
}

void Broker::clearBreaches() {
  m_state->clearBreaches();
}

void Broker::addBreach(BreachKind kind, const std::string& text) {
  m_state->addBreach(kind, text);
}

void Broker::reportLeaks() {
  for (const std::string& leaked : m_state->leaks()) {
    m_state->addBreach(BreachKind::Leak, "a " + leaked + " was made outside a request and never released");
  }
}

std::size_t Broker::unreleasedObjects() const {
  return m_state->leaks().size();
}

}  // namespace tvp::host
