#include "render/checked_integer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vantor {
namespace {

TEST(CheckedIntegerTest, ValuesAreTruncatedTowardsZero) {
    EXPECT_EQ(truncatedInteger(640.9, "a width"), 640);
    EXPECT_EQ(truncatedInteger(-640.9, "a width"), -640);
    EXPECT_EQ(truncatedInteger(-0.5, "a width"), 0);
}

TEST(CheckedIntegerTest, TheWholeRangeIsTaken) {
    EXPECT_EQ(truncatedInteger(-9223372036854775808.0, "a width"),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(truncatedInteger(std::nextafter(9223372036854775808.0, 0.0), "a width"),
              9223372036854774784);
}

TEST(CheckedIntegerDeathTest, WhatIsNo64BitIntegerStopsTheProcess) {
    for (const double value :
         {9223372036854775808.0, -9.3e18, std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_DEATH(truncatedInteger(value, "a width"), "a width of .* is no 64-bit integer");
    }
}

TEST(CheckedIntegerTest, ProductsThatFitAreGiven) {
    EXPECT_EQ(checkedProduct(2560, 360, "a picture"), 921600U);
    EXPECT_EQ(checkedProduct(0, std::numeric_limits<std::size_t>::max(), "a picture"), 0U);
}

TEST(CheckedIntegerDeathTest, AProductThatDoesNotFitStopsTheProcess) {
    EXPECT_DEATH(checkedProduct(std::size_t{1} << 63, 2, "a picture"), "a picture of");
}

} // namespace
} // namespace vantor
