// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_LAYOUT_H
#define VOLTVK_ENGINE_STATE_LAYOUT_H

#include <cstdint>

namespace voltvk {

class Connection;

/**
 * What the tables of the state look like, and how those of an earlier version are converted. Works within the
 * caller's transaction. Functions throw DatabaseError.
 */
class Layout {
public:
  /** Creates the tables in an empty database and sets its version. */
  static void create(Connection& connection);

  /**
   * Converts the tables of an earlier version, keeping their rows. Foreign keys must not be enforced on the
   * connection; they are checked at the end.
   * @param from the version that the database has
   */
  static void upgrade(Connection& connection, std::int64_t from);
};

}  // namespace voltvk

#endif
