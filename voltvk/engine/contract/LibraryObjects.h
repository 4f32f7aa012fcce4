// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_LIBRARYOBJECTS_H
#define VOLTVK_ENGINE_CONTRACT_LIBRARYOBJECTS_H

#include "voltvk/TvkAdapter.h"

#include <atomic>
#include <memory>

namespace voltvk {

class State;

/** The adapter that belongs to a TvkLib and works on its state. */
class LibraryAdapter final : public TvkAdapter {
public:
  explicit LibraryAdapter(std::shared_ptr<State> state);
  ~LibraryAdapter() override;

  const std::shared_ptr<State>& state() const { return m_state; }

private:
  std::shared_ptr<State> m_state;
};

/** The root of a TvkLib's tree. */
class LibraryRoot final : public RaidObject {
public:
  explicit LibraryRoot(std::shared_ptr<State> state);
  ~LibraryRoot() override;

  const char* getTypeName() const override;
  RaidObject* getObject(unsigned long index) override;
  void getChildren(std::vector<RaidObject*>& out, const char* type, bool deep, bool ordered) override;
  bool isPolicyEngineRunning() override;

private:
  LibraryAdapter m_adapter;
  std::atomic<bool> m_policyRunning{false};
};

/**
 * The state that an adapter works on: its TvkLib's, or the process's for an adapter constructed by a caller.
 */
std::shared_ptr<State> stateOf(const TvkAdapter& adapter);

}  // namespace voltvk

#endif
