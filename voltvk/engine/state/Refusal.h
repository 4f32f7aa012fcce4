// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_REFUSAL_H
#define VOLTVK_ENGINE_STATE_REFUSAL_H

#include "text/Utf8.h"
#include "voltvk/Ret.h"
#include "voltvk/engine/state/Wording.h"

#include <stdexcept>
#include <string>
#include <type_traits>

namespace voltvk {

/**
 * Thrown inside the engine when a request is refused; the enclosing transaction is rolled back. The adapter
 * turns it into the status and its detail, voltvkctl shows the text.
 */
class Refusal : public std::runtime_error {
public:
  /**
   * @param detail what was wrong, with what, and what to do; characters that do not belong in one line are
   *   escaped
   */
  Refusal(TvkStatus status, const std::string& detail)
      : std::runtime_error(tvp::text::printable(detail)), m_status(status) {}

  TvkStatus status() const { return m_status; }

private:
  TvkStatus m_status;
};

/**
 * @param detail the sentence of the refusal, or a function that returns it, so that the text is only built
 *   when a rule is broken
 * @throws Refusal with the status and the detail unless the rule holds
 */
template <typename Detail>
void require(bool holds, TvkStatus otherwise, const Detail& detail) {
  if (holds) {
    return;
  }
  if constexpr (std::is_invocable_v<Detail>) {
    throw Refusal(otherwise, detail());
  } else {
    throw Refusal(otherwise, detail);
  }
}

}  // namespace voltvk

#endif
