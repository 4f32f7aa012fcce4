// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/LibraryObjects.h"

#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Refusal.h"

#include <cstring>
#include <new>

namespace voltvk {

LibraryAdapter::LibraryAdapter(std::shared_ptr<State> state) : m_state(std::move(state)) {}

LibraryAdapter::~LibraryAdapter() = default;

LibraryRoot::LibraryRoot(std::shared_ptr<State> state) : m_adapter(std::move(state)) {}

LibraryRoot::~LibraryRoot() = default;

const char* LibraryRoot::getTypeName() const {
  return "Root";
}

RaidObject* LibraryRoot::getObject(unsigned long index) {
  if (index != 0) {
    return nullptr;
  }
  try {
    if (m_adapter.state()->snapshot()->hasFault(FaultKind::AdapterAbsent)) {
      return nullptr;
    }
  } catch (const std::exception&) {
    // Without a driver the adapter still exists and refuses by itself.
  }
  return &m_adapter;
}

void LibraryRoot::getChildren(std::vector<RaidObject*>& out, const char* type, bool, bool) {
  RaidObject* adapter = getObject(0);
  if (adapter != nullptr && type != nullptr && std::strcmp(type, adapter->getTypeName()) == 0) {
    out.push_back(adapter);
  }
}

bool LibraryRoot::isPolicyEngineRunning() {
  try {
    const std::shared_ptr<const Snapshot> snapshot = m_adapter.state()->snapshot();
    m_policyRunning = snapshot->configuration().policyRunning && !snapshot->hasFault(FaultKind::DriverAbsent);
  } catch (const Refusal& refusal) {
    // A state that is merely busy is no news; a listener must not mistake it for a stop.
    if (refusal.status() == TVK_NO_DRIVER) {
      m_policyRunning = false;
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    // Nor is anything else that keeps the state from being read for once.
  }
  return m_policyRunning;
}

std::shared_ptr<State> stateOf(const TvkAdapter& adapter) {
  const auto* own = dynamic_cast<const LibraryAdapter*>(&adapter);
  return own != nullptr ? own->state() : State::forProcess();
}

}  // namespace voltvk
