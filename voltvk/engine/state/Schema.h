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
   * Creates the tables in an empty database, converts those of an earlier version, and configures the
   * connection. Several processes may do this at once.
   * @param check whether to read the whole file to see that it is intact
   * @throws Refusal TVK_NO_DRIVER if the database is damaged or not ours; DatabaseError
   */
  static void establish(Connection& connection, const std::string& path, bool check);

  /** Does what can be done with a file that cannot be written: checks that it is of the present version. */
  static void accept(Connection& connection, const std::string& path, bool check);
};

}  // namespace voltvk

#endif
