// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/WatchCommand.h"

#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <ctime>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

using Clock = std::chrono::steady_clock;

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

/** "2026-01-31T23:59:59+01:00" for the provider's local "01/31/2026 23:59:59"; other texts as they are. */
std::string isoTime(const std::string& text) {
  std::tm time{};
  const char* rest = ::strptime(text.c_str(), "%m/%d/%Y %H:%M:%S", &time);
  if (rest == nullptr || *rest != '\0') {
    return text;
  }
  time.tm_isdst = -1;
  if (std::mktime(&time) == -1) {
    return text;
  }
  std::array<char, 64> formatted{};
  const std::size_t length = std::strftime(formatted.data(), formatted.size(), "%Y-%m-%dT%H:%M:%S%z", &time);
  std::string result(formatted.data(), length);
  return result.insert(result.size() - 2, ":");
}

}  // namespace

WatchCommand::~WatchCommand() {
  if (m_wake >= 0) {
    ::close(m_wake);
  }
}

void WatchCommand::addTo(CLI::App& app) {
  CLI::App& verb = addVerb(
      app, "watch", "Print indications as they arrive, until Ctrl-C",
      "The provider looks for events every five seconds.\n"
      "With -o json every indication is one object on one line.",
      [this] { watch(); });
  verb.add_option("CLASS", m_className, "The class of the indications")->capture_default_str();
  verb.add_option("--count", m_count, "End after so many indications")->check(CLI::Range(1, 100000000));
  verb.add_option("--seconds", m_seconds, "End after so many seconds")->check(CLI::Range(1, 100000000));
}

CMPIrc WatchCommand::receive(const Instance& indication) {
  Instance shown = indication;
  Value* time = findValue(shown.properties, "eventTime");
  if (time != nullptr && !time->isNull() && time->type() == CMPI_string) {
    *time = Value::string(isoTime(time->asString()));
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_count != 0 && m_received == m_count) {
    return CMPI_RC_OK;  // more than were asked for, on the way while watching ends
  }
  ++m_received;
  try {
    tool().print(formatter().event(shown));
    tool().flush();
  } catch (const std::exception&) {
    m_outputFailed = true;
  }
  if (m_outputFailed || m_received == m_count) {
    const std::uint64_t one = 1;
    return ::write(m_wake, &one, sizeof one) == sizeof one ? CMPI_RC_OK : CMPI_RC_ERR_FAILED;
  }
  return CMPI_RC_OK;
}

void WatchCommand::subscribe() {
  IndicationFilter filter;
  filter.className = m_className;
  filter.query = "SELECT * FROM " + m_className;
  filter.path = session().pathOf(m_className);
  filter.owner = tool().options.user;
  Provider& provider = session().provider();
  session().check(provider.authorizeFilter(filter));
  session().check(provider.mustPoll(filter));
  session().check(provider.activateFilter(filter));
  session().check(provider.enableIndications());
}

void WatchCommand::unsubscribe() {
  IndicationFilter filter;
  filter.className = m_className;
  filter.path = session().pathOf(m_className);
  session().check(session().provider().deActivateFilter(filter));
  session().check(session().provider().disableIndications());
}

void WatchCommand::waitForEnd(int signals) const {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(m_seconds);
  std::array<pollfd, 2> files = {pollfd{signals, POLLIN, 0}, pollfd{m_wake, POLLIN, 0}};
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    const auto wait = m_seconds == 0
                          ? -1
                          : static_cast<int>(std::min<long long>(std::max<long long>(left + 1, 0), 1000000));
    const int ready = ::poll(files.data(), files.size(), wait);
    if (ready > 0 || (ready < 0 && errno != EINTR) || (m_seconds != 0 && Clock::now() >= end)) {
      return;
    }
  }
}

void WatchCommand::watch() {
  m_className = session().classNamed(m_className).name;
  formatter();  // made here: the provider's thread only uses it
  m_wake = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  BrokerHandlers handlers;
  handlers.onIndication = [this](const std::string& /*nameSpace*/, const Instance& indication) {
    return receive(indication);
  };
  session().setHandlers(std::move(handlers));
  {
    const SignalReader signals;  // before the provider starts its thread, which takes over what is blocked
    subscribe();
    tool().notice("watching " + m_className + "; Ctrl-C ends it");
    waitForEnd(signals.file());
    unsubscribe();
  }
  session().cleanUp();
  if (m_outputFailed) {
    throw OperationError("standard output cannot be written any more");
  }
}

}  // namespace tvp::host::tvpcim
