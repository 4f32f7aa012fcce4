// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/client/IndicationListener.h"

#include "host/cimxml/message/Failure.h"
#include "host/cimxml/message/MessageWriter.h"
#include "host/cimxml/message/RequestMessage.h"
#include "text/Quote.h"

#include <httplib.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <thread>
#include <utility>

#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

constexpr std::size_t LARGEST_EXPORT = 1U << 20U;  ///< in bytes
constexpr int PATIENCE = 10;                       ///< in seconds, for each part of an export
constexpr int PAYLOAD_TOO_LARGE = 413;

constexpr const char* XML = "application/xml; charset=\"utf-8\"";

/** Answers the export that a body contains. */
void answerExport(
    const std::string& body, const IndicationListener::Handler& handler, httplib::Response& response) {
  const RequestMessage request = RequestMessage::read(body);
  if (request.kind() != RequestKind::Export) {
    throw BadMessage("unsupported-operation", "a listener answers exports only");
  }
  const AnswerHead head{request.id(), request.name()};
  response.set_header("CIMExport", "MethodResponse");
  try {
    handler(request.indication());
    response.set_content(exportAnswer(head), XML);
  } catch (const CimFailure& failure) {
    response.set_content(errorAnswer(head, true, failure.code(), failure.what()), XML);
  } catch (const std::exception& failure) {
    response.set_content(errorAnswer(head, true, CMPI_RC_ERR_FAILED, failure.what()), XML);
  }
}

}  // namespace

struct IndicationListener::Content {
  explicit Content(Handler given) : handler(std::move(given)) {
    // The library's own choice would let two listeners have one port, and each of them a part of the exports.
    server.set_socket_options([](socket_t socket) {
      const int on = 1;
      ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    server.set_payload_max_length(LARGEST_EXPORT);
    server.set_read_timeout(PATIENCE);
    server.set_write_timeout(PATIENCE);
    server.set_keep_alive_timeout(PATIENCE);
    server.set_tcp_nodelay(true);
    server.Post(
        ".*",
        [this](const httplib::Request&, httplib::Response& response, const httplib::ContentReader& content) {
          receive(content, response);
        });
  }
  ~Content() {
    server.stop();
    if (thread.joinable()) {
      thread.join();
    }
  }
  Content(const Content&) = delete;
  Content& operator=(const Content&) = delete;

  void receive(const httplib::ContentReader& content, httplib::Response& response) const {
    std::string body;
    // A body in chunks does not say its size beforehand.
    const bool complete = content([&](const char* data, std::size_t size) {
      const bool fits = body.size() + size <= LARGEST_EXPORT;
      if (fits) {
        body.append(data, size);
      }
      return fits;
    });
    if (!complete) {
      response.status = PAYLOAD_TOO_LARGE;
      return;
    }
    try {
      answerExport(body, handler, response);
    } catch (const BadMessage& error) {
      response.status = error.httpStatus();
      response.set_header("CIMError", error.cimError());
    }
  }

  const Handler handler;
  httplib::Server server;
  std::uint16_t port = 0;
  std::atomic<bool> ended{false};
  std::thread thread;
};

IndicationListener::IndicationListener(const std::string& address, std::uint16_t port, Handler handler)
    : m_content(std::make_unique<Content>(std::move(handler))) {
  httplib::Server& server = m_content->server;
  const int bound = port == 0                            ? server.bind_to_any_port(address)
                    : server.bind_to_port(address, port) ? port
                                                         : -1;
  if (bound <= 0) {
    throw std::runtime_error(
        "cannot listen on port " + std::to_string(port) + " of " + text::quoted(address) +
        ": give an address of this machine and a port that is free, from 1024 unless you are root");
  }
  m_content->port = static_cast<std::uint16_t>(bound);
  // Connections wait in the socket's queue until the thread takes them.
  m_content->thread = std::thread([content = m_content.get()] {
    content->server.listen_after_bind();
    content->ended = true;
  });
  while (!server.is_running() && !m_content->ended) {  // stop() would not reach a server that has not begun
    std::this_thread::yield();
  }
}

IndicationListener::~IndicationListener() = default;

std::uint16_t IndicationListener::port() const {
  return m_content->port;
}

std::string addressTowards(const std::string& host) {
  const auto fail = [&](const std::string& why) {
    throw std::runtime_error("there is no way to " + text::quoted(host) + ": " + why);
  };
  addrinfo hints{};
  hints.ai_socktype = SOCK_DGRAM;
  addrinfo* found = nullptr;
  // Any port will do: connecting a datagram socket sends nothing.
  const int failure = ::getaddrinfo(host.c_str(), "5988", &hints, &found);
  if (failure != 0) {
    fail(::gai_strerror(failure));
  }
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, ::freeaddrinfo);
  int error = 0;
  for (const addrinfo* each = addresses.get(); each != nullptr; each = each->ai_next) {
    const int socket = ::socket(each->ai_family, each->ai_socktype | SOCK_CLOEXEC, each->ai_protocol);
    sockaddr_storage own{};
    socklen_t size = sizeof own;
    auto* address = reinterpret_cast<sockaddr*>(&own);
    const bool known = socket >= 0 && ::connect(socket, each->ai_addr, each->ai_addrlen) == 0 &&
                       ::getsockname(socket, address, &size) == 0;
    error = errno;
    ::close(socket);
    std::array<char, NI_MAXHOST> text{};
    if (known && ::getnameinfo(address, size, text.data(), text.size(), nullptr, 0, NI_NUMERICHOST) == 0) {
      return text.data();
    }
  }
  fail(std::strerror(error));
  return "";
}

}  // namespace tvp::host::cimxml
