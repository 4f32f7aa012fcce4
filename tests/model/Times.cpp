// SPDX-License-Identifier: Apache-2.0
// Datetime texts and the arithmetic of time-outs.
#include "CIM/Framework/CIMDateTime.h"
#include "CIM/Framework/DateAndTime.h"
#include "support/Failure.h"
#include "support/LogCapture.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <ctime>
#include <string>

namespace {

using ::testing::ElementsAre;
using tvp::cim::fwf::CIMDateTime;
using tvp::cim::fwf::DateAndTime;

constexpr std::uint64_t DAY = 86400000000;
constexpr std::uint64_t HOUR = 3600000000;

TEST(DateTimeText, IsReadByPositionAndRenderedWithTheFixedOffset) {
  const std::pair<const char*, const char*> cases[] = {
      {"20240131120000.000000-300", "20240131120000.000000+530"},
      {"19991231235959.000123+000", "19991231235959.000123+530"},
      {"00000012030405.000006:000", "00000012030405.000006+530"},
      {"abcdefghijklmn.opqrst+uvw", "00000000000000.000000+530"},
      {"2024013112", "20240131120000.000000+530"},
      {"", "00000000000000.000000+530"},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(CIMDateTime(text).toString(), expected) << text;
  }
  const DateTime parts = CIMDateTime("20240131125958.000123-300").getDateTimeStruct();
  EXPECT_EQ(parts.sign, '-');
  EXPECT_EQ(parts.utcOffset, "+530");
  EXPECT_EQ(parts.platformField, 0);
  EXPECT_EQ(CIMDateTime("2024").getDateTimeStruct().sign, '\0');

  CIMDateTime copy;
  EXPECT_EQ(copy.toString(), "00000000000000.000000+530");
  copy.setDateTime(parts);
  EXPECT_EQ(copy.toString(), "20240131125958.000123+530");
  DateAndTime holder("first");
  holder.setDateAndTimeStringValue("second");
  EXPECT_EQ(DateAndTime(holder).getDateAndTimeStringValue(), "second");
}

TEST(DateTimeClock, TakesThePlatformsPartsAsTheyAre) {
  std::tm expected{};
  CIMDateTime current;
  for (std::time_t now = 0; now != std::time(nullptr);) {
    now = std::time(nullptr);
    localtime_r(&now, &expected);
    current.getCurrentDateTime();
  }
  const DateTime parts = current.getDateTimeStruct();
  const int read[] = {parts.microseconds, parts.seconds,       parts.minutes, parts.hours,
                      parts.day,          parts.platformField, parts.month,   parts.year};
  EXPECT_THAT(
      read, ElementsAre(
                0, expected.tm_sec, expected.tm_min, expected.tm_hour, expected.tm_mday, expected.tm_wday,
                expected.tm_mon, expected.tm_year));
  _SysTime record{};
  record.month = static_cast<std::uint32_t>(expected.tm_mon);
  record.year = static_cast<std::uint32_t>(expected.tm_year);
  EXPECT_EQ(current.getCurrentTime(), current.getTimeinUSecs(record));
}

TEST(DateTimeCalendar, FebruaryIsLongerInLeapYearsAndOtherMonthsThanTwelveHaveNoDays) {
  const CIMDateTime calendar;
  for (const auto& [year, days] : {std::pair(1900U, 28U), {2000U, 29U}, {2023U, 28U}, {2024U, 29U}}) {
    EXPECT_EQ(calendar.getDaysPerMonth(year, 2), days) << year;
  }
  unsigned int passed = 0;
  for (unsigned int month = 1; month <= 12; ++month) {
    passed += calendar.getDaysPerMonth(2023, month);
    EXPECT_EQ(calendar.getDaysPassed(month), passed) << month;
  }
  EXPECT_EQ(passed, 365U);
  for (const unsigned int month : {0U, 13U, UINT32_MAX}) {
    EXPECT_EQ(calendar.getDaysPerMonth(2024, month) + calendar.getDaysPassed(month), 0U);
  }
  EXPECT_EQ(calendar.getDifferenceInYears(2026, 2022), 365U + 366U + 365U);
  EXPECT_EQ(calendar.getDifferenceInYears(2025, 2024), 0U);
  EXPECT_EQ(calendar.getDifferenceInYears(2023, 2024), 0U);
}

TEST(DateTimeMicroseconds, IntervalsTimestampsAndRecordsAreCountedInTheirOwnWays) {
  EXPECT_EQ(
      CIMDateTime("00000012030405.000006:000").getTimeinUSecs(),
      12 * DAY + 3 * HOUR + 4 * 60000000ULL + 5 * 1000000ULL + 6);
  EXPECT_EQ(CIMDateTime("20240210030405.000006+000").getTimeinUSecs(), (29 + 10) * DAY);
  EXPECT_EQ(CIMDateTime("20241310000000.000000+000").getTimeinUSecs(), 10 * DAY);
  const CIMDateTime any;
  EXPECT_EQ(any.getTimeinUSecs(_SysTime{0, 0, 0, 0, 5, 0, 2, 123}), 28 * DAY);
  EXPECT_EQ(any.getTimeinUSecs(_SysTime{0, 0, 0, 0, 5, 0, 2, 124}), 29 * DAY);
  EXPECT_EQ(any.getTimeinUSecs(_SysTime{0, 0, 0, 0, 5, 0, 0, 124}), 0U) << "the clock's January is no month";
}

/** Days from one date to another, as the product counts them; negative ones wrap as the arithmetic does. */
TEST(DateTimeDifference, CountsDaysItsOwnWay) {
  struct Case {
    const char* current;
    const char* past;
    std::uint64_t days;
  };
  const Case cases[] = {
      {"20240310", "20240310", 0},
      {"20240310", "20240301", 9},
      {"20240301", "20240310", static_cast<std::uint64_t>(-9)},
      {"20240310", "20240220", UINT32_MAX - 71},                  // (59 - 90) - (31 - 10) - 20
      {"20240201", "20240315", UINT32_MAX - 11},                  // (90 - 59) - (29 - 1) - 15
      {"20230131", "20230201", 27},                               // (59 - 31) - 0 - 1
      {"20230105", "20221231", static_cast<std::uint64_t>(-26)},  // 365 - 365 + 31 - (31 - 5) - 31
      {"20240105", "20231231", static_cast<std::uint64_t>(-25)},  // a leap year's January: one more
      {"20240210", "20230210", 338},                              // 365 - 59 + (59 + 1) + 1 - (29 - 10) - 10
      {"20240301", "20230301", 335},                              // 365 - 90 + (90 + 1) - (31 - 1) - 1
      {"20260101", "20230101", 1065},  // 365 - 31 + (366 + 365 + 31) - (31 - 1) - 1
  };
  for (const Case& item : cases) {
    const CIMDateTime current(std::string(item.current) + "000000.000000+000");
    const CIMDateTime past(std::string(item.past) + "000000.000000+000");
    EXPECT_EQ(current.calculateTimeDifference(past), item.days * DAY) << item.current << " " << item.past;
  }
}

TEST(DateTimeDifference, FieldsOfTheDayDoNotBorrow) {
  const tvp::test::LogCapture log;
  const CIMDateTime current("20240310100005.000001+000");
  EXPECT_EQ(
      current.calculateTimeDifference(CIMDateTime("20240310095930.000004+000")),
      HOUR + 59 * 60000000ULL + 25 * 1000000ULL + 3);
  EXPECT_EQ(
      log.lines(), std::vector<std::string>{tvp::test::LogCapture::message(
                       4, "calculateTimeDifference :: Difference in Secs, 5 n 30")});
  EXPECT_EQ(
      CIMDateTime("20240310100000.000000+000")
          .calculateTimeDifference(CIMDateTime("20240310095900.000000+000")),
      7140000000ULL);
  EXPECT_EQ(
      tvp::test::failureOf(
          [&] { return current.calculateTimeDifference(CIMDateTime("20250310100000.000000+000")); }),
      "1 calculateTimeDifference :: Current year cannot be less than past year.");
}

TEST(DateTimeTimeOut, StartComesFirstAndTheSignDecides) {
  const CIMDateTime now("20240310120000.000000+000");
  const CIMDateTime start("20240310110000.000000+000");
  const std::pair<const char*, bool> cases[] = {
      {"00000000005959.999999:000", true},  {"00000000010000.000000:000", false},
      {"00000001000000.000000:000", false}, {"20990101000000.000000+000", true},
      {"20000101000000.000000-000", false}, {"", false},
  };
  for (const auto& [timeOut, passed] : cases) {
    EXPECT_EQ(now.passedTimeOut(start, CIMDateTime(timeOut)), passed) << timeOut;
  }
  EXPECT_FALSE(now.passedTimeOut(now, CIMDateTime("20990101000000.000000+000")));
}

}  // namespace
