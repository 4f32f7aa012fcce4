// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_RULES_REFUSAL_H
#define VOLTVK_ENGINE_RULES_REFUSAL_H

#include "voltvk/Ret.h"

#include <stdexcept>
#include <string>

namespace voltvk {

/**
 * Thrown inside the engine when a request cannot be carried out; the transaction around it is rolled
 * back. The adapter turns it into the status, voltvkctl shows the text.
 */
class Refusal : public std::runtime_error {
public:
  explicit Refusal(TvkStatus status) : std::runtime_error(tvkStatusText(status)), m_status(status) {}
  Refusal(TvkStatus status, const std::string& text) : std::runtime_error(text), m_status(status) {}

  TvkStatus status() const { return m_status; }

private:
  TvkStatus m_status;
};

/** @throws Refusal with the status unless the rule holds. */
inline void require(bool holds, TvkStatus otherwise) {
  if (!holds) {
    throw Refusal(otherwise);
  }
}

}  // namespace voltvk

#endif
