// SPDX-License-Identifier: Apache-2.0
#include "oslib/KVSStatus.h"
#include "oslib/KVSSystem.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string>

#include <sys/time.h>

namespace {

constexpr std::array<const char*, 12> MONTHS = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

/** The two digits of the month with that name; empty if there is none. */
std::string monthNumber(const char* name) {
  for (std::size_t month = 0; month < MONTHS.size(); ++month) {
    if (std::strcmp(MONTHS[month], name) == 0) {
      return (month < 9 ? "0" : "") + std::to_string(month + 1);
    }
  }
  return "";
}

bool within(int value, int lowest, int highest) {
  return value >= lowest && value <= highest;
}

void replaceAll(char* text, char from, char to) {
  for (char* place = std::strchr(text, from); place != nullptr; place = std::strchr(place, from)) {
    *place = to;
  }
}

}  // namespace

int KvsGetLocalTime(char* buffer, int mode) {
  if (buffer == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  const std::time_t now = std::time(nullptr);
  timeval precise{};
  gettimeofday(&precise, nullptr);
  char rendered[32] = "";
  ctime_r(&now, rendered);
  char weekDay[8] = "";
  char month[8] = "";
  char timeOfDay[16] = "";
  int day = 0;
  int year = 0;
  std::sscanf(rendered, "%7s %7s %d %15s %d", weekDay, month, &day, timeOfDay, &year);
  std::snprintf(
      buffer, KVS_LOCAL_TIME_SIZE, "%s/%d/%d %s:%d", monthNumber(month).c_str(), day, year, timeOfDay,
      static_cast<int>(precise.tv_usec / 1000));
  if (mode == KVS_LOCAL_TIME_FILE_NAME) {
    replaceAll(buffer, '/', '_');
    replaceAll(buffer, ':', '.');
  }
  return KVS_DONE;
}

int KvsGetSystemTime(_SysTime* systemTime) {
  if (systemTime == nullptr) {
    return KVS_MISSING_ARGUMENT;
  }
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  tzset();  // so that a changed time zone counts, as it does for localtime
  localtime_r(&now, &local);
  const auto field = [](int value) { return static_cast<std::uint32_t>(value); };
  *systemTime = {
      0,
      field(local.tm_sec),
      field(local.tm_min),
      field(local.tm_hour),
      field(local.tm_mday),
      field(local.tm_wday),
      field(local.tm_mon),
      field(local.tm_year)};
  return KVS_DONE;
}

int KvsGetTimeZone(char* buffer) {
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::tm universal{};
  if (buffer == nullptr || now == static_cast<std::time_t>(-1) || localtime_r(&now, &local) == nullptr ||
      gmtime_r(&now, &universal) == nullptr) {
    return KVS_FAILED;
  }
  const std::time_t universalAsLocal = std::mktime(&universal);
  if (universalAsLocal == static_cast<std::time_t>(-1)) {
    return KVS_FAILED;
  }
  auto minutes = static_cast<int>((now - universalAsLocal) / 60);
  if (universal.tm_isdst > 0) {
    minutes -= 60;  // COMPAT: see the header
  }
  std::snprintf(buffer, KVS_TIME_ZONE_SIZE, "%+04d", minutes);
  return KVS_DONE;
}

int KvsGetTimeInTM(std::uint64_t milliseconds, std::tm* brokenDown) {
  const auto seconds = static_cast<std::time_t>(milliseconds / 1000);
  if (brokenDown == nullptr || localtime_r(&seconds, brokenDown) == nullptr) {
    return KVS_FAILED;
  }
  const bool valid = within(brokenDown->tm_year, 70, 1100) && within(brokenDown->tm_mon, 0, 11) &&
                     within(brokenDown->tm_mday, 0, 31) && within(brokenDown->tm_hour, 0, 23) &&
                     within(brokenDown->tm_min, 0, 59) && within(brokenDown->tm_sec, 0, 60);
  return valid ? KVS_DONE : KVS_FAILED;
}

int KvsGetFormatedTime(std::uint64_t milliseconds, char* buffer, std::uint32_t length) {
  constexpr std::uint32_t LONGEST_REFUSED = 24;
  std::tm brokenDown{};
  if (milliseconds == 0 || buffer == nullptr || length <= LONGEST_REFUSED ||
      KvsGetTimeInTM(milliseconds, &brokenDown) != KVS_DONE) {
    return KVS_FAILED;
  }
  return std::strftime(buffer, length, "%m/%d/%Y %H:%M:%S", &brokenDown) > 0 ? KVS_DONE : KVS_FAILED;
}
