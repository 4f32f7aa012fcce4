// SPDX-License-Identifier: Apache-2.0
#include "voltvk/engine/backing/lvm/StatisticsText.h"

#include <algorithm>
#include <charconv>
#include <system_error>

namespace voltvk {

namespace {

/** Reads a number and the character that has to follow it. @return whether both were there */
bool takeNumber(std::string_view& line, std::uint64_t& number, char follows) {
  const char* end = line.data() + line.size();
  const auto [next, error] = std::from_chars(line.data(), end, number);
  if (error != std::errc() || next == end || *next != follows) {
    return false;
  }
  line.remove_prefix(static_cast<std::size_t>(next - line.data()) + 1);
  return true;
}

bool parseLine(std::string_view line, AreaStatistics& area) {
  std::uint64_t ignored = 0;
  return takeNumber(line, area.firstSector, '+') && takeNumber(line, area.sectors, ' ') &&
         // Reads: completed, merged, sectors, milliseconds. The same follows for writes.
         takeNumber(line, area.reads, ' ') && takeNumber(line, ignored, ' ') &&
         takeNumber(line, ignored, ' ') && takeNumber(line, ignored, ' ') &&
         takeNumber(line, area.writes, ' ');
}

}  // namespace

void parseStatistics(std::string_view text, std::vector<AreaStatistics>& areas) {
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    AreaStatistics area;
    if (parseLine(text.substr(0, end), area) && area.reads + area.writes > 0) {
      areas.push_back(area);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
}

}  // namespace voltvk
