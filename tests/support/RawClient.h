// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_SUPPORT_RAWCLIENT_H
#define TESTS_SUPPORT_RAWCLIENT_H

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace tvp::test {

/** A client that sends bytes as they are. */
class RawClient {
public:
  explicit RawClient(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    const timeval patience{120, 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    m_connected = ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  ~RawClient() { ::close(m_socket); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  bool connected() const { return m_connected; }
  int socket() const { return m_socket; }
  RawClient& send(std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) {
        break;
      }
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return *this;
  }
  void endSending() const { ::shutdown(m_socket, SHUT_WR); }

  /** One answer with its body; what there is when the server ends the connection before. */
  std::string answer() {
    for (;;) {
      const std::size_t end = m_received.find("\r\n\r\n");
      const std::size_t length = m_received.find("Content-Length: ");
      if (end != std::string::npos && length < end) {
        const std::size_t size = end + 4 + std::stoul(m_received.substr(length + 16));
        if (m_received.size() >= size) {
          std::string whole = m_received.substr(0, size);
          m_received.erase(0, size);
          return whole;
        }
      }
      if (!receive()) {
        return std::exchange(m_received, "");
      }
    }
  }
  /** An answer without a body, which comes before the one that was asked for. */
  std::string interim() {
    while (m_received.find("\r\n\r\n") == std::string::npos && receive()) {
    }
    return std::exchange(m_received, "");
  }
  /** All that comes until the server ends the connection. */
  std::string rest() {
    while (receive()) {
    }
    return std::exchange(m_received, "");
  }
  bool receive(std::size_t most = 65536) {
    std::string buffer(most, '\0');
    const ssize_t count = ::recv(m_socket, buffer.data(), buffer.size(), 0);
    m_received.append(buffer, 0, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0;
  }

private:
  const int m_socket;
  bool m_connected = false;
  std::string m_received;
};

inline std::string post(const std::string& body, const std::string& headers = "") {
  return "POST /cimom HTTP/1.1\r\nHost: localhost\r\nContent-Type: application/xml\r\n" + headers +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

}  // namespace tvp::test

#endif
