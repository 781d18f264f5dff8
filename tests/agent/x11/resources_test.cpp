#include "agent/output/x11/resources.h"

#include <gtest/gtest.h>

namespace vantor::agent::x11 {
namespace {

TEST(ResourcesTest, DensityIsInUnitsOfTheUsualOne) {
    EXPECT_EQ(scaleFrom("Xft.dpi:\t192\n"), 2);
    EXPECT_EQ(scaleFrom("Xft.dpi: 144"), 1.5);
    EXPECT_EQ(scaleFrom("Xft.dpi:96\n"), 1);
}

TEST(ResourcesTest, OtherResourcesAreLeftAside) {
    EXPECT_EQ(scaleFrom("Xcursor.size:\t48\nXft.antialias:\t1\nXft.dpi:\t192\nXft.hinting:\t1\n"),
              2);
    EXPECT_EQ(scaleFrom("other.Xft.dpi:\t192\n"), 1);
}

TEST(ResourcesTest, WithoutADensityPointsArePixels) {
    EXPECT_EQ(scaleFrom(""), 1);
    EXPECT_EQ(scaleFrom("\n\n"), 1);
    EXPECT_EQ(scaleFrom("Xft.dpi:"), 1);
    EXPECT_EQ(scaleFrom("Xft.dpi:\t\n"), 1);
}

TEST(ResourcesTest, DensityThatNoDisplayHasIsBounded) {
    EXPECT_EQ(scaleFrom("Xft.dpi:\t1e9\n"), 8);
    EXPECT_EQ(scaleFrom("Xft.dpi:\t1\n"), 0.5);
    EXPECT_EQ(scaleFrom("Xft.dpi:\t-96\n"), 1);
    EXPECT_EQ(scaleFrom("Xft.dpi:\tnan\n"), 1);
    EXPECT_EQ(scaleFrom("Xft.dpi:\tinf\n"), 8);
}

} // namespace
} // namespace vantor::agent::x11
