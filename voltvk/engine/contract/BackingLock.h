// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_BACKINGLOCK_H
#define VOLTVK_ENGINE_CONTRACT_BACKINGLOCK_H

#include "voltvk/engine/backing/lvm/Program.h"
#include "voltvk/engine/state/FileDescriptor.h"

#include <chrono>
#include <string>

namespace voltvk {

/** How long a change of real volumes waits for another one, whose steps take seconds. */
constexpr std::chrono::seconds BACKING_TIMEOUT{30};

/**
 * Held by the one change of real pools and volumes that is under way, among all threads and processes that
 * use a state. The system releases it if the process ends, and the program that it was running has ended too.
 * Belongs to the thread that made it, which is the one that runs programs.
 */
class BackingLock {
public:
  /**
   * @param state the path of the state; the lock is a file beside it
   * @throws Refusal TVK_BUSY if it cannot be had in time, TVK_INTERNAL if its file cannot be opened
   */
  BackingLock(const std::string& state, std::chrono::steady_clock::time_point until);

private:
  FileDescriptor m_file;
  const KeptOpen m_kept;
};

}  // namespace voltvk

#endif
