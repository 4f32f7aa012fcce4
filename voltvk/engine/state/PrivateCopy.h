// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_PRIVATECOPY_H
#define VOLTVK_ENGINE_STATE_PRIVATECOPY_H

#include <chrono>
#include <string>

namespace voltvk {

/**
 * A copy of a state for a process that only wants to know what would happen: whatever it changes, the state
 * and all that is beside it stay as they are. The copy is in a directory of its own, from which it vanishes
 * as soon as it is open, so that nothing is left behind however the process ends. Belongs to one thread.
 */
class PrivateCopy {
public:
  /** @param original the path of the state */
  explicit PrivateCopy(std::string original) : m_original(std::move(original)) {}
  ~PrivateCopy() { vanish(); }
  PrivateCopy(const PrivateCopy&) = delete;
  PrivateCopy& operator=(const PrivateCopy&) = delete;

  /** The path of the state. */
  const std::string& original() const { return m_original; }

  /**
   * Copies the state as it is now. If there is no state, there is no copy, and a new one can be made at path.
   * @return false if the state is on a read-only file system
   * @throws Refusal TVK_NO_DRIVER, TVK_BUSY as StateFile::prepare, TVK_INTERNAL if there is no room for a
   * copy; DatabaseError
   */
  bool make(std::chrono::steady_clock::time_point until);

  /** Where the copy is to be opened. */
  std::string path() const { return m_directory + "/state.db"; }

  /** Removes the names of the files. Those who have them open use them on. */
  void vanish() noexcept;

private:
  std::string m_original;
  std::string m_directory;  ///< empty while there is none
};

}  // namespace voltvk

#endif
