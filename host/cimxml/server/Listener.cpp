// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/Listener.h"

#include "host/cimxml/server/HttpServer.h"
#include "text/Quote.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

union SocketAddress {
  sockaddr any;
  sockaddr_in four;
  sockaddr_in6 six;
};

/** @throws std::runtime_error for a text that is not an address */
SocketAddress socketAddress(const std::string& text, std::uint16_t port) {
  SocketAddress address{};
  if (::inet_pton(AF_INET, text.c_str(), &address.four.sin_addr) == 1) {
    address.four.sin_family = AF_INET;
    address.four.sin_port = htons(port);
    return address;
  }
  address = {};
  if (::inet_pton(AF_INET6, text.c_str(), &address.six.sin6_addr) != 1) {
    throw std::runtime_error(
        text::quoted(text) + " is not an address of IPv4 or IPv6, such as 127.0.0.1 or ::1");
  }
  address.six.sin6_family = AF_INET6;
  address.six.sin6_port = htons(port);
  return address;
}

socklen_t sizeOf(const SocketAddress& address) {
  return address.any.sa_family == AF_INET ? sizeof address.four : sizeof address.six;
}

std::uint16_t portOf(const SocketAddress& address) {
  return ntohs(address.any.sa_family == AF_INET ? address.four.sin_port : address.six.sin6_port);
}

std::string addressText(const SocketAddress& address) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const void* bytes = address.any.sa_family == AF_INET ? static_cast<const void*>(&address.four.sin_addr)
                                                       : static_cast<const void*>(&address.six.sin6_addr);
  return ::inet_ntop(address.any.sa_family, bytes, text.data(), text.size()) == nullptr ? "-" : text.data();
}

void setFlag(int socket, int level, int option) {
  const int on = 1;
  ::setsockopt(socket, level, option, &on, sizeof on);
}

}  // namespace

OwnedFile::~OwnedFile() {
  reset(-1);
}

void OwnedFile::reset(int file) {
  const int old = std::exchange(m_file, file);
  if (old >= 0) {
    ::close(old);
  }
}

std::string endpointText(const std::string& address, std::uint16_t port) {
  const bool six = address.find(':') != std::string::npos;
  return (six ? "[" + address + "]" : address) + ":" + std::to_string(port);
}

bool isLoopback(const std::string& address) {
  const SocketAddress parsed = socketAddress(address, 0);
  constexpr std::uint32_t LOOPBACK_NETWORK = 127;
  return parsed.any.sa_family == AF_INET ? ntohl(parsed.four.sin_addr.s_addr) >> 24 == LOOPBACK_NETWORK
                                         : IN6_IS_ADDR_LOOPBACK(&parsed.six.sin6_addr);
}

Listener::Listener(const std::string& address, std::uint16_t port) {
  SocketAddress own = socketAddress(address, port);
  m_socket.reset(::socket(own.any.sa_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // A server that was just ended leaves connections behind, which do not keep the next one from its port.
  setFlag(m_socket.get(), SOL_SOCKET, SO_REUSEADDR);
  socklen_t size = sizeof own;
  if (m_socket.get() < 0 || ::bind(m_socket.get(), &own.any, sizeOf(own)) != 0 ||
      ::listen(m_socket.get(), SOMAXCONN) != 0 || ::getsockname(m_socket.get(), &own.any, &size) != 0) {
    const int error = errno;
    throw std::runtime_error(
        "cannot listen on " + endpointText(address, port) + ": " + std::strerror(error) +
        (error == EADDRINUSE ? "; another server has that port: end it, or choose another port" : ""));
  }
  m_port = portOf(own);
}

std::optional<Listener::Accepted> Listener::accept(int stop) const {
  constexpr int SHORTLY = 50;  // milliseconds
  for (;;) {
    std::array<pollfd, 2> files = {pollfd{stop, POLLIN, 0}, pollfd{m_socket.get(), POLLIN, 0}};
    ::poll(files.data(), files.size(), -1);
    if (files[0].revents != 0) {
      return std::nullopt;
    }
    SocketAddress peer{};
    socklen_t size = sizeof peer;
    const int socket = ::accept4(m_socket.get(), &peer.any, &size, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket >= 0) {
      setFlag(socket, IPPROTO_TCP, TCP_NODELAY);
      return Accepted{socket, endpointText(addressText(peer), portOf(peer))};
    }
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
      ::poll(files.data(), 1, SHORTLY);  // until something was freed; the connection stays in the queue
    }
  }
}

}  // namespace tvp::host::cimxml
