// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CIMXML_SERVER_CONNECTION_H
#define HOST_CIMXML_SERVER_CONNECTION_H

#include "host/cimxml/server/HttpServer.h"
#include "host/cimxml/server/RequestHead.h"
#include "host/cimxml/server/Tls.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include <sys/types.h>

namespace tvp::host::cimxml {

/**
 * The connection of a client, with or without TLS: bytes both ways, and never a wait without a limit. Belongs
 * to one thread.
 */
class Connection {
public:
  using Clock = std::chrono::steady_clock;

  /**
   * @param socket accepted and non-blocking; owned from now on
   * @param tls null without TLS
   * @param stop a file that becomes readable when the server stops: what is waited for then does not come any
   * more, and an answer gets a few seconds
   */
  Connection(int socket, SSL_CTX* tls, const HttpLimits& limits, int stop);
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  /** Agrees on TLS. A client that does not speak it is told so. @return whether the connection can be used */
  bool open();
  /** Waits for the first byte of a request, which starts the time that the request may take. @return false
   * when none came */
  bool awaitRequest();
  /** Reads up to the empty line and keeps what comes behind it. @return why that was refused, if it was */
  std::optional<Refusal> readHead(std::string& head);

  /** @return as recv(): -1 also when the time of the request is over; see timedOut() */
  ssize_t read(char* data, std::size_t size);
  bool timedOut() const { return m_timedOut; }
  /** Keeps the bytes, or sends them when there are many. @return false when the client is gone */
  bool write(const char* data, std::size_t size);
  /** Sends what is kept. @return false when the client is gone or does not take it in time */
  bool flush();
  /**
   * Ends the connection in the midst of a request: what the client still sends is read and dropped for a
   * moment, since a connection that is closed over unread bytes loses the answer as well.
   */
  void linger();

  Clock::time_point requestBegan() const { return m_began; }

private:
  enum class Direction { In, Out };
  /** Waits for the socket. @return false when the time is over, or the server stops */
  bool await(short events, Clock::time_point& deadline, Direction direction);
  /** Moves some bytes. @return how many; 0 at the end of the stream, -1 on failure */
  ssize_t transfer(Direction direction, char* data, std::size_t size, Clock::time_point& deadline);
  ssize_t tryOnce(Direction direction, char* data, std::size_t size, short& wanted);
  /** Reads what is there into m_in. */
  bool fill(Clock::time_point& deadline);

  const int m_socket;
  const int m_stop;
  const HttpLimits& m_limits;
  TlsSession m_tls;
  std::string m_in;            ///< read from the client
  std::size_t m_position = 0;  ///< of m_in, up to which it is used
  std::string m_out;           ///< to be sent
  Clock::time_point m_began;
  Clock::time_point m_requestDeadline;
  std::optional<Clock::time_point> m_answerDeadline;
  bool m_timedOut = false;
  bool m_stopping = false;
  bool m_failed = false;  ///< TLS cannot go on
};

}  // namespace tvp::host::cimxml

#endif
