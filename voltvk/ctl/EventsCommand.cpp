// SPDX-License-Identifier: Apache-2.0
#include "voltvk/ctl/Commands.h"
#include "voltvk/ctl/IsoTime.h"
#include "voltvk/engine/contract/State.h"
#include "voltvk/engine/state/EventJournal.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>

namespace voltvk::ctl {

namespace {

std::string hexadecimal(std::uint32_t code) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%X", code);
  return text.data();
}

const char* typeName(std::uint32_t type) {
  return type == TVK_EVENT_ERROR ? "error" : type == TVK_EVENT_WARNING ? "warning" : "information";
}

}  // namespace

void addEventsCommand(CLI::App& app, Context& context) {
  auto count = std::make_shared<std::uint32_t>(20);
  CLI::App* events = app.add_subcommand("events", "Show the newest events, oldest first");
  events->add_option("--count", *count, "How many events (default 20)")->check(CLI::Range(1, 4096));
  events->callback([count, &context] {
    Json list = Json::array();
    context.state()->read([&](Connection& connection) {
      for (const VolEvent& event : EventJournal(connection).latest(*count)) {
        list.push_back(
            {{"id", event.id},
             {"time", isoTime(event.time)},
             {"code", event.code},
             {"hex", hexadecimal(event.code)},
             {"type", typeName(event.type)},
             {"description", event.description},
             {"actionId", event.actionId}});
      }
    });
    context.output.writeList(
        list,
        {{"id", "ID", true},
         {"time", "TIME"},
         {"hex", "CODE"},
         {"type", "TYPE"},
         {"description", "DESCRIPTION"}},
        "No events.");
  });
}

}  // namespace voltvk::ctl
