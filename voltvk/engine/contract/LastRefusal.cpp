// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/contract/LastRefusal.h"

#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/Statement.h"

#include <ctime>
#include <exception>

namespace voltvk {

void LastRefusal::keep(
    State& state, const char* operation, std::uint32_t status, const char* detail) noexcept {
  try {
    state.changeIfIdle([&](Connection& connection) {
      Statement(
          connection, "REPLACE INTO last_refusal(id, operation, status, detail, time) VALUES(1, ?, ?, ?, ?)",
          operation, status, detail, std::time(nullptr))
          .run();
    });
  } catch (const std::exception&) {
    // The caller has the status and the detail; only someone who looks later finds nothing.
  }
}

std::optional<LastRefusal> LastRefusal::read(Connection& connection) {
  Statement row(connection, "SELECT operation, status, detail, time FROM last_refusal");
  if (!row.step()) {
    return std::nullopt;
  }
  return LastRefusal{row.text(0), row.as<std::uint32_t>(1), row.text(2), row.as<std::uint32_t>(3)};
}

}  // namespace voltvk
