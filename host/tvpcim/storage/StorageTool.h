// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_STORAGE_STORAGETOOL_H
#define HOST_TVPCIM_STORAGE_STORAGETOOL_H

#include <nlohmann/json.hpp>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tvp::host::tvpcim {

/**
 * Asks the storage library of this machine through its own command, voltvkctl, for what the CIM classes do
 * not have: why something is degraded, heat, events. The command is the one that belongs to this one, else
 * that in the search path; it works on the same state, as it gets the same environment. One thread at a time.
 */
class StorageTool {
public:
  using Json = nlohmann::ordered_json;

  static constexpr std::chrono::milliseconds LIMIT{10000};

  /** Asks the command that belongs to this one. */
  StorageTool();
  /**
   * @param program the command: a path, or a name in the search path
   * @param limit how long an answer may take; the command is then ended
   */
  StorageTool(std::string program, std::chrono::milliseconds limit)
      : m_program(std::move(program)), m_limit(limit) {}

  /**
   * Runs "voltvkctl -o json ARGUMENTS" and waits for it. No shell takes part, and keys that are pressed for
   * this process do not reach it.
   * @return its document, also that of a failure which has one; nothing if there is none: see reason()
   */
  std::optional<Json> ask(const std::vector<std::string>& arguments);

  /** Why the last question has no answer, a sentence; empty if it has one. */
  const std::string& reason() const { return m_reason; }

private:
  const std::string m_program;
  const std::chrono::milliseconds m_limit;
  std::string m_reason;
};

}  // namespace tvp::host::tvpcim

#endif
