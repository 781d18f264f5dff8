#include "tests/e2e/sway.h"

#include <gmock/gmock.h>

namespace vantor::e2e {
namespace {

using testing::HasSubstr;

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

TEST(Sway, LosesAnOutputWithTheWindowThatItIs) {
    const Sway outer(1);
    const auto inner = Sway::inside(outer, 2);
    EXPECT_THAT(inner->ask("get_outputs"), HasSubstr("WL-2"));
    outer.closeWindow("WL-2");
    EXPECT_TRUE(
        eventually([&] { return inner->ask("get_outputs").find("WL-2") == std::string::npos; },
                   std::chrono::seconds(60)));
    EXPECT_THAT(inner->ask("get_outputs"), HasSubstr("WL-1"));
}

TEST(Sway, EndsWhenItIsAskedTo) {
    Sway sway(1);
    sway.end();
    EXPECT_FALSE(isRunning(sway.pid()));
}

} // namespace
} // namespace vantor::e2e
