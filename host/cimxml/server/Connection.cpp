// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/Connection.h"

#include <openssl/err.h>
#include <openssl/sslerr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

constexpr std::size_t LONGEST_REQUEST_LINE = 8000;
constexpr std::size_t LONGEST_HEAD = 32768;
constexpr std::size_t PIECE = 65536;  ///< that is read or sent at once
constexpr std::chrono::seconds LINGER{2};
constexpr std::chrono::seconds LAST_ANSWER{
    5};  ///< what a client may take for its answer when the server stops

}  // namespace

Connection::Connection(int socket, SSL_CTX* tls, const HttpLimits& limits, int stop)
    : m_socket(socket), m_stop(stop), m_limits(limits), m_tls(tls == nullptr ? nullptr : SSL_new(tls)) {
  if (m_tls != nullptr) {
    SSL_set_fd(m_tls.get(), m_socket);
  }
}

Connection::~Connection() {
  if (m_tls != nullptr && !m_failed) {
    SSL_shutdown(m_tls.get());  // so that the client knows that nothing was cut off
  }
  m_tls.reset();
  ::close(m_socket);
}

bool Connection::await(short events, Clock::time_point& deadline, Direction direction) {
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0) {
      m_timedOut = true;
      return false;
    }
    std::array<pollfd, 2> files = {pollfd{m_socket, events, 0}, pollfd{m_stopping ? -1 : m_stop, POLLIN, 0}};
    const int ready =
        ::poll(files.data(), files.size(), static_cast<int>(std::min<long long>(left, INT_MAX)));
    if (ready < 0 && errno != EINTR) {
      return false;
    }
    if (ready > 0 && files[1].revents != 0) {
      m_stopping = true;
      deadline = std::min<Clock::time_point>(deadline, Clock::now() + LAST_ANSWER);
    }
    if (m_stopping && direction == Direction::In) {
      return false;
    }
    if (ready > 0 && files[0].revents != 0) {
      return true;
    }
  }
}

ssize_t Connection::tryOnce(Direction direction, char* data, std::size_t size, short& wanted) {
  if (m_tls == nullptr) {
    wanted = direction == Direction::In ? POLLIN : POLLOUT;
    const ssize_t count = direction == Direction::In ? ::recv(m_socket, data, size, 0)
                                                     : ::send(m_socket, data, size, MSG_NOSIGNAL);
    if (count < 0 && errno != EAGAIN && errno != EINTR) {
      wanted = 0;
    }
    return count;
  }
  ERR_clear_error();
  std::size_t moved = 0;
  const int result = direction == Direction::In ? SSL_read_ex(m_tls.get(), data, size, &moved)
                                                : SSL_write_ex(m_tls.get(), data, size, &moved);
  if (result == 1) {
    return static_cast<ssize_t>(moved);
  }
  const int error = SSL_get_error(m_tls.get(), result);
  const int events = error == SSL_ERROR_WANT_READ ? POLLIN : error == SSL_ERROR_WANT_WRITE ? POLLOUT : 0;
  wanted = static_cast<short>(events);
  m_failed = m_failed || error == SSL_ERROR_SSL || error == SSL_ERROR_SYSCALL;
  return error == SSL_ERROR_ZERO_RETURN ? 0 : -1;
}

ssize_t Connection::transfer(Direction direction, char* data, std::size_t size, Clock::time_point& deadline) {
  for (;;) {
    short wanted = 0;
    const ssize_t count = tryOnce(direction, data, size, wanted);
    if (count >= 0 || wanted == 0 || !await(wanted, deadline, direction)) {
      return count;
    }
  }
}

bool Connection::open() {
  m_began = Clock::now();
  m_requestDeadline = m_began + m_limits.request;
  while (m_tls != nullptr) {
    ERR_clear_error();
    const int result = SSL_accept(m_tls.get());
    if (result == 1) {
      break;
    }
    const int error = SSL_get_error(m_tls.get(), result);
    if (error == SSL_ERROR_WANT_READ || error == SSL_ERROR_WANT_WRITE) {
      if (!await(error == SSL_ERROR_WANT_READ ? POLLIN : POLLOUT, m_requestDeadline, Direction::In)) {
        return false;
      }
      continue;
    }
    m_failed = true;
    if (ERR_GET_REASON(ERR_peek_error()) == SSL_R_HTTP_REQUEST) {
      m_tls.reset();
      const std::string text = refusalText({400, "This port speaks TLS: use https."});
      write(text.data(), text.size());
      linger();
    }
    return false;
  }
  return true;
}

bool Connection::fill(Clock::time_point& deadline) {
  if (m_position == m_in.size()) {
    m_in.clear();
    m_position = 0;
  }
  const std::size_t before = m_in.size();
  constexpr std::size_t STEP = 16384;  // the longest record of TLS
  m_in.resize(before + STEP);
  const ssize_t count = transfer(Direction::In, m_in.data() + before, STEP, deadline);
  m_in.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  return count > 0;
}

bool Connection::awaitRequest() {
  m_answerDeadline.reset();
  Clock::time_point deadline = Clock::now() + m_limits.idle;
  if (m_position == m_in.size() && !fill(deadline)) {
    return false;
  }
  m_timedOut = false;
  m_began = Clock::now();
  m_requestDeadline = m_began + m_limits.request;
  return true;
}

std::optional<Refusal> Connection::readHead(std::string& head) {
  const std::string_view end = "\r\n\r\n";
  std::size_t searched = 0;  // of what comes before the end of the head
  for (;;) {
    while (m_position < m_in.size() && (m_in[m_position] == '\r' || m_in[m_position] == '\n')) {
      ++m_position;  // some clients send a newline behind a body
    }
    const std::string_view received = std::string_view(m_in).substr(m_position);
    if (!received.empty() && (received[0] < 'A' || received[0] > 'Z')) {
      return Refusal{400, "The request is not one of HTTP."};  // such as TLS, which has no lines to wait for
    }
    const std::size_t found = received.find(end, searched);
    if (received.substr(0, LONGEST_REQUEST_LINE).find('\n') == std::string_view::npos &&
        received.size() >= LONGEST_REQUEST_LINE) {
      return Refusal{414, "The request line is too long."};
    }
    if (std::min(found, received.size()) > LONGEST_HEAD) {
      return Refusal{431, "The headers are longer than " + std::to_string(LONGEST_HEAD) + " bytes."};
    }
    if (found != std::string_view::npos) {
      head = received.substr(0, found + end.size());
      m_position += head.size();
      return std::nullopt;
    }
    searched = received.size() < end.size() ? 0 : received.size() - end.size() + 1;
    if (!fill(m_requestDeadline)) {
      return m_timedOut ? Refusal{408, "The request did not come in time."}
                        : Refusal{400, "The request ends in its headers."};
    }
  }
}

ssize_t Connection::read(char* data, std::size_t size) {
  if (!m_out.empty()) {
    if (!flush()) {  // what was written asks for what is to be read now
      return -1;
    }
    m_answerDeadline.reset();
  }
  if (m_position == m_in.size() && !fill(m_requestDeadline)) {
    return -1;
  }
  const std::size_t count = std::min(size, m_in.size() - m_position);
  std::memcpy(data, m_in.data() + m_position, count);
  m_position += count;
  return static_cast<ssize_t>(count);
}

bool Connection::write(const char* data, std::size_t size) {
  m_out.append(data, size);
  return m_out.size() < PIECE || flush();
}

bool Connection::flush() {
  if (!m_answerDeadline) {
    m_answerDeadline = Clock::now() + m_limits.answer;
  }
  std::size_t sent = 0;
  while (sent < m_out.size()) {
    const ssize_t count = transfer(
        Direction::Out, m_out.data() + sent, std::min(m_out.size() - sent, PIECE), *m_answerDeadline);
    if (count <= 0) {
      return false;
    }
    sent += static_cast<std::size_t>(count);
  }
  m_out.clear();
  return true;
}

void Connection::linger() {
  flush();
  if (m_tls != nullptr && !m_failed) {
    SSL_shutdown(m_tls.get());
  }
  ::shutdown(m_socket, SHUT_WR);
  std::array<char, PIECE> dropped{};
  Clock::time_point deadline = Clock::now() + LINGER;
  m_tls.reset();  // the rest is not worth decrypting
  while (transfer(Direction::In, dropped.data(), dropped.size(), deadline) > 0 && Clock::now() < deadline) {
  }
}

}  // namespace tvp::host::cimxml
