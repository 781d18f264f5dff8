#include "tests/e2e/sway.h"

#include <gtest/gtest.h>

namespace vantor::e2e {
namespace {

TEST(Sway, ShowsEveryOutputAtTheSizeOfItsMode) {
    const Sway sway(2, "output HEADLESS-2 mode 800x600@60Hz");
    const Picture first = sway.screenshot("HEADLESS-1");
    EXPECT_EQ(first.width(), 1280U);
    EXPECT_EQ(first.height(), 720U);
    const Picture second = sway.screenshot("HEADLESS-2");
    EXPECT_EQ(second.width(), 800U);
    EXPECT_EQ(second.height(), 600U);
}

TEST(Sway, PhotographsPixelsOfAnOutputWithAFractionalScale) {
    const Sway sway(1);
    sway.command("output HEADLESS-1 mode 1920x1080@60Hz scale 1.5");
    const Picture picture = sway.screenshot("HEADLESS-1");
    EXPECT_EQ(picture.width(), 1920U);
    EXPECT_EQ(picture.height(), 1080U);
}

TEST(Sway, EndsWhenItIsAskedTo) {
    Sway sway(1);
    sway.end();
    EXPECT_FALSE(isRunning(sway.pid()));
}

} // namespace
} // namespace vantor::e2e
