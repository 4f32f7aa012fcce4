// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/remote/EventPrinter.h"

#include "host/tvpcim/Failure.h"
#include "host/tvpcim/cim/EventTime.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tvp::host::tvpcim {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

void addLimitOptions(CLI::App& verb, EventLimits& limits) {
  verb.add_option("--count", limits.count, "End after so many indications")->check(CLI::Range(1, 100000000));
  verb.add_option("--seconds", limits.seconds, "End after so many seconds")->check(CLI::Range(1, 100000000));
}

EventPrinter::EventPrinter(Tool& tool, const EventLimits& limits, bool ownTimes)
    : m_tool(tool), m_limits(limits), m_ownTimes(ownTimes), m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  m_tool.formatter();  // made here: other threads only use it
}

EventPrinter::~EventPrinter() {
  ::close(m_wake);
}

CMPIrc EventPrinter::receive(const Instance& indication) {
  Instance shown = indication;
  Value* time = findValue(shown.properties, "eventTime");
  if (m_ownTimes && time != nullptr && !time->isNull() && time->type() == CMPI_string) {
    *time = Value::string(isoTime(time->asString()));
  }
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_limits.count != 0 && m_received == m_limits.count) {
    return CMPI_RC_OK;  // more than were asked for: they came with the last one
  }
  ++m_received;
  try {
    m_tool.print(m_tool.formatter().event(shown));
    m_tool.flush();
  } catch (const std::exception&) {
    m_outputFailed = true;
  }
  if (m_outputFailed || m_received == m_limits.count) {
    const std::uint64_t one = 1;
    return ::write(m_wake, &one, sizeof one) == sizeof one ? CMPI_RC_OK : CMPI_RC_ERR_FAILED;
  }
  return CMPI_RC_OK;
}

void EventPrinter::waitForEnd(int signals) const {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(m_limits.seconds);
  std::array<pollfd, 2> files = {pollfd{signals, POLLIN, 0}, pollfd{m_wake, POLLIN, 0}};
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    const auto wait = m_limits.seconds == 0
                          ? -1
                          : static_cast<int>(std::min<long long>(std::max<long long>(left + 1, 0), 1000000));
    const int ready = ::poll(files.data(), files.size(), wait);
    if (ready > 0 || (ready < 0 && errno != EINTR) || (m_limits.seconds != 0 && Clock::now() >= end)) {
      return;
    }
  }
}

void EventPrinter::check() const {
  if (m_outputFailed) {
    throw OperationError("standard output cannot be written any more");
  }
}

}  // namespace tvp::host::tvpcim
