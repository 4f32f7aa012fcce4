// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_STORAGECHANGE_H
#define VOLTVK_ENGINE_CONTRACT_STORAGECHANGE_H

#include "voltvk/engine/backing/Backing.h"
#include "voltvk/engine/contract/BackingLock.h"
#include "voltvk/engine/contract/ChangeNote.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Intents.h"

#include <memory>
#include <vector>

namespace voltvk {

/**
 * A change of pools and volumes together with the drives behind them.
 *
 * With a backing that is not real it is one transaction. Else the work runs twice: once to learn what it
 * would change, undone at once; then the steps of the backing are recorded as intents and carried out; then
 * the work runs in the transaction that also removes the intents. A step that fails undoes those before it;
 * once the data of a volume is gone, its deletion is completed.
 *
 * One change at a time, over all threads and processes. Functions throw Refusal, and what the work throws.
 */
class StorageChange {
public:
  /** @param progress of moving chunks from one drive to another; may be empty */
  explicit StorageChange(State& state, MoveProgress progress = {})
      : m_state(state), m_progress(std::move(progress)) {}

  /**
   * @param work checks the rules and writes the rows and events; gives the same answer when it runs again
   * @param withDrives it is decided by the drives that the machine has now
   */
  void run(const State::Work& work, bool withDrives);

private:
  class Steps;

  /**
   * Undoes what was begun, or completes it if data is gone already.
   * @return true if the change was completed after all
   */
  bool isSettled(Backing& backing, Steps& carrier, const std::vector<Intent>& begun);
  void runWithSteps(Backing& backing, const State::Work& work, bool withDrives);
  void change(const State::Work& work, bool withDrives);

  State& m_state;
  const MoveProgress m_progress;
};

/** The drives of a step that replaces one. */
DriveExchange exchangeOf(const Intent& intent);

/** The steps that lead from one configuration to another, in the order in which they are carried out. */
std::vector<Intent> stepsBetween(const Configuration& before, const Configuration& after);

/**
 * Records the steps that are about to be carried out, in the state and in the note beside it, within the
 * caller's transaction. The caller holds the BackingLock. @throws Refusal
 */
void recordIntents(State& state, Connection& connection, const std::vector<Intent>& intents);

/**
 * Completes or undoes the change that a process left behind when it ended early; does nothing if there is
 * none. Intents that came with a copy of the state from another day are dropped. The caller holds the
 * BackingLock.
 * @return what was found, for an administrator: one sentence each
 */
std::vector<std::string> settleIntents(State& state, Backing& backing);

/** Takes the note beside the state back, after the change that it is of. */
void eraseNote(State& state);

/** Waits until no other change of pools and volumes is under way. @return null in a dry run */
std::unique_ptr<BackingLock> lockChanges(State& state);

/** Runs work in a transaction that is undone at once, to learn what it would do. */
void tryOut(State& state, const State::Work& work);

/** Runs a function while no other change of real pools and volumes is under way, with all intents settled. */
void withBacking(State& state, const std::function<void(Backing&)>& work);

}  // namespace voltvk

#endif
