// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/server/HttpServer.h"

#include "host/cimxml/server/Connection.h"
#include "host/cimxml/server/Credentials.h"
#include "host/cimxml/server/Listener.h"
#include "host/cimxml/server/RequestStream.h"
#include "host/cimxml/server/Tls.h"
#include "host/schema/Names.h"
#include "text/Utf8.h"

#include <httplib.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <list>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tvp::host::cimxml {
namespace {

using Clock = Connection::Clock;

/** How long credentials that were accepted stay so on their connection. */
constexpr std::chrono::minutes ACCEPTED{1};

/** A client that is being served: its connection, who it is, and its current request. */
struct Client {
  Connection connection;
  std::string address;
  std::string authorization;  ///< that was accepted last
  std::string accepted;       ///< its user
  Clock::time_point acceptedUntil;
  // Of the current request.
  std::string user;
  HttpReply reply;
  Asked asked = Asked::Nothing;
  bool inStep = true;  ///< whether the next request begins where the connection is read next
};

/** httplib hands the handlers a request and an answer, and nothing of the connection. */
thread_local Client* servedClient = nullptr;

void answerWith(httplib::Response& response, int status, const std::string& sentence) {
  response.status = status;
  response.set_content(sentence + "\n", "text/plain; charset=utf-8");
}

/** A column of the log: what a client sent stays one word. */
std::string logged(const std::string& text) {
  std::string word = text::printable(text);
  std::replace(word.begin(), word.end(), ' ', '_');
  return word.empty() ? "-" : word;
}

std::string milliseconds(Clock::duration time) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f ms", std::chrono::duration<double, std::milli>(time).count());
  return text.data();
}

}  // namespace

/** httplib's server, of which only the understanding of requests is used: it waits without bounds. */
class Requests : public httplib::Server {
public:
  using Server::process_request;
};

struct HttpServer::Content {
  Content(HttpServerOptions given, std::shared_ptr<Users> givenUsers)
      : options(std::move(given)), users(std::move(givenUsers)) {}

  struct Worker {
    std::thread thread;
    std::atomic<bool> done{false};
  };

  void log(const std::string& line) const {
    if (options.log) {
      options.log(line);
    }
  }
  bool stopping() const { return pause(std::chrono::milliseconds(0)); }
  /** Waits. @return whether the server stops */
  bool pause(std::chrono::milliseconds time) const {
    pollfd file{stop.get(), POLLIN, 0};
    return ::poll(&file, 1, static_cast<int>(time.count())) > 0;
  }

  void acceptAll();
  std::size_t reapWorkers();
  void refuseConnection(int socket);
  void serve(int socket, const std::string& address);
  /** @return whether the connection goes on */
  bool serveRequest(Client& client);
  void refuse(Client& client, const Refusal& refusal);
  void logRequest(const Client& client, bool taken);

  void setUp();
  void answerPost(
      const httplib::Request& request, httplib::Response& response,
      const httplib::ContentReader& reader) const;
  void answerGet(const httplib::Request& request, httplib::Response& response) const;
  /** Whether a page is open to a client who is not asked for a password. */
  static bool isOpen(const Page* page, const Client& client, const httplib::Request& request);
  /** Finds out who asks. @return whether the request may go on; else the response says why not */
  bool admit(Client& client, const httplib::Request& request, httplib::Response& response) const;
  bool authenticate(Client& client, const std::string& authorization) const;
  /** Reads the body, or drops it. @return whether it is complete; else the response says why not */
  bool readBody(
      Client& client, const httplib::ContentReader& reader, std::string* body,
      httplib::Response& response) const;
  void call(
      Client& client, const CallHandler& handler, HttpCall call, const httplib::Request& request,
      httplib::Response& response) const;

  const HttpServerOptions options;
  const std::shared_ptr<Users> users;
  TlsContext tls;
  CallHandler callHandler;
  Pages pages;
  RequestCounters counters;
  Requests requests;
  OwnedFile stop;  ///< can be read once the server stops
  std::optional<Listener> listener;
  std::thread acceptor;
  std::list<Worker> workers;  ///< of the acceptor's thread
  std::size_t refused = 0;    ///< connections in a row
};

void HttpServer::Content::setUp() {
  requests.set_keep_alive_timeout(options.limits.idle.count());
  constexpr std::size_t NO_LIMIT = 1000000;
  requests.set_keep_alive_max_count(NO_LIMIT);  // a header says so; nobody counts
  requests.set_logger([](const httplib::Request& /*request*/, const httplib::Response& response) {
    servedClient->reply.status = response.status;
  });
  requests.Post("/", [this](const auto& request, auto& response, const auto& reader) {
    answerPost(request, response, reader);
  });
  requests.Get("/", [this](const auto& request, auto& response) { answerGet(request, response); });
}

bool HttpServer::Content::authenticate(Client& client, const std::string& authorization) const {
  const auto now = Clock::now();
  if (authorization == client.authorization && !authorization.empty() && now < client.acceptedUntil) {
    client.user = client.accepted;
    return true;
  }
  client.authorization.clear();
  const std::optional<Credentials> credentials = readBasic(authorization);
  if (!credentials) {
    client.user.clear();
    return false;  // who sends no password learns at once that one is wanted
  }
  client.user = credentials->user;
  if (!users->accepts(credentials->user, credentials->password)) {
    // The same for every reason, so that the time does not tell which users exist.
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - now);
    pause(std::max(options.wrongPassword - passed, std::chrono::milliseconds(0)));
    return false;
  }
  client.authorization = authorization;
  client.accepted = client.user;
  client.acceptedUntil = Clock::now() + ACCEPTED;
  return true;
}

bool HttpServer::Content::admit(
    Client& client, const httplib::Request& request, httplib::Response& response) const {
  if (const std::optional<std::string> anonymous = users->anonymous()) {
    client.user = *anonymous;
  } else if (!authenticate(client, request.get_header_value("Authorization"))) {
    answerWith(response, 401, "A user of this server and the password are needed.");
    response.set_header("WWW-Authenticate", "Basic realm=\"CIM\", charset=\"UTF-8\"");
    return false;
  }
  if (!users->permits(client.user)) {
    answerWith(response, 403, "This user may not use the server.");
    return false;
  }
  return true;
}

bool HttpServer::Content::readBody(
    Client& client, const httplib::ContentReader& reader, std::string* body,
    httplib::Response& response) const {
  std::size_t size = 0;
  const bool complete = reader([&](const char* data, std::size_t count) {
    size += count;
    if (size > options.limits.requestBytes) {
      return false;
    }
    if (body != nullptr) {
      body->append(data, count);
    }
    return true;
  });
  if (!complete) {
    client.inStep = false;
    const bool tooLong = size > options.limits.requestBytes;
    answerWith(
        response,
        tooLong                        ? 413
        : client.connection.timedOut() ? 408
                                       : 400,
        tooLong ? "The body is longer than " + std::to_string(options.limits.requestBytes) + " bytes."
                : "The body did not come as it was announced.");
  }
  return complete;
}

void HttpServer::Content::call(
    Client& client, const CallHandler& handler, HttpCall call, const httplib::Request& request,
    httplib::Response& response) const {
  call.user = client.user;
  call.client = client.address;
  call.contentType = request.get_header_value("Content-Type");
  client.reply = handler(call);
  response.status = client.reply.status;
  for (const auto& [name, value] : client.reply.headers) {
    response.set_header(name, value);
  }
  if (!client.reply.body.empty()) {
    response.body.swap(client.reply.body);  // its length is added by the library
    response.set_header("Content-Type", client.reply.contentType);
  }
}

void HttpServer::Content::answerPost(
    const httplib::Request& request, httplib::Response& response,
    const httplib::ContentReader& reader) const {
  Client& client = *servedClient;
  if (!admit(client, request, response)) {
    httplib::Response ignored;
    readBody(client, reader, nullptr, ignored);
    return;
  }
  HttpCall operation;
  const std::string_view path = pathOf(request.target);
  if (path != "/" && pages.find(path) != nullptr) {
    client.asked = Asked::Page;
    if (readBody(client, reader, nullptr, response)) {
      answerWith(response, 405, "A page is asked for with GET or HEAD.");
      response.set_header("Allow", "GET, HEAD");
    }
    return;
  }
  client.asked = Asked::Operation;
  if (!readBody(client, reader, &operation.body, response)) {
    return;
  }
  operation.operation = request.get_header_value("CIMOperation");
  operation.exportOperation = request.get_header_value("CIMExport");
  operation.method =
      request.get_header_value(operation.exportOperation.empty() ? "CIMMethod" : "CIMExportMethod");
  operation.object = request.get_header_value("CIMObject");
  operation.protocolVersion = request.get_header_value("CIMProtocolVersion");
  call(client, callHandler, std::move(operation), request, response);
}

bool HttpServer::Content::isOpen(const Page* page, const Client& client, const httplib::Request& request) {
  return page != nullptr && (page->readers == PageReaders::Everyone ||
                             (page->readers == PageReaders::SameMachine && isOnThisMachine(client.address) &&
                              namesThisMachine(request.get_header_value("Host"))));
}

void HttpServer::Content::answerGet(const httplib::Request& request, httplib::Response& response) const {
  Client& client = *servedClient;
  const Page* page = pages.find(request.target);
  client.asked = page == nullptr ? Asked::Nothing : Asked::Page;
  if (!isOpen(page, client, request)) {
    if (!admit(client, request, response)) {
      return;
    }
    if (users->anonymous() && !namesThisMachine(request.get_header_value("Host"))) {
      answerWith(
          response, 403,
          "Where no password is asked for, pages are for this machine: use localhost in their address.");
      return;
    }
  }
  if (page == nullptr) {
    answerWith(response, 404, "There is no such page; operations of CIM-XML are sent with POST.");
    return;
  }
  HttpCall asked;
  asked.query = request.target.substr(std::min(request.target.find('?'), request.target.size() - 1) + 1);
  call(client, page->handler, std::move(asked), request, response);
}

void HttpServer::Content::logRequest(const Client& client, bool taken) {
  const HttpReply& reply = client.reply;
  const Clock::duration time = Clock::now() - client.connection.requestBegan();
  const bool failed = reply.status == 200 && reply.code != CMPI_RC_OK;
  counters.add({client.asked, reply.status, failed, taken, time});
  if (reply.routine && taken && reply.status == 200 && !failed) {
    return;
  }
  const std::string status = !taken                     ? "lost"
                             : reply.status != 200      ? std::to_string(reply.status)
                             : reply.code == CMPI_RC_OK ? "OK"
                                                        : statusName(reply.code);
  log(client.address + " " + logged(client.user) + " " + logged(reply.operation) + " " +
      logged(reply.className) + " " + status + " " + milliseconds(time));
}

void HttpServer::Content::refuse(Client& client, const Refusal& refusal) {
  const std::string text = refusalText(refusal);
  client.reply.status = refusal.status;
  const bool taken = client.connection.write(text.data(), text.size()) && client.connection.flush();
  logRequest(client, taken);
  client.connection.linger();
}

bool HttpServer::Content::serveRequest(Client& client) {
  client.user.clear();
  client.reply = {};
  client.asked = Asked::Nothing;
  std::string head;
  std::optional<Refusal> refusal = client.connection.readHead(head);
  if (!refusal) {
    refusal = refusalOf(head, options.limits.requestBytes);
  }
  if (refusal) {
    refuse(client, *refusal);
    return false;
  }
  RequestStream stream(client.connection, head);
  bool last = stopping();
  servedClient = &client;
  const bool written = requests.process_request(stream, last, last, [](httplib::Request& request) {
    request.path = "/";  // object managers answer at any path, and the table of handlers has this one
  });
  servedClient = nullptr;
  const bool taken = client.connection.flush() && written;
  logRequest(client, taken);
  if (!client.inStep) {
    client.connection.linger();
  }
  return taken && client.inStep && !last;
}

void HttpServer::Content::serve(int socket, const std::string& address) {
  Client client{
      {socket, tls.get(), options.limits, stop.get()}, address, {}, {}, {}, {}, {}, Asked::Nothing, true};
  if (!client.connection.open()) {
    log(address + " - - - no-tls " + milliseconds(Clock::now() - client.connection.requestBegan()));
    return;
  }
  counters.open();
  while (!stopping() && client.connection.awaitRequest() && serveRequest(client)) {
  }
  counters.close();
}

std::size_t HttpServer::Content::reapWorkers() {
  for (auto worker = workers.begin(); worker != workers.end();) {
    if (worker->done) {
      worker->thread.join();
      worker = workers.erase(worker);
    } else {
      ++worker;
    }
  }
  return workers.size();
}

void HttpServer::Content::refuseConnection(int socket) {
  counters.refuseConnection();
  const OwnedFile file(socket);
  if (tls == nullptr) {
    const std::string text =
        refusalText({503, "The server has as many connections as it takes; try again later."});
    (void)::send(socket, text.data(), text.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    ::shutdown(socket, SHUT_WR);
    std::array<char, 4096> dropped{};  // unread bytes would make the client lose the answer
    (void)::recv(socket, dropped.data(), dropped.size(), MSG_DONTWAIT);
  }
}

void HttpServer::Content::acceptAll() {
  while (const std::optional<Listener::Accepted> accepted = listener->accept(stop.get())) {
    if (reapWorkers() >= options.limits.connections) {
      if (refused++ == 0) {
        log(accepted->client + " - - - 503 0.0 ms (" + std::to_string(options.limits.connections) +
            " connections are open; further ones are refused)");
      }
      refuseConnection(accepted->socket);
      continue;
    }
    refused = 0;
    Worker& worker = workers.emplace_back();
    try {
      worker.thread = std::thread([this, &worker, connection = *accepted] {
        serve(connection.socket, connection.client);
        worker.done = true;
      });
    } catch (const std::system_error&) {  // no more threads
      workers.pop_back();
      refuseConnection(accepted->socket);
    }
  }
}

HttpServer::HttpServer(HttpServerOptions options, std::shared_ptr<Users> users)
    : m_content(std::make_unique<Content>(std::move(options), std::move(users))) {
  const HttpServerOptions& given = m_content->options;
  if (given.tlsCertificate.empty() != given.tlsKey.empty()) {
    throw std::runtime_error("TLS needs both a certificate and its key; one of them is missing");
  }
  const std::string endpoint = endpointText(given.address, given.port);
  if (!isLoopback(given.address) && given.tlsCertificate.empty()) {
    throw std::runtime_error(
        "other machines can reach " + endpoint +
        ", so passwords and data would cross the network readable; "
        "give a certificate and its key for TLS, or listen on 127.0.0.1");
  }
  if (!isLoopback(given.address) && m_content->users->anonymous()) {
    throw std::runtime_error(
        "other machines can reach " + endpoint +
        ", so passwords have to be asked for; without them, listen on "
        "127.0.0.1");
  }
  if (!given.tlsCertificate.empty()) {
    m_content->tls = serverTls(given.tlsCertificate, given.tlsKey, [this](const std::string& text) {
      m_content->log("warning: " + text);
    });
  }
  m_content->setUp();
}

HttpServer::~HttpServer() {
  stop();
}

void HttpServer::onCall(CallHandler handler) {
  m_content->callHandler = std::move(handler);
}

void HttpServer::onPage(const std::string& path, CallHandler handler, PageReaders readers) {
  m_content->pages.add(path, {std::move(handler), readers});
}

void HttpServer::start() {
  m_content->listener.emplace(m_content->options.address, m_content->options.port);
  m_content->stop.reset(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (m_content->stop.get() < 0) {
    throw std::runtime_error("there are too many open files");
  }
  // The threads are to take no signals: those are for whoever started the server, and a client that went away
  // is seen by the status of a write.
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  try {
    m_content->acceptor = std::thread([this] { m_content->acceptAll(); });
  } catch (...) {
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    throw;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

std::uint16_t HttpServer::port() const {
  return m_content->listener->port();
}

ServerCounts HttpServer::counts() const {
  return m_content->counters.counts();
}

void HttpServer::stop() {
  if (!m_content->acceptor.joinable()) {
    return;
  }
  const std::uint64_t one = 1;
  (void)!::write(m_content->stop.get(), &one, sizeof one);
  m_content->acceptor.join();
  m_content->listener.reset();  // so that nobody waits in its queue
  for (Content::Worker& worker : m_content->workers) {
    worker.thread.join();
  }
  m_content->workers.clear();
}

}  // namespace tvp::host::cimxml
