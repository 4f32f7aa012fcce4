// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_SCHEMA_DATETIME_H
#define HOST_SCHEMA_DATETIME_H

#include <cstdint>
#include <optional>
#include <string>

namespace tvp::host {

/**
 * A CIM date-time: a point in time ("20260131235959.123456+060", the offset in minutes) or an interval
 * ("00000012010203.000004:000"). A plain value; always holds a valid text of 25 characters.
 */
class DateTime {
public:
  /** The start of 1970. */
  DateTime();

  /** Reads a text of 25 characters. @return nothing if it is not a CIM date-time. */
  static std::optional<DateTime> parse(const std::string& text);
  /** The latest time, and the longest interval, that fit in the text. */
  static constexpr std::uint64_t LAST_TIME = 253402300799999999;
  static constexpr std::uint64_t LONGEST_INTERVAL = 8639999999999999999;
  /**
   * Converts microseconds, since the start of 1970 in UTC or the length of an interval, up to those limits.
   */
  static DateTime fromMicroseconds(std::uint64_t microseconds, bool interval);
  /** The current time, in UTC. */
  static DateTime now();

  const std::string& text() const { return m_text; }
  bool isInterval() const { return m_interval; }
  /** Microseconds since the start of 1970 in UTC, or the length of the interval. */
  std::uint64_t microseconds() const { return m_microseconds; }
  /** ISO 8601: "2026-01-31T23:59:59.123456+01:00", an interval "P12DT1H2M3.000004S". */
  std::string iso8601() const;

  bool operator==(const DateTime& other) const { return m_text == other.m_text; }
  bool operator!=(const DateTime& other) const { return !(*this == other); }

private:
  std::string m_text;
  std::uint64_t m_microseconds = 0;
  bool m_interval = false;
};

}  // namespace tvp::host

#endif
