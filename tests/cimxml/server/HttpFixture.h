// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_CIMXML_SERVER_HTTPFIXTURE_H
#define TESTS_CIMXML_SERVER_HTTPFIXTURE_H

#include "host/cimxml/server/HttpServer.h"
#include "host/cimxml/server/OpenUsers.h"
#include "support/Threads.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tvp::test {

using namespace tvp::host::cimxml;
using testing::HasSubstr;
using testing::StartsWith;

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
          const std::string whole = m_received.substr(0, size);
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

/** A server whose answer repeats what it was called with. */
class HttpTest : public testing::Test {
protected:
  HttpTest() {
    options.port = 0;
    options.wrongPassword = std::chrono::milliseconds(0);
    options.log = [this](const std::string& line) {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_lines.push_back(line);
    };
  }

  void start() {
    server = std::make_unique<HttpServer>(options, users);
    server->onCall([this](const HttpCall& call) { return handler(call); });
    server->onPage("/page", [](const HttpCall& call) {
      HttpReply reply;
      reply.body = "a page for " + call.user;
      return reply;
    });
    server->start();
  }

  static HttpReply echo(const HttpCall& call) {
    HttpReply reply;
    reply.operation = call.method;
    reply.className = "TST_Class";
    reply.headers["CIMOperation"] = "MethodResponse";
    reply.body = call.operation + "|" + call.exportOperation + "|" + call.method + "|" + call.object + "|" +
                 call.contentType + "|" + call.user + "|" + call.body;
    return reply;
  }

  /** What the server answers to bytes on a connection of their own. */
  std::string answerTo(std::string_view bytes) const {
    return RawClient(server->port()).send(bytes).answer();
  }

  /** Waits until the log has a line with the text. */
  bool logged(const std::string& text) {
    return waitFor([&] {
      const std::lock_guard<std::mutex> lock(m_mutex);
      return std::any_of(m_lines.begin(), m_lines.end(), [&](const std::string& line) {
        return line.find(text) != std::string::npos;
      });
    });
  }

  HttpServerOptions options;
  std::shared_ptr<Users> users = std::make_shared<OpenUsers>("carol");
  CallHandler handler = echo;

private:
  std::mutex m_mutex;
  std::vector<std::string> m_lines;

protected:
  std::unique_ptr<HttpServer> server;  ///< stops before anything that its threads use goes away
};

}  // namespace tvp::test

#endif
