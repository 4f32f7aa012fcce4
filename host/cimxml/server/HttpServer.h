// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_HTTPSERVER_H
#define HOST_CIMXML_SERVER_HTTPSERVER_H

#include "host/cimxml/server/Exchange.h"
#include "host/cimxml/server/Pages.h"
#include "host/cimxml/server/RequestCounters.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tvp::host::cimxml {

/** Decides who a client is. Called by several threads at once; may take its time. */
class Users {
public:
  Users() = default;
  virtual ~Users() = default;
  Users(const Users&) = delete;
  Users& operator=(const Users&) = delete;

  /** As whom everybody is answered, whatever credentials they send; without a value, credentials are asked
   * for.
   */
  virtual std::optional<std::string> anonymous() const = 0;
  /** Whether the password is the user's. */
  virtual bool accepts(const std::string& user, const std::string& password) = 0;
  /** Whether a user who was accepted may use the server; others are answered with 403. */
  virtual bool permits(const std::string& /*user*/) const { return true; }
};

struct HttpLimits {
  std::size_t connections = 256;                     ///< a further one is answered with 503 and closed
  std::size_t requestBytes = std::size_t{8} << 20U;  ///< a longer body is answered with 413
  std::chrono::seconds request{30};                  ///< from the first byte of a request to its last: 408
  std::chrono::seconds idle{30};                     ///< between two requests of a connection
  std::chrono::seconds answer{60};                   ///< a client that does not take its answer
};

struct HttpServerOptions {
  std::string address = "127.0.0.1";  ///< of IPv4 or IPv6
  std::uint16_t port = 5988;          ///< 0: any free one
  std::string tlsCertificate;         ///< file names; both empty without TLS
  std::string tlsKey;
  HttpLimits limits;
  std::chrono::milliseconds wrongPassword{1000};  ///< after which a wrong password is answered
  /** Receives one line per request, without its newline, and warnings. Called by several threads. */
  std::function<void(const std::string& line)> log;
};

/** Whether an address is one that only programs of the same machine reach. */
bool isLoopback(const std::string& address);

/**
 * An HTTP server for calls of CIM-XML (POST) and for pages (GET), with a thread for each connection.
 * Thread-safe.
 *
 * A line of the log has the client, the user, the operation, the class, the status (OK, that of CIM, or that
 * of HTTP) and the time from the first byte of the request to the last of the answer; "-" stands for what is
 * unknown.
 */
class HttpServer {
public:
  /**
   * @throws std::runtime_error that says what was wrong and what to do: also for an address that other
   * machines reach without TLS, or without asking for a password
   */
  HttpServer(HttpServerOptions options, std::shared_ptr<Users> users);
  ~HttpServer();
  HttpServer(const HttpServer&) = delete;
  HttpServer& operator=(const HttpServer&) = delete;

  /** What answers POST at /cimom (and any other path, as object managers do). Before start(). */
  void onCall(CallHandler handler);
  /**
   * What answers GET and HEAD at a path; POST is answered with 405 there, except at "/". Before start().
   * Where nobody is asked for a password, the address of the request has to name this machine.
   */
  void onPage(const std::string& path, CallHandler handler, PageReaders readers = PageReaders::Users);

  /** Begins to listen; the threads are the server's own. @throws std::runtime_error */
  void start();
  /** The port that it listens on, after start(). */
  std::uint16_t port() const;
  /** What was done so far. */
  ServerCounts counts() const;
  /** Takes no more connections, finishes the requests that run, and returns. */
  void stop();

private:
  struct Content;
  std::unique_ptr<Content> m_content;
};

}  // namespace tvp::host::cimxml

#endif
