// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_LASTREFUSAL_H
#define VOLTVK_ENGINE_CONTRACT_LASTREFUSAL_H

#include <cstdint>
#include <optional>
#include <string>

namespace voltvk {

class Connection;
class State;

/** The refusal that the state remembers for an administrator: always the last one of any process. */
struct LastRefusal {
  std::string operation;     ///< as in Faults::operations
  std::uint32_t status = 0;  ///< a TvkStatus; TVK_OK when the operation ended with an exception
  std::string detail;
  std::uint32_t time = 0;  ///< seconds since 1970

  /**
   * Remembers a refusal, if that is possible at once: it is lost when the state is in use or cannot be
   * written, since a refused call must neither wait for it nor end in another way.
   */
  static void keep(State& state, const char* operation, std::uint32_t status, const char* detail) noexcept;

  /** @return no value when nothing has been refused yet. Throws DatabaseError. */
  static std::optional<LastRefusal> read(Connection& connection);
};

}  // namespace voltvk

#endif
