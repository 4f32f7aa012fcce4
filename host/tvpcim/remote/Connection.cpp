// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/Connection.h"

#include "host/tvpcim/Failure.h"
#include "host/tvpcim/Tool.h"
#include "host/tvpcim/remote/Password.h"

#include <stdexcept>
#include <utility>

namespace tvp::host::tvpcim {

cimxml::ServerUrl parseUrl(const std::string& text) {
  try {
    return cimxml::ServerUrl::parse(text);
  } catch (const std::invalid_argument& error) {
    throw UsageError(std::string("--url: ") + error.what());
  }
}

std::unique_ptr<Operations>
connect(const std::string& url, const Options& options, std::shared_ptr<const Schema> schema) {
  cimxml::CimClientOptions client;
  client.url = parseUrl(url);
  client.certificates = options.certificates;
  if (!client.url.user.empty()) {
    if (!client.url.tls && !client.url.isLoopback()) {
      Tool::complain("note: the password goes to " + client.url.host + " unencrypted; https protects it");
    }
    client.password = options.passwordFile.empty()
                          ? askPassword("Password of " + client.url.user + " at " + client.url.host + ": ")
                          : passwordOf(options.passwordFile);
  } else if (!options.passwordFile.empty()) {
    throw UsageError("--password-file needs a user; write the URL as http://USER@HOST:PORT");
  }
  return std::make_unique<cimxml::CimClient>(std::move(client), std::move(schema));
}

}  // namespace tvp::host::tvpcim
