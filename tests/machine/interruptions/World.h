// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_MACHINE_INTERRUPTIONS_WORLD_H
#define TESTS_MACHINE_INTERRUPTIONS_WORLD_H

#include "voltvk/engine/contract/State.h"

#include <string>
#include <vector>

namespace tvp::test {

/** What there is before a change: a sum of these. */
enum Thing : unsigned int { FAST = 1, SLOW = 2, TIERED = 4, CACHED = 8 };

/**
 * The pools and volumes on the drives of the machine: a pool of both SSDs, one of the first hard disk, a
 * tiered volume on both, and a cached volume on the second hard disk. There is one World at a time.
 */
class World {
public:
  World();

  voltvk::State& state() { return m_state; }
  voltvk::Configuration configuration() { return m_state.snapshot()->configuration(); }

  /** Makes what is missing of these things, removes what is not among them, and fills the volumes. */
  void become(unsigned int things);

  void make(Thing thing);
  void remove(Thing thing);
  /** Gives it a name and, other than it has, a description. */
  void describe(Thing thing, const std::string& suffix);
  /** Adds /dev/sdb to the slow pool. */
  void extend();
  /** Makes the tiered volume larger. */
  void grow();
  /** Replaces /dev/sda of the slow pool by /dev/sdb. */
  void replace();
  /** Lets the chunks of the tiered volume that are on the hard disk become hot. */
  void heat();
  std::uint32_t idOf(Thing thing);

  /** The configuration without what differs between two that are made alike. */
  std::string text();

  /**
   * Everything that is wrong: the state, the drives, both together, and the contents of volumes.
   * @param filled the volumes that have contents, as those that become() makes
   */
  std::vector<std::string> complaints(unsigned int filled);
  /** Settles what a change left behind, as the next change does, or as an administrator repairs it. */
  void settle(bool asRepair);

  /** Removes everything by force, after something went wrong. */
  static void clear();

private:
  bool has(Thing thing) { return idOf(thing) != 0; }
  /** Neither larger nor on other drives than make() makes it. */
  bool isAsMade(Thing thing);
  void compareUsage(std::vector<std::string>& found);
  void compareDrives(std::vector<std::string>& found);
  void forContents(std::uint32_t volumeId, bool write, std::vector<std::string>& found);

  voltvk::State m_state;
};

}  // namespace tvp::test

#endif
