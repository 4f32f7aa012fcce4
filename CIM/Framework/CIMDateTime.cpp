// SPDX-License-Identifier: Apache-2.0
#include "CIM/Framework/CIMDateTime.h"

#include "CIM/Framework/CIMException.h"
#include "oslib/KVSLog.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace tvp::cim::fwf {

namespace {

constexpr char UTC_OFFSET[] = "+530";
constexpr char INTERVAL_SIGN = ':';

constexpr std::uint64_t DAY = 86400000000;
constexpr std::uint64_t HOUR = 3600000000;
constexpr std::uint64_t MINUTE = 60000000;
constexpr std::uint64_t SECOND = 1000000;

constexpr unsigned int FEBRUARY = 2;
constexpr std::array<unsigned int, 12> DAYS_PER_MONTH = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
constexpr std::array<unsigned int, 12> DAYS_PASSED = {31,  59,  90,  120, 151, 181,
                                                      212, 243, 273, 304, 334, 365};

unsigned int entryOf(const std::array<unsigned int, 12>& table, unsigned int month) {
  return month >= 1 && month <= table.size() ? table[month - 1] : 0;
}

std::int32_t numberAt(const std::string& text, std::size_t position, std::size_t length) {
  return position < text.size() ? std::atoi(text.substr(position, length).c_str()) : 0;
}

// Widened first, since the parts may be any numbers that a text contained.
std::uint64_t distance(std::int32_t left, std::int32_t right) {
  return static_cast<std::uint64_t>(std::llabs(static_cast<long long>(left) - right));
}

std::uint64_t times(std::int32_t count, std::uint64_t unit) {
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(count)) * unit;
}

std::uint64_t intervalLength(const DateTime& interval) {
  return times(interval.day, DAY) + times(interval.hours, HOUR) + times(interval.minutes, MINUTE) +
         times(interval.seconds, SECOND) + times(interval.microseconds, 1);
}

unsigned int asUnsigned(std::int32_t value) {
  return static_cast<unsigned int>(value);
}

_SysTime systemTime() {
  _SysTime now{};
  KvsGetSystemTime(&now);
  return now;
}

}  // namespace

CIMDateTime::CIMDateTime() {
  m_dateTime.utcOffset = UTC_OFFSET;
}

CIMDateTime::CIMDateTime(const std::string& text) : CIMDateTime() {
  constexpr std::size_t SIGN = 21;
  m_dateTime.year = numberAt(text, 0, 4);
  m_dateTime.month = numberAt(text, 4, 2);
  m_dateTime.day = numberAt(text, 6, 2);
  m_dateTime.hours = numberAt(text, 8, 2);
  m_dateTime.minutes = numberAt(text, 10, 2);
  m_dateTime.seconds = numberAt(text, 12, 2);
  m_dateTime.microseconds = numberAt(text, 15, 6);
  m_dateTime.sign = SIGN < text.size() ? text[SIGN] : '\0';
}

std::string CIMDateTime::toString() const {
  char text[96];  // seven numbers of up to eleven characters
  std::snprintf(
      text, sizeof text, "%04d%02d%02d%02d%02d%02d.%06d", m_dateTime.year, m_dateTime.month, m_dateTime.day,
      m_dateTime.hours, m_dateTime.minutes, m_dateTime.seconds, m_dateTime.microseconds);
  return text + m_dateTime.utcOffset;
}

void CIMDateTime::getCurrentDateTime() {
  const _SysTime now = systemTime();
  const auto field = [](std::uint32_t value) { return static_cast<std::int32_t>(value); };
  m_dateTime.microseconds = field(now.milliseconds);
  m_dateTime.seconds = field(now.seconds);
  m_dateTime.minutes = field(now.minutes);
  m_dateTime.hours = field(now.hours);
  m_dateTime.day = field(now.day);
  m_dateTime.platformField = field(now.dayOfWeek);
  m_dateTime.month = field(now.month);
  m_dateTime.year = field(now.year);
}

std::uint64_t CIMDateTime::getCurrentTime() const {
  return getTimeinUSecs(systemTime());
}

std::uint64_t CIMDateTime::getTimeinUSecs(_SysTime systemTime) const {
  return getDaysPerMonth(systemTime.year, systemTime.month) * DAY;
}

std::uint64_t CIMDateTime::getTimeinUSecs() const {
  if (m_dateTime.sign == INTERVAL_SIGN) {
    return intervalLength(m_dateTime);
  }
  const unsigned int month = getDaysPerMonth(asUnsigned(m_dateTime.year), asUnsigned(m_dateTime.month));
  return month * DAY + times(m_dateTime.day, DAY);
}

bool CIMDateTime::isLeapYear(unsigned int year) const {
  return year % 400 == 0 || (year % 4 == 0 && year % 100 != 0);
}

unsigned int CIMDateTime::getDaysPerMonth(unsigned int year, unsigned int month) const {
  return month == FEBRUARY && isLeapYear(year) ? 29 : entryOf(DAYS_PER_MONTH, month);
}

unsigned int CIMDateTime::getDaysPassed(unsigned int month) const {
  return entryOf(DAYS_PASSED, month);
}

unsigned int CIMDateTime::getDifferenceInYears(unsigned int laterYear, unsigned int earlierYear) const {
  unsigned int days = 0;
  for (unsigned int year = earlierYear; year < laterYear && year + 1 < laterYear; ++year) {
    days += isLeapYear(year + 1) ? 366 : 365;
  }
  return days;
}

std::int64_t CIMDateTime::daysSince(const DateTime& past) const {
  const DateTime& current = m_dateTime;
  const unsigned int year = asUnsigned(current.year);
  const unsigned int month = asUnsigned(current.month);
  const std::int64_t passed = getDaysPassed(month);
  const std::int64_t pastPassed = getDaysPassed(asUnsigned(past.month));
  const std::int64_t left = static_cast<std::int64_t>(getDaysPerMonth(year, month)) - current.day;
  // COMPAT: the terms for the months are those with which the product has always computed time-outs.
  if (past.year < current.year) {
    std::int64_t days = 365 - pastPassed + getDifferenceInYears(year, asUnsigned(past.year)) + passed;
    if (isLeapYear(year)) {
      days += current.month >= 2 ? 1 : 0;
      days += current.month < 3 ? 1 : 0;
    }
    return days - left - past.day;
  }
  if (pastPassed == passed) {
    return static_cast<std::int64_t>(current.day) - past.day;
  }
  return static_cast<std::uint32_t>(pastPassed - passed - left - past.day);
}

std::uint64_t CIMDateTime::calculateTimeDifference(const CIMDateTime& past) const {
  const DateTime& now = m_dateTime;
  const DateTime& then = past.m_dateTime;
  if (then.year > now.year) {
    throw frameworkError(
        FW_RC_FAILED, "calculateTimeDifference", "Current year cannot be less than past year.");
  }
  const std::int64_t days = daysSince(then);
  KvsLogMsg(
      KVS_LOG_DEBUG, "%s :: Difference in Secs, %d n %d", "calculateTimeDifference", now.seconds,
      then.seconds);
  return static_cast<std::uint64_t>(days) * DAY + distance(now.hours, then.hours) * HOUR +
         distance(now.minutes, then.minutes) * MINUTE + distance(now.seconds, then.seconds) * SECOND +
         distance(now.microseconds, then.microseconds);
}

bool CIMDateTime::passedTimeOut(const CIMDateTime& start, const CIMDateTime& timeOut) const {
  switch (timeOut.m_dateTime.sign) {
  case INTERVAL_SIGN:
    return calculateTimeDifference(start) > intervalLength(timeOut.m_dateTime);
  case '+':
    return calculateTimeDifference(start) != 0;
  default:
    return false;
  }
}

}  // namespace tvp::cim::fwf
