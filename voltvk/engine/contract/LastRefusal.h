// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_LASTREFUSAL_H
#define VOLTVK_ENGINE_CONTRACT_LASTREFUSAL_H

#include <cstdint>
#include <optional>
#include <string>

namespace voltvk {

class Connection;
class State;

/** The refusal that the state keeps for an administrator: always the last one of any process. */
struct LastRefusal {
  std::string operation;     ///< as in Faults::operations
  std::uint32_t status = 0;  ///< a TvkStatus; TVK_OK if the operation ended with an exception
  std::string detail;
  std::uint32_t time = 0;  ///< seconds since 1970

  /**
   * Records a refusal if that is possible immediately: it is lost if the state is in use or cannot be
   * written, since a refused call must neither wait for this nor fail differently because of it.
   */
  static void keep(State& state, const char* operation, std::uint32_t status, const char* detail) noexcept;

  /** @return no value if nothing has been refused yet. Throws DatabaseError. */
  static std::optional<LastRefusal> read(Connection& connection);
};

}  // namespace voltvk

#endif
