// SPDX-License-Identifier: Apache-2.0
#include "host/cimxml/client/IndicationListener.h"
#include "host/cimxml/client/ServerUrl.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/remote/EventPrinter.h"
#include "host/tvpcim/remote/SignalReader.h"

#include <limits>
#include <memory>
#include <stdexcept>

namespace tvp::host::tvpcim {
namespace {

struct ListenOptions {
  std::uint16_t port = 0;
  std::string address = "127.0.0.1";
  EventLimits limits;
};

void listen(Tool& tool, const ListenOptions& options) {
  cimxml::ServerUrl url;
  url.host = options.address;
  EventPrinter printer(tool, options.limits, url.isLoopback());
  const SignalReader signals;  // before there are threads, which inherit what is blocked
  const cimxml::IndicationListener listener(options.address, options.port, [&](const Instance& indication) {
    if (printer.receive(indication) != CMPI_RC_OK) {
      throw std::runtime_error("the indication was not printed");
    }
  });
  url.port = listener.port();
  tool.notice("listening on " + url.text() + "; Ctrl-C ends it");
  printer.waitForEnd(signals.file());
  printer.check();
}

}  // namespace

void addListenCommand(CLI::App& app, Tool& tool) {
  const auto options = std::make_shared<ListenOptions>();
  CLI::App& verb = addVerb(
      app, tool, "listen", "Print the indications that servers send here, until Ctrl-C",
      "Have them sent with 'tvpcim subscriptions add --to http://HOST:PORT'.\n"
      "Whoever reaches the port can send something: the address decides who does.",
      [&tool, options] { listen(tool, *options); });
  verb.add_option("PORT", options->port, "The port; 0 chooses a free one")
      ->required()
      ->check(CLI::Range(0, static_cast<int>(std::numeric_limits<std::uint16_t>::max())));
  verb.add_option("--address", options->address, "The address to listen on; 0.0.0.0 and :: are all of them")
      ->type_name("ADDRESS")
      ->capture_default_str();
  addLimitOptions(verb, options->limits);
}

}  // namespace tvp::host::tvpcim
