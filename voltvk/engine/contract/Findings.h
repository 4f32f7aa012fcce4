// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_CONTRACT_FINDINGS_H
#define VOLTVK_ENGINE_CONTRACT_FINDINGS_H

#include <string>
#include <vector>

namespace voltvk {

class State;

/** Something that an administrator should look after. Its texts have no final point and may have any name in
 * them, on one line. */
struct Finding {
  enum class Severity {
    Degraded,  ///< something is at risk or does not do what it is there for
    Failed     ///< nothing can be asked or changed
  };

  std::string object;  ///< "pool 2 (fast)"
  std::string kind;    ///< drive, pool, tier, policy, driver, changes or faults
  Severity severity = Severity::Degraded;
  std::string cause;   ///< what is wrong with it
  std::string remedy;  ///< what to do; commands are between backquotes, the first one mends it if it succeeds
};

/**
 * Everything that is wrong at the moment, the worst first; empty if all is well. A state that cannot be used
 * is a finding. A degraded pool stands for its drives and volumes: what is wrong with those is decided by
 * Health. Safe to call from any thread. @throws Refusal when the state cannot be read now
 */
std::vector<Finding> findingsOf(State& state);

}  // namespace voltvk

#endif
