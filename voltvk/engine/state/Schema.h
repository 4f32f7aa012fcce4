// SPDX-License-Identifier: Apache-2.0
#ifndef VOLTVK_ENGINE_STATE_SCHEMA_H
#define VOLTVK_ENGINE_STATE_SCHEMA_H

#include <string>

namespace voltvk {

class Connection;

/** The tables of the state. */
class Schema {
public:
  /**
   * Creates the tables in an empty database, otherwise checks that it is intact, and configures the
   * connection. Several processes may do this at once.
   * @throws Refusal TVK_NO_DRIVER if the database is damaged or not ours; DatabaseError
   */
  static void establish(Connection& connection, const std::string& path);
};

}  // namespace voltvk

#endif
