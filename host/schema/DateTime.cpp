// SPDX-License-Identifier: Apache-2.0
#include "host/schema/DateTime.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <ctime>

namespace tvp::host {
namespace {

constexpr std::uint64_t MICROSECONDS = 1000000;
constexpr std::int64_t SECONDS_PER_DAY = 86400;
/** The positions of the digits in a date-time; the sign or colon before the zone says which kind it is. */
constexpr char FORM[] = "00000000000000.000000?000";
constexpr std::size_t ZONE = 21;

bool hasForm(const std::string& text) {
  if (text.size() != sizeof FORM - 1) {
    return false;
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool digit = text[i] >= '0' && text[i] <= '9';
    if (FORM[i] == '0' ? !digit : FORM[i] == '.' && text[i] != '.') {
      return false;
    }
  }
  return text[ZONE] == '+' || text[ZONE] == '-' || text[ZONE] == ':';
}

int number(const std::string& text, std::size_t from, std::size_t count) {
  return std::stoi(text.substr(from, count));
}

}  // namespace

DateTime::DateTime() : m_text("19700101000000.000000+000") {}

std::optional<DateTime> DateTime::parse(const std::string& text) {
  if (!hasForm(text)) {
    return std::nullopt;
  }
  std::tm time{};
  time.tm_hour = number(text, 8, 2);
  time.tm_min = number(text, 10, 2);
  time.tm_sec = number(text, 12, 2);
  if (time.tm_hour > 23 || time.tm_min > 59 || time.tm_sec > 60) {
    return std::nullopt;
  }
  DateTime result;
  result.m_text = text;
  result.m_interval = text[ZONE] == ':';
  std::int64_t seconds = 0;
  if (result.m_interval) {
    const int secondOfDay = (time.tm_hour * 60 + time.tm_min) * 60 + time.tm_sec;
    seconds = number(text, 0, 8) * SECONDS_PER_DAY + secondOfDay;
  } else {
    time.tm_year = number(text, 0, 4) - 1900;
    time.tm_mon = number(text, 4, 2) - 1;
    time.tm_mday = number(text, 6, 2);
    if (time.tm_mon < 0 || time.tm_mon > 11 || time.tm_mday < 1 || time.tm_mday > 31) {
      return std::nullopt;
    }
    const int offset = number(text, ZONE + 1, 3) * 60;
    seconds = ::timegm(&time) - (text[ZONE] == '-' ? -offset : offset);
  }
  // Times before 1970 cannot be represented as unsigned; they become the start of 1970.
  if (seconds >= 0) {
    result.m_microseconds =
        static_cast<std::uint64_t>(seconds) * MICROSECONDS + static_cast<std::uint64_t>(number(text, 15, 6));
  }
  return result;
}

DateTime DateTime::fromMicroseconds(std::uint64_t microseconds, bool interval) {
  const auto seconds = static_cast<std::time_t>(microseconds / MICROSECONDS);
  std::tm time{};
  ::gmtime_r(&seconds, &time);
  std::array<char, 64> day{};
  std::array<char, 64> rest{};
  if (interval) {
    std::snprintf(day.data(), day.size(), "%08lld", static_cast<long long>(seconds / SECONDS_PER_DAY));
  } else {
    std::strftime(day.data(), day.size(), "%Y%m%d", &time);
  }
  std::snprintf(
      rest.data(), rest.size(), "%02d%02d%02d.%06u%s", time.tm_hour, time.tm_min, time.tm_sec,
      static_cast<unsigned>(microseconds % MICROSECONDS), interval ? ":000" : "+000");
  DateTime result;
  result.m_interval = interval;
  result.m_microseconds = microseconds;
  result.m_text = std::string(day.data()) + rest.data();
  return result;
}

DateTime DateTime::now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return fromMicroseconds(
      static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count()),
      false);
}

std::string DateTime::iso8601() const {
  const auto part = [this](std::size_t from, std::size_t count) { return number(m_text, from, count); };
  const std::string fraction = m_text.substr(15, 6);
  std::array<char, 64> text{};
  if (m_interval) {
    std::snprintf(
        text.data(), text.size(), "P%dDT%dH%dM%d.%sS", part(0, 8), part(8, 2), part(10, 2), part(12, 2),
        fraction.c_str());
  } else {
    const int offset = part(ZONE + 1, 3);
    std::snprintf(
        text.data(), text.size(), "%04d-%02d-%02dT%02d:%02d:%02d.%s%c%02d:%02d", part(0, 4), part(4, 2),
        part(6, 2), part(8, 2), part(10, 2), part(12, 2), fraction.c_str(), m_text[ZONE], offset / 60,
        offset % 60);
  }
  return text.data();
}

}  // namespace tvp::host
