// SPDX-License-Identifier: Apache-2.0
#include "host/broker/Broker.h"

#include "host/broker/EntryPoint.h"
#include "host/broker/Scope.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace tvp::host {
namespace {

/** Maximum number of breaches noted; more would say nothing new. */
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

struct Broker::State {
  State(Broker& broker, std::shared_ptr<const Schema> knownSchema, const BrokerOptions& givenOptions)
      : schema(std::move(knownSchema)), options(givenOptions), lasting(broker, Scope::Kind::Lasting),
        clones(broker, Scope::Kind::Lasting), strays(broker, Scope::Kind::Lasting) {}

  CMPIBroker face{};
  const std::uint64_t serial = nextSerial();  ///< distinguishes it from an earlier one at the same address
  const std::shared_ptr<const Schema> schema;
  const BrokerOptions options;

  std::atomic<std::uint64_t> calls{0};
  std::atomic<std::uint64_t> failAt{0};
  std::atomic<int> failCode{0};
  std::atomic<Failing> failing{Failing::WithStatus};
  std::atomic<bool> recording{false};

  std::mutex mutex;  ///< guards everything that follows, up to the graveyards
  std::shared_ptr<const BrokerHandlers> handlers = std::make_shared<const BrokerHandlers>();
  std::vector<const char*> callNames;
  std::vector<Breach> breaches;
  std::vector<std::unique_ptr<Scope>> attached;

  /**
   * The dead objects of a thread; kept apart so that threads neither wait for each other nor free each
   * other's memory.
   */
  struct Graveyard {
    std::mutex mutex;
    std::deque<std::unique_ptr<ObjectCore>> objects;
  };
  std::array<Graveyard, 16> graveyards;

  Scope lasting;
  Scope clones;
  Scope strays;
};

BrokerOptions optionsAs(const char* name) {
  const std::string manager = name == nullptr ? "" : name;
  BrokerOptions options;
  if (manager == "openpegasus") {
    options.manager = ObjectManager::OpenPegasus;
  } else if (manager == "sfcb") {
    options.manager = ObjectManager::Sfcb;
  } else if (!manager.empty() && manager != "strict") {
    throw std::invalid_argument(
        "\"" + manager + "\" is not an object manager that can be acted; use strict, openpegasus or sfcb");
  }
  return options;
}

Broker::Broker(std::shared_ptr<const Schema> schema, BrokerOptions options)
    : m_state(std::make_unique<State>(*this, std::move(schema), options)) {
  m_state->face = {
      this, brokerServiceTable(options.manager), brokerEncapsulationTable(), brokerSystemTable(),
      options.manager == ObjectManager::OpenPegasus ? nullptr : brokerMemoryTable()};
}

Broker::~Broker() {
  enterScope(nullptr);
  m_state->attached.clear();
  for (Scope* scope : {&m_state->lasting, &m_state->clones, &m_state->strays}) {
    scope->endSince(0);  // while dead objects can still be kept
  }
}

Broker* Broker::of(const CMPIBroker* broker) {
  for (const ObjectManager manager :
       {ObjectManager::Strict, ObjectManager::OpenPegasus, ObjectManager::Sfcb}) {
    if (broker != nullptr && broker->bft == brokerServiceTable(manager)) {
      return static_cast<Broker*>(broker->hdl);
    }
  }
  return nullptr;
}

const CMPIBroker* Broker::cmpi() const {
  return &m_state->face;
}

const Schema& Broker::schema() const {
  return *m_state->schema;
}

const BrokerOptions& Broker::options() const {
  return m_state->options;
}

Scope& Broker::lastingScope() {
  return m_state->lasting;
}

Scope& Broker::cloneScope() {
  return m_state->clones;
}

std::uint64_t Broker::callCount() const {
  return m_state->calls;
}

void Broker::setHandlers(BrokerHandlers handlers) {
  auto replacement = std::make_shared<const BrokerHandlers>(std::move(handlers));
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  m_state->handlers = std::move(replacement);
}

std::shared_ptr<const BrokerHandlers> Broker::handlers() const {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  return m_state->handlers;
}

void Broker::enter(const char* function, Thread thread) {
  const std::uint64_t number = ++m_state->calls;
  if (m_state->recording.load(std::memory_order_relaxed)) {
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    m_state->callNames.push_back(function);
  }
  if (thread == Thread::Attached && threadScope() == nullptr) {
    addBreach(
        BreachKind::ThreadNotAttached,
        std::string(function) + " was called by a thread that is neither in a request nor attached");
  }
  std::uint64_t failAt = m_state->failAt.load();
  if (failAt == number && m_state->failAt.compare_exchange_strong(failAt, 0)) {
    if (m_state->failing == Failing::WithException) {
      throw CallException();
    }
    throw CallFailure{static_cast<CMPIrc>(m_state->failCode.load()), "the call failed as it was asked to"};
  }
}

void Broker::failCall(std::uint64_t n, CMPIrc rc, Failing how) {
  m_state->failing = how;
  m_state->failCode = rc;
  m_state->failAt = n == 0 ? 0 : m_state->calls.load() + n;
}

void Broker::resetCalls(bool recordNames) {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  m_state->calls = 0;
  m_state->failAt = 0;
  m_state->callNames.clear();
  m_state->recording = recordNames;
}

std::string Broker::callName(std::size_t i) const {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  return i < m_state->callNames.size() ? m_state->callNames[i] : "";
}

Scope* Broker::threadScope() const {
  for (const ThreadEntry& entry : threadEntries()) {
    if (entry.brokerSerial == m_state->serial) {
      return entry.scope;
    }
  }
  return nullptr;
}

Scope& Broker::scope() {
  Scope* current = threadScope();
  return current != nullptr ? *current : m_state->strays;
}

Scope* Broker::enterScope(Scope* scope) {
  std::vector<ThreadEntry>& entries = threadEntries();
  const auto known = std::find_if(entries.begin(), entries.end(), [this](const ThreadEntry& entry) {
    return entry.brokerSerial == m_state->serial;
  });
  Scope* before = known != entries.end() ? known->scope : nullptr;
  if (known != entries.end()) {
    entries.erase(known);
  }
  if (scope != nullptr) {
    entries.push_back({m_state->serial, scope});
  }
  return before;
}

void Broker::attachThread() {
  if (threadScope() != nullptr) {
    return;
  }
  auto scope = std::make_unique<Scope>(*this, Scope::Kind::Lasting);
  enterScope(scope.get());
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  m_state->attached.push_back(std::move(scope));
}

void Broker::detachThread() {
  std::unique_ptr<Scope> detached;
  {
    const std::lock_guard<std::mutex> lock(m_state->mutex);
    const Scope* current = threadScope();
    const auto known =
        std::find_if(m_state->attached.begin(), m_state->attached.end(), [current](const auto& scope) {
          return scope.get() == current;
        });
    if (known == m_state->attached.end()) {
      return;  // a request's thread is not changed
    }
    detached = std::move(*known);
    m_state->attached.erase(known);
  }
  enterScope(nullptr);
}

void Broker::bury(std::vector<std::unique_ptr<ObjectCore>> dead) {
  if (dead.empty()) {
    return;
  }
  static std::atomic<std::size_t> threads{0};
  static thread_local const std::size_t thread = threads++;
  State::Graveyard& graveyard = m_state->graveyards[thread % m_state->graveyards.size()];
  std::vector<std::unique_ptr<ObjectCore>> gone;
  const std::lock_guard<std::mutex> lock(graveyard.mutex);
  for (auto& object : dead) {
    graveyard.objects.push_back(std::move(object));
  }
  const std::size_t most = std::max<std::size_t>(m_state->options.graveyard / m_state->graveyards.size(), 1);
  while (graveyard.objects.size() > most) {
    gone.push_back(std::move(graveyard.objects.front()));
    graveyard.objects.pop_front();
  }
}

void Broker::addBreach(BreachKind kind, const std::string& text) {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  if (m_state->breaches.size() < MAXIMUM_BREACHES) {
    m_state->breaches.push_back({kind, text});
  }
}

void Broker::addLateUse(const ObjectCore& object, const char* function) {
  const bool released = object.life() == ObjectCore::Life::Released;
  addBreach(
      released ? BreachKind::UsedAfterRelease : BreachKind::UsedAfterCall,
      std::string(function) + " was given a " + object.typeName() +
          (released ? " that was released before" : " whose call has ended"));
}

std::vector<Breach> Broker::breaches() const {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  return m_state->breaches;
}

void Broker::clearBreaches() {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  m_state->breaches.clear();
}

std::vector<std::string> Broker::leaks() const {
  const std::lock_guard<std::mutex> lock(m_state->mutex);
  std::vector<std::string> result = m_state->clones.leaks();
  for (const auto& scope : m_state->attached) {
    const std::vector<std::string> more = scope->leaks();
    result.insert(result.end(), more.begin(), more.end());
  }
  return result;
}

void Broker::reportLeaks() {
  for (const std::string& leaked : leaks()) {
    addBreach(BreachKind::Leak, "a " + leaked + " was made outside a request and never released");
  }
}

std::size_t Broker::unreleasedObjects() const {
  return leaks().size();
}

}  // namespace tvp::host
