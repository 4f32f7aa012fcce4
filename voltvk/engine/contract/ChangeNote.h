// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_CHANGENOTE_H
#define VOLTVK_ENGINE_CONTRACT_CHANGENOTE_H

#include "voltvk/engine/state/Intents.h"

#include <string>
#include <vector>

namespace voltvk {

/**
 * What the file beside a state says about the change that is under way, as the state's own intents do. A
 * state that is restored from a backup made in the middle of a change brings intents of another day, which
 * must not be carried out on the drives of today: they are told by a note that says otherwise, or nothing.
 *
 * For the holder of the BackingLock.
 */
class ChangeNote {
public:
  /** @param state the path of the state; the note is in the file of the lock */
  explicit ChangeNote(const std::string& state) : m_path(state + "-changes") {}

  /** Replaces the note, which is on the disk on return. @throws Refusal TVK_INTERNAL if it cannot be written
   */
  void write(const std::vector<Intent>& intents) const;
  /** Whether the note is of these intents. */
  bool isOf(const std::vector<Intent>& intents) const;
  /** No change is under way. A note that cannot be removed is replaced by that of the next change. */
  void erase() const noexcept;

private:
  std::string m_path;
};

}  // namespace voltvk

#endif
