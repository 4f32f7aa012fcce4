// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_LOCALSERVER_H
#define HOST_TVPCIM_REMOTE_LOCALSERVER_H

#include <cstddef>
#include <optional>
#include <string>

#include <sys/types.h>

namespace tvp::host::tvpcim {

/** Where 'tvpcim serve' of this user keeps subscriptions unless it is told otherwise.
 *  @throws UsageError when the user has no home directory */
std::string defaultSubscriptions();

/** What can be seen of 'tvpcim serve' on this machine without asking it, which would take a password. */
struct LocalServer {
  std::optional<pid_t> process;              ///< that holds the file of subscriptions; nothing: none runs
  std::optional<std::size_t> subscriptions;  ///< in the file; nothing: it cannot be read

  /** Looks at the server with the subscriptions of this file; it need not exist. */
  static LocalServer with(const std::string& subscriptionsFile);
};

}  // namespace tvp::host::tvpcim

#endif
