// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/client/ServerUrl.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/remote/SubscriptionList.h"

#include <memory>
#include <stdexcept>

namespace tvp::host::tvpcim {
namespace {

struct SubscriptionOptions {
  std::string destination;
  std::string query = "SELECT * FROM TVP_CIMIndication";
  std::string name;
};

Instance recordOf(const Subscription& subscription) {
  Instance record;
  record.path.className = "Subscription";
  record.properties = {
      {"Name", Value::string(subscription.name)},
      {"Destination", Value::string(subscription.destination)},
      {"Query", Value::string(subscription.query)}};
  return record;
}

void listSubscriptions(Tool& tool) {
  Listing listing{
      "subscriptions",
      {},
      {plainColumn("NAME", "Name"), plainColumn("DESTINATION", "Destination"),
       plainColumn("QUERY", "Query")}};
  for (const Subscription& subscription : SubscriptionList(tool.session()).all()) {
    listing.instances.push_back(recordOf(subscription));
  }
  tool.print(tool.formatter().listing(listing));
}

void addSubscription(Tool& tool, const SubscriptionOptions& options) {
  Subscription subscription{options.name, options.query, options.destination};
  try {
    const auto url = cimxml::ServerUrl::parse(options.destination);
    subscription.name = options.name.empty() ? "tvpcim:" + url.authority() : options.name;
  } catch (const std::invalid_argument& error) {
    throw UsageError(std::string("--to: ") + error.what());
  }
  tool.print(tool.formatter().record(recordOf(
      SubscriptionList(tool.session()).add(std::move(subscription), SubscriptionList::Lifetime::Permanent))));
}

void removeSubscription(Tool& tool, const std::string& name) {
  SubscriptionList(tool.session()).remove(name);
  Instance record;
  record.path.className = "Subscription";
  record.properties = {{"Name", Value::string(name)}, {"Status", Value::string("removed")}};
  tool.print(tool.formatter().record(record));
}

}  // namespace

void addSubscriptionCommands(CLI::App& app, Tool& tool) {
  const auto options = std::make_shared<SubscriptionOptions>();
  const std::string help = std::string("Asks the server at --url; without it ") +
                           SubscriptionList::DEFAULT_URL + ", where 'tvpcim serve' listens.";
  CLI::App& family = addVerb(
      app, tool, "subscriptions", "List, add and remove subscriptions of a server to indications", help,
      [&tool] { listSubscriptions(tool); });
  CLI::App& add = addVerb(family, tool, "add", "Have indications sent to a listener", help, [&tool, options] {
    addSubscription(tool, *options);
  });
  add.add_option("--to", options->destination, "Where to send them: http://HOST:PORT of the listener")
      ->type_name("URL")
      ->required();
  add.add_option("--query", options->query, "Which ones, in WQL")->type_name("WQL")->capture_default_str();
  add.add_option("--name", options->name, "What to call it; default: after the listener")->type_name("NAME");
  const auto name = std::make_shared<std::string>();
  addVerb(
      family, tool, "remove", "Remove a subscription", help,
      [&tool, name] { removeSubscription(tool, *name); })
      .add_option("SUBSCRIPTION", *name, "Its name")
      ->required();
}

}  // namespace tvp::host::tvpcim
