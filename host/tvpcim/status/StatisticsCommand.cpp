// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/Commands.h"
#include "host/tvpcim/Failure.h"
#include "host/tvpcim/output/Text.h"
#include "host/tvpcim/remote/SignalReader.h"
#include "host/tvpcim/status/StatisticsRates.h"
#include "host/tvpcim/storage/StorageTool.h"
#include "host/tvpcim/storage/StorageVerbs.h"
#include "terminal/Width.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>

#include <poll.h>

namespace tvp::host::tvpcim {
namespace {

using Clock = std::chrono::steady_clock;

struct StatisticsOptions {
  std::string volume;
  double seconds = 0;       ///< 0: the counters, once
  std::uint64_t count = 0;  ///< 0: until a signal
};

/** The present time. @param format as that of strftime */
std::string timeText(const char* format, bool local) {
  const std::time_t now = std::time(nullptr);
  std::tm parts{};
  local ? ::localtime_r(&now, &parts) : ::gmtime_r(&now, &parts);
  std::ostringstream text;
  text << std::put_time(&parts, format);
  return text.str();
}

/** How many chunks were moved, which only the events of this machine's storage library say. */
class MovedChunks {
public:
  explicit MovedChunks(std::uint32_t volume) : m_volume(volume) { take(); }

  /** Since the last call; nothing when the library cannot be asked now, or could not before. */
  std::optional<std::uint64_t> take() {
    constexpr std::uint32_t MOVED = 0x40F;
    constexpr const char* MOST_EVENTS = "1000";  // more than happen in between
    const auto events = m_library.ask({"events", "--count", MOST_EVENTS});
    if (!events || !events->is_array()) {
      return std::nullopt;
    }
    try {
      std::uint64_t moved = 0;
      std::int64_t last = m_last.value_or(-1);
      for (const StorageTool::Json& event : *events) {
        const std::int64_t id = event.at("id");
        last = std::max(last, id);
        if (m_last && id > *m_last && event.at("code") == MOVED && event.at("actionId") == m_volume) {
          moved += chunksIn(event.at("description"));
        }
      }
      const bool isFirst = !m_last.has_value();
      m_last = last;
      return isFirst ? std::nullopt : std::optional<std::uint64_t>(moved);
    } catch (const StorageTool::Json::exception&) {  // of a voltvkctl of another version
      return std::nullopt;
    }
  }

private:
  /** "Volume [data]: [16] chunks moved to the SSD pool" */
  static std::uint64_t chunksIn(const std::string& description) {
    const std::size_t number = description.find_first_of("0123456789", description.rfind(": "));
    return number == std::string::npos ? 0 : std::strtoull(description.c_str() + number, nullptr, 10);
  }

  const std::uint32_t m_volume;
  StorageTool m_library;
  std::optional<std::int64_t> m_last;  ///< event that was there; nothing until the library was asked
};

/** Prints a line for each interval. */
class StatisticsWatch {
public:
  StatisticsWatch(Tool& tool, const StatisticsOptions& options)
      : m_tool(tool), m_options(options), m_interval(std::chrono::duration_cast<Clock::duration>(
                                              std::chrono::duration<double>(options.seconds))),
        m_terminal(terminal::Terminal::ofStandardOutput()) {
    if (tool.options.wide) {
      m_terminal.columns = terminal::Terminal::UNLIMITED;
    }
  }

  void run() {
    const SignalReader signals;  // before there are threads, which inherit what is blocked
    m_number = m_tool.inventory().resolve(Volume::KIND, m_options.volume);
    std::optional<MovedChunks> moved;
    if (!m_tool.session().isRemote()) {
      moved.emplace(m_number);
    }
    StatisticsSample before = sample();
    Clock::time_point last = Clock::now();
    const auto volume = m_tool.inventory().find<Volume>(m_number);
    m_name = volume ? volume->name : m_options.volume;
    for (std::uint64_t line = 0; m_options.count == 0 || line < m_options.count; ++line) {
      if (!waitUntil(last + m_interval, signals.file())) {
        return;
      }
      const std::optional<std::uint64_t> chunks = moved ? moved->take() : std::nullopt;
      const StatisticsSample now = sample();
      const Clock::time_point taken = Clock::now();
      auto rates = StatisticsRates::between(before, now, std::chrono::duration<double>(taken - last).count());
      rates.moved = chunks;
      print(line, rates);
      before = now;
      last = taken;
    }
  }

private:
  StatisticsSample sample() {
    try {
      return StatisticsSample(callService(m_tool, "GetVirtualVolumeStats", Volume::KIND, m_number).record);
    } catch (const OperationError&) {
      if (m_name.empty() || m_tool.inventory().identity() == nullptr ||
          m_tool.inventory().exists(Volume::KIND, m_number)) {
        throw;
      }
      throw OperationError(
          "volume " + text::quoted(m_name) + " is gone: it was deleted while it was watched");
    }
  }

  /** @return false when a signal came first */
  static bool waitUntil(Clock::time_point end, int signals) {
    pollfd file{signals, POLLIN, 0};
    for (;;) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
      const int ready = left <= 0 ? 0 : ::poll(&file, 1, static_cast<int>(left));
      if (ready >= 0 || errno != EINTR) {
        return ready == 0;
      }
    }
  }

  void print(std::uint64_t line, const StatisticsRates& rates) {
    if (m_tool.formatter().forPeople()) {
      // A screen has the titles, and a last row for the cursor.
      if (line == 0 || (m_terminal.rows > 2 && line % (m_terminal.rows - 2) == 0)) {
        printLine(StatisticsRates::header());
      }
      printLine(rates.line(timeText("%H:%M:%S", true)));
    } else {
      m_tool.print(m_tool.formatter().event(rates.record(timeText("%Y-%m-%dT%H:%M:%SZ", false), m_name)));
    }
    m_tool.flush();
  }

  void printLine(const std::string& line) {
    m_tool.print(terminal::cutToWidth(line, m_terminal.columns) + "\n");
  }

  Tool& m_tool;
  const StatisticsOptions& m_options;
  const Clock::duration m_interval;
  terminal::Terminal m_terminal;
  std::uint32_t m_number = 0;
  std::string m_name;
};

void showStatistics(Tool& tool, const StatisticsOptions& options) {
  if (options.seconds > 0) {
    StatisticsWatch(tool, options).run();
  } else {
    const std::uint32_t number = tool.inventory().resolve(Volume::KIND, options.volume);
    tool.print(
        tool.formatter().record(callService(tool, "GetVirtualVolumeStats", Volume::KIND, number).record));
  }
}

}  // namespace

void addStatisticsCommand(CLI::App& app, Tool& tool) {
  constexpr double SHORTEST = 0.1;
  constexpr double LONGEST = 86400;
  const auto options = std::make_shared<StatisticsOptions>();
  CLI::App& verb = addVerb(
      *app.get_subcommand("volume"), tool, "stats", "Show the statistics of a volume, or watch them",
      "With --interval, a line for each interval until Ctrl-C: what happened in it, per second.\n"
      "With -o json every line is one object. MOVED is not known of a server.",
      [&tool, options] { showStatistics(tool, *options); });
  verb.add_option("VOLUME", options->volume, "Name or identifier of the volume")->required();
  CLI::Option* interval =
      verb.add_option("--interval", options->seconds, "Watch, with so many seconds a line")
          ->type_name("SECONDS")
          ->check(CLI::Range(SHORTEST, LONGEST))
          ->check([](const std::string& text) {  // "nan" is in every range
            const bool isPlain = text.find_first_not_of("0123456789.") == std::string::npos;
            return isPlain ? "" : text::quoted(text) + " is not a number of seconds";
          });
  verb.add_option("--count", options->count, "End after so many lines")
      ->type_name("N")
      ->check(CLI::Range(1, 100000000))
      ->needs(interval);
}

}  // namespace tvp::host::tvpcim
