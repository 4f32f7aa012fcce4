// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/cim/EventTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace tvp::host::tvpcim {
namespace {

TEST(EventTime, HasTheOffsetThatAppliedThen) {
  ASSERT_EQ(::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1), 0);
  ::tzset();
  const struct {
    const char* local;
    const char* iso;
  } cases[] = {
      {"01/31/2026 23:59:59", "2026-01-31T23:59:59+01:00"},
      {"03/29/2026 01:59:59", "2026-03-29T01:59:59+01:00"},
      {"03/29/2026 03:00:00", "2026-03-29T03:00:00+02:00"},
      {"07/01/2026 12:00:00", "2026-07-01T12:00:00+02:00"},
      {"10/25/2026 01:59:59", "2026-10-25T01:59:59+02:00"},
      {"10/25/2026 03:00:00", "2026-10-25T03:00:00+01:00"},
      {"yesterday", "yesterday"},
      {"01/31/2026 23:59:59 ", "01/31/2026 23:59:59 "},
      {"", ""},
  };
  for (const auto& [local, iso] : cases) {
    EXPECT_EQ(isoTime(local), iso);
  }
}

}  // namespace
}  // namespace tvp::host::tvpcim
