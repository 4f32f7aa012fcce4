// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/indications/Subscriptions.h"
#include "host/cimxml/server/CimService.h"
#include "host/cimxml/server/HttpServer.h"
#include "host/cimxml/server/Listener.h"
#include "host/cimxml/server/OpenUsers.h"
#include "host/cimxml/server/PamUsers.h"
#include "host/schema/MofReader.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/InstalledFiles.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/remote/LocalServer.h"
#include "host/tvpcim/remote/ProviderSubscription.h"
#include "host/tvpcim/remote/RecentEvents.h"
#include "host/tvpcim/remote/ServedPages.h"
#include "host/tvpcim/remote/SignalReader.h"
#include "text/Quote.h"
#include "text/Trim.h"

#include <systemd/sd-daemon.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>

#include <poll.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

namespace fs = std::filesystem;

constexpr std::uint16_t PORT = 5988;
constexpr std::uint16_t TLS_PORT = 5989;

struct ServeOptions {
  std::string listen;  ///< ADDRESS:PORT; empty: the default
  std::string certificate;
  std::string key;
  std::string authentication;
  bool administratorsOnly = false;
  std::string subscriptions;  ///< file; empty: the default
  std::optional<cimxml::PageReaders> metrics;
  cimxml::HttpLimits limits;
};

/** Splits "ADDRESS:PORT", "[ADDRESS]:PORT" and an address alone. @throws UsageError */
void readEndpoint(const std::string& text, cimxml::HttpServerOptions& server) {
  const std::size_t colon = text.rfind(':');
  const bool bracketed = !text.empty() && text.front() == '[';
  const bool hasPort =
      colon != std::string::npos && (bracketed ? text.rfind(']') + 1 == colon : text.find(':') == colon);
  std::string address = hasPort ? text.substr(0, colon) : text;
  if (bracketed && address.back() == ']') {
    address = address.substr(1, address.size() - 2);
  }
  server.address = address == "localhost" ? "127.0.0.1" : address;
  if (hasPort) {
    const std::string port = text.substr(colon + 1);
    constexpr std::size_t MOST_DIGITS = 5;
    constexpr unsigned long HIGHEST = 65535;
    if (port.empty() || port.size() > MOST_DIGITS ||
        port.find_first_not_of("0123456789") != std::string::npos || std::stoul(port) > HIGHEST) {
      throw UsageError("--listen: " + text::quoted(port) + " is not a port, 0 to 65535");
    }
    server.port = static_cast<std::uint16_t>(std::stoul(port));
  }
}

/** The file, in a directory that exists. @throws OperationError */
std::string subscriptionsFile(const std::string& given) {
  if (!given.empty()) {
    return given;
  }
  const fs::path file = defaultSubscriptions();
  std::error_code error;
  fs::create_directories(file.parent_path().parent_path(), error);
  if (fs::create_directory(file.parent_path(), error)) {
    fs::permissions(file.parent_path(), fs::perms::owner_all, error);
  }
  if (error) {
    throw OperationError(
        "the directory " + text::quoted(file.parent_path().string()) + " cannot be created: " +
        error.message() + "; name a file for the subscriptions with --subscriptions");
  }
  return file;
}

void logLine(const std::string& line) {
  std::fprintf(stderr, "%s\n", printable(line).c_str());
}

/** Stops a server at the end of a block, also one that an exception ends: what answers use goes after it. */
class EndOfAnswers {
public:
  explicit EndOfAnswers(cimxml::HttpServer& server) : m_server(server) {}
  ~EndOfAnswers() { m_server.stop(); }
  EndOfAnswers(const EndOfAnswers&) = delete;
  EndOfAnswers& operator=(const EndOfAnswers&) = delete;

private:
  cimxml::HttpServer& m_server;
};

/** Answers clients over HTTP with the provider of this machine, until a signal. */
class Serving {
public:
  Serving(Tool& tool, const ServeOptions& options)
      : m_tool(tool), m_options(options), m_http(httpOptions(), users()),
        m_interop(MofReader::readFile(installedInteropSchema())) {}

  void run() {
    const SignalReader signals;  // before there are threads, which inherit what is blocked
    Session& session = m_tool.session();
    openSubscriptions();
    Provider& provider = session.provider();
    m_subscriptions->attach(provider);
    // The session's own, which lives longer.
    const std::shared_ptr<const Schema> schema(std::shared_ptr<const Schema>(), &session.schema());
    cimxml::CimServiceOptions options;
    options.nameSpace = m_tool.options.nameSpace;
    cimxml::CimService service(provider, schema, m_interop, *m_subscriptions, options);
    subscribePage();
    ServedPages pages(m_tool, *m_events);
    pages.offer(m_http, m_options.metrics);
    const EndOfAnswers end(m_http);
    m_http.onCall([&service](const cimxml::HttpCall& call) { return service.answer(call); });
    m_http.start();
    announce();
    pollfd file{signals.file(), POLLIN, 0};
    while (::poll(&file, 1, -1) < 0 && errno == EINTR) {
    }
    ::sd_notify(0, "STOPPING=1");
    m_http.stop();
    m_subscriptions->stop();
    session.cleanUp(cleanUpLimit());
  }

private:
  bool asksForPasswords() const {
    return m_options.authentication.empty() ? ::geteuid() == 0 : m_options.authentication == "pam";
  }

  std::shared_ptr<cimxml::Users> users() const {
    std::shared_ptr<cimxml::Users> users;
    if (asksForPasswords()) {
      users = std::make_shared<cimxml::PamUsers>("tvpcim");
    } else {
      users = std::make_shared<cimxml::OpenUsers>(m_tool.options.user);
    }
    return m_options.administratorsOnly ? std::make_shared<cimxml::AdministratorsOnly>(users) : users;
  }

  cimxml::HttpServerOptions httpOptions() {
    cimxml::HttpServerOptions server;
    server.tlsCertificate = m_options.certificate;
    server.tlsKey = m_options.key;
    server.port = m_options.certificate.empty() ? PORT : TLS_PORT;
    readEndpoint(m_options.listen.empty() ? server.address : m_options.listen, server);
    server.limits = m_options.limits;
    server.log = logLine;
    m_address = server.address;
    return server;
  }

  void openSubscriptions() {
    cimxml::Subscriptions::Options options;
    options.file = subscriptionsFile(m_options.subscriptions);
    options.nameSpace = m_tool.options.nameSpace;
    options.log = logLine;
    m_subscriptions = std::make_shared<cimxml::Subscriptions>(m_interop, std::move(options));
    BrokerHandlers handlers;
    // Keeps the subscriptions alive: the provider's thread may outlive the clean-up.
    // Why a request was refused, which clients are not told.
    handlers.onLog = [](int /*severity*/, const std::string& /*id*/, const std::string& reason) {
      logLine("tvpcim: reason: " + std::string(text::trimmed(reason)));
    };
    handlers.onIndication = [subscriptions = m_subscriptions,
                             events = m_events](const std::string& nameSpace, const Instance& indication) {
      subscriptions->deliver(nameSpace, indication);
      events->add(indication);
      return CMPI_RC_OK;
    };
    m_tool.session().setHandlers(std::move(handlers));
  }

  /** Has the provider's indications come for the page, whoever else subscribes. */
  void subscribePage() {
    try {
      ProviderSubscription(m_tool.session(), ProviderSubscription::EVENTS, m_tool.options.user).begin();
    } catch (const OperationError& error) {
      m_tool.notice(std::string("the page will not show events: ") + error.what());
    }
  }

  void announce() const {
    if (!asksForPasswords()) {
      m_tool.notice(
          "nobody is asked for a password: every user of this machine is served as " + m_tool.options.user);
    }
    const std::string scheme = m_options.certificate.empty() ? "http://" : "https://";
    m_tool.print("Listening on " + scheme + cimxml::endpointText(m_address, m_http.port()) + "\n");
    m_tool.flush();
    ::sd_notify(0, "READY=1");
  }

  Tool& m_tool;
  const ServeOptions& m_options;
  std::string m_address;
  cimxml::HttpServer m_http;
  const std::shared_ptr<const Schema> m_interop;
  std::shared_ptr<cimxml::Subscriptions> m_subscriptions;
  const std::shared_ptr<RecentEvents> m_events = std::make_shared<RecentEvents>();
};

void serve(Tool& tool, const ServeOptions& options) {
  if (tool.session().isRemote()) {
    throw UsageError("the provider of this machine is served; leave --url out");
  }
  Serving(tool, options).run();
}

}  // namespace

void addServeCommand(CLI::App& app, Tool& tool) {
  const auto options = std::make_shared<ServeOptions>();
  CLI::App& verb = addVerb(
      app, tool, "serve", "Answer WBEM clients over HTTP with this machine's provider, until Ctrl-C",
      "An address that other machines reach needs TLS and passwords.\n"
      "Without passwords, every client is the user of --user.\n"
      "Standard error gets a line for each request: client, user, operation, class, status, time.\n"
      "A browser that asks for the address gets a page which shows the storage.",
      [&tool, options] { serve(tool, *options); });
  verb.add_option(
          "--listen", options->listen,
          "Where clients reach the server; default: 127.0.0.1:5988, with TLS 127.0.0.1:5989")
      ->type_name("ADDRESS:PORT");
  CLI::Option* certificate =
      verb.add_option("--tls-cert", options->certificate, "The certificate for TLS, in PEM")
          ->type_name("FILE");
  CLI::Option* key = verb.add_option("--tls-key", options->key, "The private key of the certificate, in PEM")
                         ->type_name("FILE");
  certificate->needs(key);
  key->needs(certificate);
  verb.add_option("--auth", options->authentication, "Ask for passwords, or do not; default: pam for root")
      ->check(CLI::IsMember({"pam", "none"}));
  verb.add_flag(
      "--admin-only", options->administratorsOnly, "Answer only users whose primary group is root's");
  verb.add_option(
          "--subscriptions", options->subscriptions,
          "Where subscriptions are kept; default: /var/lib/tvpcim/subscriptions.json for root")
      ->type_name("FILE");
  verb.add_option_function<std::string>(
          "--metrics",
          [options](const std::string& readers) {
            options->metrics =
                readers == "all" ? cimxml::PageReaders::Everyone : cimxml::PageReaders::SameMachine;
          },
          "Offer metrics at /metrics: without a password to programs of this machine, or to all")
      ->type_name("READERS")
      ->check(CLI::IsMember({"local", "all"}));
  constexpr std::size_t MOST_CONNECTIONS = 10000;
  verb.add_option("--connections", options->limits.connections, "The most connections at a time")
      ->type_name("N")
      ->capture_default_str()
      ->check(CLI::Range(std::size_t{1}, MOST_CONNECTIONS));
  verb.add_option_function<unsigned>(
          "--timeout",
          [options](unsigned seconds) { options->limits.request = std::chrono::seconds(seconds); },
          "The most seconds that a client may take to send a request")
      ->type_name("SECONDS")
      ->default_str(std::to_string(options->limits.request.count()))
      ->check(CLI::Range(1, 3600));
}

}  // namespace tvp::host::tvpcim
