// SPDX-License-Identifier: Apache-2.0
#include "voltvk/TvkLib.h"

#include "voltvk/engine/contract/Faults.h"
#include "voltvk/engine/contract/LibraryObjects.h"
#include "voltvk/engine/contract/Operation.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Refusal.h"

#include <mutex>
#include <new>
#include <set>

VolLib::~VolLib() = default;

Ret VolLib::getControllerCount(unsigned long& count) {
  const Ret ret = checkDriver();
  count = ret.getReturn() == TVK_OK ? 1 : 0;
  return ret;
}

struct TvkLib::State {
  State() : shared(voltvk::State::forProcess()), root(shared) {}

  std::shared_ptr<voltvk::State> shared;
  voltvk::LibraryRoot root;
  std::mutex errorMutex;
  // Every text that was returned is kept, since callers may keep the pointer. There are few.
  std::set<std::string> errors;
};

TvkLib::TvkLib() : m_state(std::make_unique<State>()) {
  TvkLib::checkDriver();  // opens the state, so that the events from now on are seen
}

TvkLib::~TvkLib() = default;

Ret TvkLib::refreshConfiguration() {
  const voltvk::Operation refresh{
      voltvk::operations::refreshConfiguration, false, [](voltvk::State& state) { state.snapshot(); }};
  return refresh.run(*m_state->shared);
}

Ret TvkLib::checkDriver() {
  try {
    voltvk::requirePresence(*m_state->shared, false);
    return Ret();
  } catch (const voltvk::Refusal& refusal) {
    return Ret(refusal.status(), refusal.what());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    return Ret(TVK_INTERNAL, exception.what());
  }
}

RaidObject* TvkLib::getRootObject() {
  return &m_state->root;
}

const char* TvkLib::getOpenError() {
  std::string error;
  try {
    voltvk::requirePresence(*m_state->shared, false);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& exception) {
    error = exception.what();
  }
  std::lock_guard<std::mutex> lock(m_state->errorMutex);
  return m_state->errors.insert(std::move(error)).first->c_str();
}
