// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_CLIENT_CIMCLIENT_H
#define HOST_CIMXML_CLIENT_CIMCLIENT_H

#include "host/provider/Operations.h"
#include "host/schema/Schema.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

namespace tvp::host::cimxml {

/** Where a server is and who asks it. */
struct ServerUrl {
  bool tls = false;
  std::string host;
  std::uint16_t port = 5988;  ///< 5989 with TLS
  std::string user;           ///< may be empty
  std::string path = "/cimom";

  /** Reads "http://USER@HOST:PORT". @throws std::invalid_argument that says what is wrong; a password in it is
   * refused */
  static ServerUrl parse(const std::string& text);
};

/** A server that cannot be reached, refuses the user, or does not answer CIM-XML; what() says what to do. */
class ServerError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

struct CimClientOptions {
  ServerUrl url;
  std::string password;
  std::string certificates;  ///< file of trusted certificates; empty: those of the system
  std::chrono::seconds timeout{60};
};

/** A WBEM client: the operations, asked of a server over one connection. One thread. */
class CimClient : public Operations {
public:
  CimClient(CimClientOptions options, std::shared_ptr<const Schema> schema);
  ~CimClient() override;
  // The operations of Operations; each throws ServerError. A status of the server is in the outcome.

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
