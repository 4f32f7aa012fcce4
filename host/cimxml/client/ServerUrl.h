// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_CLIENT_SERVERURL_H
#define HOST_CIMXML_CLIENT_SERVERURL_H

#include <cstdint>
#include <string>

namespace tvp::host::cimxml {

/** Where a server is and who asks it. A plain value. */
struct ServerUrl {
  bool tls = false;
  std::string host;           ///< a name or an address; without the brackets of an IPv6 address
  std::uint16_t port = 5988;  ///< 5989 with TLS
  std::string user;           ///< may be empty
  std::string path = "/cimom";

  /**
   * Reads "http://USER@HOST:PORT/PATH" or the same with https; user, port and path may be left out.
   * @throws std::invalid_argument that says what is wrong and what to write. A password is refused, since
   * other users of a machine see command lines, and never repeated in the message
   */
  static ServerUrl parse(const std::string& text);

  /** Whether the host is this machine, over its loopback interface. */
  bool isLoopback() const;
  /** The URL without the user, for messages. */
  std::string text() const;
  /** "host:port", with brackets around an IPv6 address. */
  std::string authority() const;
};

}  // namespace tvp::host::cimxml

#endif
