// SPDX-License-Identifier: Apache-2.0
#include "host/schema/DateTime.h"

#include <chrono>
#include <cstdlib>

namespace tvp::host {
namespace {

constexpr std::size_t LENGTH = 25;
constexpr std::uint64_t MICROSECONDS = 1000000;
constexpr std::uint64_t SECONDS_PER_DAY = 86400;
constexpr std::size_t POINT = 14;
constexpr std::size_t ZONE = 21;

bool isDigits(const std::string& text, std::size_t from, std::size_t count) {
  for (std::size_t i = from; i < from + count; ++i) {
    if (text[i] < '0' || text[i] > '9') {
      return false;
    }
  }
  return true;
}

std::uint64_t number(const std::string& text, std::size_t from, std::size_t count) {
  return std::stoull(text.substr(from, count));
}

std::string padded(std::uint64_t value, std::size_t width) {
  std::string text = std::to_string(value);
  return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

/** Days from 1970-01-01 to a date of the Gregorian calendar, with years that begin in March. */
std::int64_t daysSince1970(std::int64_t year, std::int64_t month, std::int64_t day) {
  const std::int64_t shifted = month > 2 ? year : year - 1;
  const std::int64_t era = (shifted >= 0 ? shifted : shifted - 399) / 400;
  const std::int64_t yearOfEra = shifted - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

struct Date {
  std::int64_t year;
  std::int64_t month;
  std::int64_t day;
};

/** The inverse of daysSince1970 for dates from 1970 on. */
Date dateOf(std::int64_t days) {
  Date date{1970 + days / 366, 1, 1};
  while (daysSince1970(date.year + 1, 1, 1) <= days) {
    ++date.year;
  }
  while (date.month < 12 && daysSince1970(date.year, date.month + 1, 1) <= days) {
    ++date.month;
  }
  date.day = days - daysSince1970(date.year, date.month, 1) + 1;
  return date;
}

std::string timeOfDay(std::uint64_t seconds) {
  return padded(seconds / 3600, 2) + padded(seconds / 60 % 60, 2) + padded(seconds % 60, 2);
}

bool hasForm(const std::string& text) {
  if (text.size() != LENGTH || !isDigits(text, 0, POINT) || text[POINT] != '.' ||
      !isDigits(text, POINT + 1, 6) || !isDigits(text, ZONE + 1, 3)) {
    return false;
  }
  return text[ZONE] == '+' || text[ZONE] == '-' || text[ZONE] == ':';
}

}  // namespace

DateTime::DateTime() : m_text("19700101000000.000000+000") {}

std::optional<DateTime> DateTime::parse(const std::string& text) {
  if (!hasForm(text)) {
    return std::nullopt;
  }
  const std::uint64_t hours = number(text, 8, 2);
  const std::uint64_t minutes = number(text, 10, 2);
  const std::uint64_t seconds = number(text, 12, 2);
  if (hours > 23 || minutes > 59 || seconds > 60) {
    return std::nullopt;
  }
  DateTime result;
  result.m_text = text;
  result.m_interval = text[ZONE] == ':';
  std::int64_t total = static_cast<std::int64_t>(hours * 3600 + minutes * 60 + seconds);
  if (result.m_interval) {
    total += static_cast<std::int64_t>(number(text, 0, 8) * SECONDS_PER_DAY);
  } else {
    const std::uint64_t month = number(text, 4, 2);
    const std::uint64_t day = number(text, 6, 2);
    if (month < 1 || month > 12 || day < 1 || day > 31) {
      return std::nullopt;
    }
    const std::int64_t offset = static_cast<std::int64_t>(number(text, ZONE + 1, 3)) * 60;
    total += daysSince1970(
                 static_cast<std::int64_t>(number(text, 0, 4)), static_cast<std::int64_t>(month),
                 static_cast<std::int64_t>(day)) *
             static_cast<std::int64_t>(SECONDS_PER_DAY);
    total -= text[ZONE] == '-' ? -offset : offset;
  }
  // Times before 1970 have no unsigned form; they read as the start of it.
  result.m_microseconds = total < 0 ? 0 : static_cast<std::uint64_t>(total) * MICROSECONDS;
  result.m_microseconds += total < 0 ? 0 : number(text, POINT + 1, 6);
  return result;
}

DateTime DateTime::fromMicroseconds(std::uint64_t microseconds, bool interval) {
  const std::uint64_t seconds = microseconds / MICROSECONDS;
  const std::uint64_t days = seconds / SECONDS_PER_DAY;
  const std::string rest =
      timeOfDay(seconds % SECONDS_PER_DAY) + "." + padded(microseconds % MICROSECONDS, 6);
  DateTime result;
  result.m_interval = interval;
  result.m_microseconds = microseconds;
  if (interval) {
    result.m_text = padded(days, 8) + rest + ":000";
    return result;
  }
  const Date date = dateOf(static_cast<std::int64_t>(days));
  result.m_text = padded(static_cast<std::uint64_t>(date.year), 4) +
                  padded(static_cast<std::uint64_t>(date.month), 2) +
                  padded(static_cast<std::uint64_t>(date.day), 2) + rest + "+000";
  return result;
}

DateTime DateTime::now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return fromMicroseconds(
      static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count()),
      false);
}

std::string DateTime::iso8601() const {
  const std::string fraction = m_text.substr(POINT + 1, 6);
  if (m_interval) {
    return "P" + std::to_string(number(m_text, 0, 8)) + "DT" + std::to_string(number(m_text, 8, 2)) + "H" +
           std::to_string(number(m_text, 10, 2)) + "M" + std::to_string(number(m_text, 12, 2)) + "." +
           fraction + "S";
  }
  const std::uint64_t offset = number(m_text, ZONE + 1, 3);
  return m_text.substr(0, 4) + "-" + m_text.substr(4, 2) + "-" + m_text.substr(6, 2) + "T" +
         m_text.substr(8, 2) + ":" + m_text.substr(10, 2) + ":" + m_text.substr(12, 2) + "." + fraction +
         m_text[ZONE] + padded(offset / 60, 2) + ":" + padded(offset % 60, 2);
}

}  // namespace tvp::host
