// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_TVPCIM_REMOTE_CONNECTION_H
#define HOST_TVPCIM_REMOTE_CONNECTION_H

#include "host/cimxml/client/CimClient.h"
#include "host/tvpcim/Options.h"

#include <memory>
#include <string>

namespace tvp::host::tvpcim {

/** Reads the URL of a server. @throws UsageError that says what is wrong and never repeats a password */
cimxml::ServerUrl parseUrl(const std::string& text);

/**
 * A client of the server at a URL, with the password of its user: from the file of the options, else asked
 * for on the terminal. Nothing is sent yet.
 * @throws UsageError for a wrong URL; OperationError when the password cannot be had
 */
std::unique_ptr<Operations>
connect(const std::string& url, const Options& options, std::shared_ptr<const Schema> schema);

}  // namespace tvp::host::tvpcim

#endif
