// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_PASSWORD_H
#define HOST_TVPCIM_REMOTE_PASSWORD_H

#include <string>

namespace tvp::host::tvpcim {

/**
 * The first line of a file, without its newline.
 * @throws OperationError when it cannot be read, has no line, is too long to be a password, or can be read or
 * changed by others than its owner
 */
std::string passwordOf(const std::string& file);

/** Asks for a password on the terminal of the process, without echo. @throws OperationError without a
 * terminal */
std::string askPassword(const std::string& prompt);

}  // namespace tvp::host::tvpcim

#endif
