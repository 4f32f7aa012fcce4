// SPDX-License-Identifier: Apache-2.0
#include "host/broker/BrokerState.h"

#include <algorithm>

namespace tvp::host {
namespace {

/** Notes beyond this number would say nothing new. */
constexpr std::size_t MAXIMUM_BREACHES = 1000;

struct ThreadEntry {
  std::uint64_t brokerSerial;
  Scope* scope;
};

/** The scopes of the current thread, one per broker. */
std::vector<ThreadEntry>& threadEntries() {
  thread_local std::vector<ThreadEntry> entries;
  return entries;
}

std::uint64_t nextSerial() {
  static std::atomic<std::uint64_t> serial{0};
  return ++serial;
}

}  // namespace

BrokerState::BrokerState(std::shared_ptr<const Schema> schema, BrokerOptions options)
    : m_serial(nextSerial()), m_schema(std::move(schema)), m_options(options),
      m_handlers(std::make_shared<const BrokerHandlers>()), m_lasting(*this, Scope::Kind::Lasting),
      m_clones(*this, Scope::Kind::Lasting), m_strays(*this, Scope::Kind::Lasting) {
  m_face.hdl = this;
  m_face.bft = brokerServiceTable();
  m_face.eft = brokerEncapsulationTable();
  m_face.xft = brokerSystemTable();
  m_face.mft = brokerMemoryTable();
}

BrokerState::~BrokerState() {
  enterScope(nullptr);
  m_attached.clear();
}

BrokerState* BrokerState::of(const CMPIBroker* broker) {
  return broker != nullptr && broker->bft == brokerServiceTable() ? static_cast<BrokerState*>(broker->hdl)
                                                                  : nullptr;
}

void BrokerState::setHandlers(BrokerHandlers handlers) {
  auto replacement = std::make_shared<const BrokerHandlers>(std::move(handlers));
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_handlers = std::move(replacement);
}

std::shared_ptr<const BrokerHandlers> BrokerState::handlers() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_handlers;
}

CMPIrc BrokerState::enter(const char* function, bool mustBeAttached) {
  const std::uint64_t number = ++m_calls;
  if (m_recording.load(std::memory_order_relaxed)) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_callNames.push_back(function);
  }
  if (mustBeAttached && threadScope() == nullptr) {
    addBreach(
        BreachKind::ThreadNotAttached,
        std::string(function) + " was called by a thread that is neither in a request nor attached");
  }
  std::uint64_t failAt = m_failAt.load();
  if (failAt == number && m_failAt.compare_exchange_strong(failAt, 0)) {
    return static_cast<CMPIrc>(m_failCode.load());
  }
  return CMPI_RC_OK;
}

void BrokerState::failCall(std::uint64_t n, CMPIrc rc) {
  m_failCode = rc;
  m_failAt = n == 0 ? 0 : m_calls.load() + n;
}

void BrokerState::resetCalls(bool recordNames) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_calls = 0;
  m_failAt = 0;
  m_callNames.clear();
  m_recording = recordNames;
}

std::string BrokerState::callName(std::size_t i) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return i < m_callNames.size() ? m_callNames[i] : "";
}

Scope* BrokerState::threadScope() const {
  for (const ThreadEntry& entry : threadEntries()) {
    if (entry.brokerSerial == m_serial) {
      return entry.scope;
    }
  }
  return nullptr;
}

Scope& BrokerState::scope() {
  Scope* current = threadScope();
  return current != nullptr ? *current : m_strays;
}

Scope* BrokerState::enterScope(Scope* scope) {
  std::vector<ThreadEntry>& entries = threadEntries();
  const auto known = std::find_if(entries.begin(), entries.end(), [this](const ThreadEntry& entry) {
    return entry.brokerSerial == m_serial;
  });
  Scope* before = known != entries.end() ? known->scope : nullptr;
  if (known != entries.end()) {
    entries.erase(known);
  }
  if (scope != nullptr) {
    entries.push_back({m_serial, scope});
  }
  return before;
}

void BrokerState::attachThread() {
  if (threadScope() != nullptr) {
    return;
  }
  auto scope = std::make_unique<Scope>(*this, Scope::Kind::Lasting);
  enterScope(scope.get());
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_attached.push_back(std::move(scope));
}

void BrokerState::detachThread() {
  std::unique_ptr<Scope> detached;
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Scope* current = threadScope();
    const auto known = std::find_if(m_attached.begin(), m_attached.end(), [current](const auto& scope) {
      return scope.get() == current;
    });
    if (known == m_attached.end()) {
      return;  // the thread of a request stays what it is
    }
    detached = std::move(*known);
    m_attached.erase(known);
  }
  enterScope(nullptr);
}

void BrokerState::bury(std::vector<std::unique_ptr<ObjectCore>> dead) {
  if (dead.empty()) {
    return;
  }
  static std::atomic<std::size_t> threads{0};
  static thread_local const std::size_t thread = threads++;
  Graveyard& graveyard = m_graveyards[thread % m_graveyards.size()];
  std::vector<std::unique_ptr<ObjectCore>> gone;
  const std::lock_guard<std::mutex> lock(graveyard.mutex);
  for (auto& object : dead) {
    graveyard.objects.push_back(std::move(object));
  }
  const std::size_t most = std::max<std::size_t>(m_options.graveyard / m_graveyards.size(), 1);
  while (graveyard.objects.size() > most) {
    gone.push_back(std::move(graveyard.objects.front()));
    graveyard.objects.pop_front();
  }
}

void BrokerState::addBreach(BreachKind kind, const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_breaches.size() < MAXIMUM_BREACHES) {
    m_breaches.push_back({kind, text});
  }
}

void BrokerState::addLateUse(const ObjectCore& object, const char* function) {
  const bool released = object.life() == ObjectCore::Life::Released;
  addBreach(
      released ? BreachKind::UsedAfterRelease : BreachKind::UsedAfterCall,
      std::string(function) + " was given a " + object.typeName() +
          (released ? " that was released before" : " whose call has ended"));
}

std::vector<Breach> BrokerState::breaches() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  return m_breaches;
}

void BrokerState::clearBreaches() {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_breaches.clear();
}

std::vector<std::string> BrokerState::leaks() const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  std::vector<std::string> result = m_clones.leaks();
  for (const auto& scope : m_attached) {
    const std::vector<std::string> more = scope->leaks();
    result.insert(result.end(), more.begin(), more.end());
  }
  return result;
}

}  // namespace tvp::host
