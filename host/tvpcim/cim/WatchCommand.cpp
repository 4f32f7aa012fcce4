// SPDX-License-Identifier: Apache-2.0
#include "host/schema/Names.h"
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/EventTime.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

using Clock = std::chrono::steady_clock;

/** How long the provider may take to clean up. Its listener sleeps for seconds at a time, which nobody wants
 * to wait for, except who looks for breaches of the rules: some are only seen at the end. */
std::chrono::milliseconds cleanUpLimit() {
  return std::getenv("TVPCIM_STRICT") == nullptr ? std::chrono::milliseconds(300) : std::chrono::minutes(1);
}

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

/** Lets SIGINT and SIGTERM be read from a file instead of ending the process, while the object lives. */
class SignalReader {
public:
  SignalReader() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGPIPE);  // a reader that went away is an error of the output, not the end
    pthread_sigmask(SIG_BLOCK, &signals, &m_before);
    sigdelset(&signals, SIGPIPE);
    m_file = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    if (m_file < 0) {
      throw OperationError(std::string("signals cannot be waited for: ") + std::strerror(errno));
    }
  }
  ~SignalReader() {
    signalfd_siginfo taken{};
    while (::read(m_file, &taken, sizeof taken) > 0) {
    }
    ::close(m_file);
    // A second Ctrl-C ends the process at once, should the provider's clean-up take too long.
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }
  SignalReader(const SignalReader&) = delete;
  SignalReader& operator=(const SignalReader&) = delete;

  int file() const { return m_file; }

private:
  sigset_t m_before{};
  int m_file = -1;
};

struct WatchOptions {
  std::string className = "TVP_CIMIndication";
  std::uint64_t count = 0;    ///< end after so many; 0: never
  std::uint64_t seconds = 0;  ///< end after this time; 0: never
};

/**
 * Prints the indications of the provider as they arrive. Subscribes as an object manager does and, when it is
 * told to end, takes the subscription back and cleans the provider up.
 */
class Watcher : public std::enable_shared_from_this<Watcher> {
public:
  Watcher(Tool& tool, const WatchOptions& options)
      : m_tool(tool), m_options(options),
        m_className(indicationClass(tool.session(), options.className).name),
        m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    m_tool.formatter();  // made here: the provider's thread only uses it
  }
  ~Watcher() { ::close(m_wake); }
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  void watch() {
    BrokerHandlers handlers;
    // Keeps the watcher alive: the provider's thread may outlive the clean-up.
    handlers.onIndication =
        [self = shared_from_this()](const std::string& /*nameSpace*/, const Instance& indication) {
          return self->receive(indication);
        };
    m_tool.session().setHandlers(std::move(handlers));
    {
      const SignalReader signals;  // before the provider starts its thread, which inherits what is blocked
      subscribe();
      m_tool.notice("watching " + m_className + "; Ctrl-C ends it");
      waitForEnd(signals.file());
      unsubscribe();
    }
    m_tool.session().cleanUp(cleanUpLimit());
    if (m_outputFailed) {
      throw OperationError("standard output cannot be written any more");
    }
  }

private:
  /** Prints one indication. Called on the provider's thread. */
  CMPIrc receive(const Instance& indication) {
    Instance shown = indication;
    Value* time = findValue(shown.properties, "eventTime");
    if (time != nullptr && !time->isNull() && time->type() == CMPI_string) {
      *time = Value::string(isoTime(time->asString()));
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_options.count != 0 && m_received == m_options.count) {
      return CMPI_RC_OK;  // more than were asked for: they came with the last one
    }
    ++m_received;
    try {
      m_tool.print(m_tool.formatter().event(shown));
      m_tool.flush();
    } catch (const std::exception&) {
      m_outputFailed = true;
    }
    if (m_outputFailed || m_received == m_options.count) {
      const std::uint64_t one = 1;
      return ::write(m_wake, &one, sizeof one) == sizeof one ? CMPI_RC_OK : CMPI_RC_ERR_FAILED;
    }
    return CMPI_RC_OK;
  }

  void subscribe() {
    IndicationFilter filter;
    filter.className = m_className;
    filter.query = "SELECT * FROM " + m_className;
    filter.path = m_tool.session().pathOf(m_className);
    filter.owner = m_tool.options.user;
    Provider& provider = m_tool.session().provider();
    m_tool.session().check(provider.authorizeFilter(filter));
    m_tool.session().check(provider.mustPoll(filter));
    m_tool.session().check(provider.activateFilter(filter));
    m_tool.session().check(provider.enableIndications());
  }

  void unsubscribe() {
    IndicationFilter filter;
    filter.className = m_className;
    filter.path = m_tool.session().pathOf(m_className);
    m_tool.session().check(m_tool.session().provider().deActivateFilter(filter));
    m_tool.session().check(m_tool.session().provider().disableIndications());
  }

  /** Waits for a signal, the time or the last of the indications. */
  void waitForEnd(int signals) const {
    const Clock::time_point end = Clock::now() + std::chrono::seconds(m_options.seconds);
    std::array<pollfd, 2> files = {pollfd{signals, POLLIN, 0}, pollfd{m_wake, POLLIN, 0}};
    for (;;) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
      const auto wait =
          m_options.seconds == 0
              ? -1
              : static_cast<int>(std::min<long long>(std::max<long long>(left + 1, 0), 1000000));
      const int ready = ::poll(files.data(), files.size(), wait);
      if (ready > 0 || (ready < 0 && errno != EINTR) || (m_options.seconds != 0 && Clock::now() >= end)) {
        return;
      }
    }
  }

  Tool& m_tool;
  const WatchOptions& m_options;
  const std::string m_className;
  const int m_wake;    ///< an eventfd that the provider's thread raises
  std::mutex m_mutex;  ///< guards standard output and m_received
  std::uint64_t m_received = 0;
  std::atomic<bool> m_outputFailed{false};
};

}  // namespace

void addWatchCommand(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<WatchOptions>();
  CLI::App& verb = addVerb(
      app, tool, "watch", "Print indications as they arrive, until Ctrl-C",
      "The provider looks for events every five seconds.\n"
      "With -o json every indication is one object on one line.",
      [&tool, options] { std::make_shared<Watcher>(tool, *options)->watch(); });
  verb.add_option("CLASS", options->className, "The class of the indications")->capture_default_str();
  verb.add_option("--count", options->count, "End after so many indications")
      ->check(CLI::Range(1, 100000000));
  verb.add_option("--seconds", options->seconds, "End after so many seconds")
      ->check(CLI::Range(1, 100000000));
}

}  // namespace tvp::host::tvpcim
