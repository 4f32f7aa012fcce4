// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_INTENTS_H
#define VOLTVK_ENGINE_STATE_INTENTS_H

#include <cstdint>
#include <vector>

namespace voltvk {

class Connection;

/** A step of a change that a real backing carries out. The numbers are stored in the state. */
enum class Step : std::uint8_t {
  MakePool = 1,
  RemovePool = 2,
  DescribePool = 3,
  MakeVolume = 4,
  RemoveVolume = 5,
  DescribeVolume = 6,
  MoveChunks = 7,
  Flush = 8,
  ExtendPool = 9,
  ReplaceDrive = 10,
  GrowVolume = 11
};

/** A step that is about to be carried out. */
struct Intent {
  Step step = Step::MakePool;
  std::uint32_t object = 0;           ///< the pool or volume
  std::vector<std::uint16_t> drives;  ///< that are claimed; of ReplaceDrive the replaced one, then the other
};

/**
 * The steps of the change that is under way, as recorded before the first of them. What is found when no
 * change is under way was left behind by a process that ended early. Works within the caller's transaction.
 * Throws DatabaseError.
 */
class Intents {
public:
  explicit Intents(Connection& connection) : m_connection(connection) {}

  void record(const std::vector<Intent>& intents);
  /** In the order in which they were recorded. */
  std::vector<Intent> list();
  void clear();

private:
  Connection& m_connection;
};

}  // namespace voltvk

#endif
