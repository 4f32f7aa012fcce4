// SPDX-License-Identifier: Apache-2.0
#include "host/tvpcim/output/Size.h"

#include "host/tvpcim/Failure.h"

#include <gtest/gtest.h>

namespace tvp::host::tvpcim {
namespace {

TEST(Size, ThatCannotBeReadIsWrongUsage) {
  EXPECT_EQ(parseSectors("100G"), 209715200U);
  EXPECT_THROW(parseSectors("1 Q"), UsageError);
}

TEST(Size, SharesAreRoundedToPercent) {
  EXPECT_EQ(percentOf(0, 0), 0U);
  EXPECT_EQ(percentOf(1, 3), 33U);
  EXPECT_EQ(percentOf(2, 3), 67U);
  EXPECT_EQ(percentOf(~std::uint64_t{0}, ~std::uint64_t{0}), 100U);
}

}  // namespace
}  // namespace tvp::host::tvpcim
