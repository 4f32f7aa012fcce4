// SPDX-License-Identifier: Apache-2.0
// Lets the built provider, or a server for it, work for a long time while everything around it changes:
// several threads make requests, other processes change the configuration and take the driver away, the log
// is created, fills up and is removed. In the end no resource has grown and the configuration is consistent.
#include "host/cimxml/client/IndicationListener.h"
#include "soak/SoakLoad.h"
#include "soak/SoakUsage.h"
#include "support/Command.h"
#include "support/ServedProvider.h"

#include <cstdio>
#include <thread>

namespace {

using namespace tvp;
using Clock = std::chrono::steady_clock;
using Words = std::vector<std::string>;

constexpr unsigned int LOAD_THREADS = 4;
constexpr std::uintmax_t FULL_LOG = 0x9FFFFF + 1;

/** The directories and the environment of a run. */
class Surroundings {
public:
  Surroundings() {
    ::setenv("VOLTVK_STATE", m_directory.file("state.db").c_str(), 1);
    ::setenv("VOLTVK_HOST_ROOT", m_directory.file("machine").c_str(), 1);
    ::setenv("TVP_TEST_ROOT", m_directory.path().c_str(), 1);
    std::filesystem::create_directories(m_directory.file("var/log"));
    for (int i = 0; i < 8; ++i) {
      run({"voltvkctl", "drive", "add", "--type", i % 2 == 0 ? "hdd" : "ssd", "--size", "1GiB"});
    }
  }

  /** Does one random thing, which may fail. */
  void change(std::mt19937& random) {
    const std::string name = "name" + std::to_string(random() % 12);
    const bool even = random() % 2 == 0;
    const std::string log = "var/log/TVP.txt";
    const std::vector<Words> commands = {
        {"tvpcim", "pool", "create", name, "--drives", std::to_string(random() % 8), "--size", "400MiB"},
        {"tvpcim", "pool", "delete", name},
        {"tvpcim", "volume", "delete", name},
        {"voltvkctl", "io", name, "--reads", "500", "--writes", "500", "--hot", "50"},
        {"voltvkctl", "policy", "run"},
        {"voltvkctl", "fault", "set", even ? "driver-absent" : "adapter-absent"},
        {"voltvkctl", "fault", "set", even ? "fail" : "throw", "createVirtualPool"},
        {"voltvkctl", "fault", "clear"},
        {"voltvkctl", "fault", "clear"}};
    const std::size_t choice = random() % (commands.size() + 3);
    if (choice < commands.size()) {
      run(commands[choice]);
    } else if (choice == commands.size()) {
      std::filesystem::remove(m_directory.file(log));
    } else {
      // Made long without writing it: a text of that size would stay in this process's memory.
      std::filesystem::resize_file(m_directory.write(log, ""), choice == commands.size() + 1 ? 0 : FULL_LOG);
    }
  }

  void calmDown() {
    run({"voltvkctl", "fault", "clear"});
    std::filesystem::remove(m_directory.file("var/log/TVP.txt"));
  }

  /** Commands that crashed or hung. */
  const Words& broken() const { return m_broken; }
  std::size_t commands() const { return m_commands; }

private:
  void run(Words words) {
    std::string line;
    for (const std::string& word : words) {
      line += word + " ";
    }
    words[0].insert(0, TVP_BINARY_DIR "/bin/");
    const test::CommandResult result = test::Command(std::move(words)).run();
    ++m_commands;
    if (result.exitStatus < 0 || result.exitStatus > 1) {
      m_broken.push_back(
          line + "ended with status " + std::to_string(result.exitStatus) + ", signal " +
          std::to_string(result.signal) + ": " + result.err);
    }
  }

  test::TemporaryDirectory m_directory;
  Words m_broken;
  std::size_t m_commands = 0;
};

/** Has the indications of a server sent to a listener. */
void subscribe(host::Operations& server, const host::cimxml::IndicationListener& listener) {
  const auto create = [&](const char* className, std::vector<host::NamedValue> properties) {
    const host::ObjectPath path{"root/interop", className, {}, ""};
    const host::PathsOutcome created = server.createInstance(path, {path, std::move(properties)});
    if (created.paths.empty()) {
      throw std::runtime_error(std::string(className) + " was not created: " + created.message);
    }
    return host::Value::reference(created.paths.front());
  };
  const auto text = [](const std::string& value) { return host::Value::string(value); };
  const host::Value filter = create(
      "CIM_IndicationFilter", {{"Name", text("soak")},
                               {"SourceNamespace", text("root/interop")},
                               {"Query", text("SELECT * FROM TVP_CIMIndication")},
                               {"QueryLanguage", text("WQL")}});
  const host::Value handler = create(
      "CIM_ListenerDestinationCIMXML",
      {{"Name", text("soak")}, {"Destination", text("http://127.0.0.1:" + std::to_string(listener.port()))}});
  create("CIM_IndicationSubscription", {{"Filter", filter}, {"Handler", handler}});
}

int runSoak(std::chrono::seconds time, unsigned int seed, bool overHttp) {
  Surroundings surroundings;
  test::ServedProvider server(TVP_BINARY_DIR "/share/tarvexpro");
  host::BrokerOptions options;
  options.graveyard = 1024;  // so that its growth does not look like the provider's
  host::Broker broker(server.schema(), options);
  std::atomic<std::uint64_t> indications{0};
  host::BrokerHandlers handlers;
  handlers.onIndication = [&](const std::string& nameSpace, const host::Instance& indication) {
    if (overHttp) {
      server.deliver(nameSpace, indication);
    } else {
      ++indications;
    }
    return CMPI_RC_OK;
  };
  broker.setHandlers(handlers);
  soak::Findings findings;
  soak::UsageHistory history;
  host::Provider provider(
      broker, std::make_shared<host::ProviderLibrary>(
                  TVP_BINARY_DIR "/lib/libtarvexProProvider.so", "tarvexProProvider"));
  const host::cimxml::IndicationListener listener(
      "127.0.0.1", 0, [&](const host::Instance&) { ++indications; });
  if (overHttp) {
    server.start(provider);
    subscribe(*server.client(), listener);
  } else {
    static_cast<void>(provider.activateFilter({}));
    static_cast<void>(provider.enableIndications());
  }

  soak::Load load(broker.schema(), findings, overHttp ? nullptr : &provider);
  std::vector<std::thread> threads;
  for (unsigned int i = 0; i < LOAD_THREADS; ++i) {
    threads.emplace_back([&, i] {
      try {
        load.run(overHttp ? *server.client() : provider, seed + i);
      } catch (const host::cimxml::ServerError& error) {
        findings.add(error.what());
      }
    });
  }
  std::mt19937 random(seed);
  // The listener looks for events every five seconds only, and the driver may be absent at that moment.
  const auto enough = [&] { return history.isConclusive() && indications > 0; };
  // On a busy machine caches may still be filling up, which looks like growth: only what leaks goes on
  // growing.
  const auto decided = [&] { return enough() && history.growth().empty(); };
  const auto end = Clock::now() + time;
  const auto lastEnd = end + std::chrono::minutes(4);  // on a machine that is busy with other things
  while ((Clock::now() < end || (!decided() && Clock::now() < lastEnd)) && findings.all().empty()) {
    surroundings.change(random);
    history.add(load.done());
  }
  load.stop();
  for (std::thread& thread : threads) {
    thread.join();
  }
  surroundings.calmDown();
  load.checkCapacities(provider);
  server.stop();
  static_cast<void>(provider.cleanup(true));

  for (const auto& text : surroundings.broken()) {
    findings.add(text);
  }
  broker.reportLeaks();
  for (const host::Breach& breach : broker.breaches()) {
    findings.add(breach.text);
  }
  for (const auto& text : history.growth()) {
    findings.add(text);
  }
  std::printf(
      "requests     %llu, of them refused %llu\n", static_cast<unsigned long long>(load.done()),
      static_cast<unsigned long long>(load.refused()));
  std::printf(
      "commands     %zu by other processes\nindications  %llu\n", surroundings.commands(),
      static_cast<unsigned long long>(indications.load()));
  std::printf("usage        %s\n", history.summary().c_str());
  if (!enough()) {
    findings.add("too little happened for a verdict");
  }
  for (const std::string& finding : findings.all()) {
    std::printf("FINDING      %s\n", finding.c_str());
  }
  std::printf("%s (seed %u)\n", findings.all().empty() ? "nothing grew, everything adds up" : "failed", seed);
  return findings.all().empty() ? 0 : 1;
}

}  // namespace

int main(int count, char** arguments) {
  const int seconds = count > 1 ? std::atoi(arguments[1]) : 0;
  if (seconds <= 0) {
    std::fprintf(stderr, "usage: soak SECONDS [SEED [server]]\n");
    return 2;
  }
  try {
    return runSoak(
        std::chrono::seconds(seconds), count > 2 ? static_cast<unsigned int>(std::atoi(arguments[2])) : 1U,
        count > 3 && std::string("server") == arguments[3]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "soak: %s\n", error.what());
    return 1;
  }
}
