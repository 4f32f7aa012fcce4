// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/client/IndicationListener.h"
#include "host/schema/Names.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/remote/Connection.h"
#include "host/tvpcim/remote/EventPrinter.h"
#include "host/tvpcim/remote/ProviderSubscription.h"
#include "host/tvpcim/remote/SignalReader.h"
#include "host/tvpcim/remote/SubscriptionList.h"

#include <chrono>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <utility>

#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

/** The class by that name. @throws UsageError unless it is one of indications */
const SchemaClass& indicationClass(Session& session, const std::string& name) {
  const SchemaClass& found = session.classNamed(name);
  const std::string ending = "Indication";
  const bool endsSo = found.name.size() > ending.size() &&
                      found.name.compare(found.name.size() - ending.size(), ending.size(), ending) == 0;
  // Of the classes of the standard schema, only the names are known.
  if (findValue(found.qualifiers, ending) == nullptr && !(found.external && endsSo)) {
    throw UsageError(
        statusName(CMPI_RC_ERR_INVALID_CLASS) + ": " + found.name +
        " is not a class of indications; without a class, all indications of the provider are watched");
  }
  return found;
}

/** Prints the indications of the provider of this machine. */
class ProviderWatch {
public:
  ProviderWatch(Tool& tool, const std::string& className, std::shared_ptr<EventPrinter> printer)
      : m_session(tool.session()), m_printer(std::move(printer)),
        m_subscription(m_session, className, tool.options.user) {
    BrokerHandlers handlers;
    // Keeps the printer alive: the provider's thread may outlive the clean-up.
    handlers.onIndication = [kept = m_printer](const std::string& /*nameSpace*/, const Instance& indication) {
      return kept->receive(indication);
    };
    m_session.setHandlers(std::move(handlers));
  }

  void begin() { m_subscription.begin(); }
  void end() { m_subscription.end(); }
  void cleanUp() { m_session.cleanUp(cleanUpLimit()); }

private:
  Session& m_session;
  const std::shared_ptr<EventPrinter> m_printer;
  ProviderSubscription m_subscription;
};

/** Prints the indications of a server: it sends them to a listener of this process, for a subscription that
 * lasts as long as the command. */
class ServerWatch {
public:
  ServerWatch(Tool& tool, const std::string& className, std::shared_ptr<EventPrinter> printer)
      : m_host(parseUrl(tool.options.url).host), m_query("SELECT * FROM " + className),
        m_subscriptions(tool.session()), m_printer(std::move(printer)) {}

  void begin() {
    cimxml::ServerUrl destination;
    destination.host = cimxml::addressTowards(m_host);
    m_listener = std::make_unique<cimxml::IndicationListener>(
        destination.host, 0, [printer = m_printer.get()](const Instance& indication) {
          if (printer->receive(indication) != CMPI_RC_OK) {
            throw std::runtime_error("the indication was not printed");
          }
        });
    destination.port = m_listener->port();
    // Unique among all who watch the server.
    m_name = "tvpcim:watch:" + destination.authority() + ":" + std::to_string(::getpid());
    m_subscriptions.add({m_name, m_query, destination.text() + "/"}, SubscriptionList::Lifetime::Transient);
  }
  void end() { m_subscriptions.remove(m_name); }
  void cleanUp() { m_listener.reset(); }

private:
  const std::string m_host;
  const std::string m_query;
  SubscriptionList m_subscriptions;
  const std::shared_ptr<EventPrinter> m_printer;
  std::unique_ptr<cimxml::IndicationListener> m_listener;
  std::string m_name;
};

struct WatchOptions {
  std::string className = ProviderSubscription::EVENTS;
  EventLimits limits;
};

template <class Watch>
void watch(Tool& tool, const WatchOptions& options, bool ownTimes) {
  const std::string className = indicationClass(tool.session(), options.className).name;
  const auto printer = std::make_shared<EventPrinter>(tool, options.limits, ownTimes);
  Watch source(tool, className, printer);
  {
    const SignalReader signals;  // before there are threads, which inherit what is blocked
    source.begin();
    tool.notice("watching " + className + "; Ctrl-C ends it");
    printer->waitForEnd(signals.file());
    source.end();
  }
  source.cleanUp();
  printer->check();
}

void watchAny(Tool& tool, const WatchOptions& options) {
  if (tool.session().isRemote()) {
    watch<ServerWatch>(tool, options, parseUrl(tool.options.url).isLoopback());
  } else {
    watch<ProviderWatch>(tool, options, true);
  }
}

}  // namespace

void addWatchCommand(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<WatchOptions>();
  CLI::App& verb = addVerb(
      app, tool, "watch", "Print indications as they arrive, until Ctrl-C",
      "The provider looks for events every five seconds.\n"
      "With -o json every indication is one object on one line.\n"
      "With --url the server sends them to this command, which must be reachable from there.",
      [&tool, options] { watchAny(tool, *options); });
  verb.add_option("CLASS", options->className, "The class of the indications")->capture_default_str();
  addLimitOptions(verb, options->limits);
}

}  // namespace tvp::host::tvpcim
