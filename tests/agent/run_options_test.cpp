#include "agent/run_options.h"

#include <gtest/gtest.h>

namespace vantor::agent {
namespace {

TEST(RunOptions, ReadsAListOfHeadlessDisplays) {
    auto one = parseOutput("headless");
    ASSERT_TRUE(one);
    EXPECT_EQ(one->kind, OutputKind::headless);
    EXPECT_EQ(one->displays, std::vector<DisplayMode>{DisplayMode{}});
    auto two = parseOutput("headless:1920x1080@2,640x360");
    ASSERT_TRUE(two);
    EXPECT_EQ(two->displays, (std::vector<DisplayMode>{{.width = 1920, .height = 1080, .scale = 2},
                                                       {.width = 640, .height = 360, .scale = 1}}));
}

TEST(RunOptions, RefusesDisplaysThatCannotBeWithTheReason) {
    EXPECT_EQ(parseOutput("wall").error(),
              "output \"wall\" is not known (headless, window and background are)");
    EXPECT_EQ(parseOutput("background:5x5").error(),
              "output background takes no sizes: its displays have their own");
    EXPECT_EQ(parseOutput("headless:0x5").error(),
              "display \"0x5\" has a side outside 1 to 16384 pixels");
    EXPECT_EQ(parseOutput("headless:99999x5").error(),
              "display \"99999x5\" has a side outside 1 to 16384 pixels");
    EXPECT_EQ(parseOutput("headless:").error(),
              "display \"\" is not of the form WIDTHxHEIGHT or WIDTHxHEIGHT@SCALE");
    EXPECT_EQ(parseOutput("headless:5x5,").error(),
              "display \"\" is not of the form WIDTHxHEIGHT or WIDTHxHEIGHT@SCALE");
    EXPECT_EQ(parseOutput("headless:5x5@nan").error(),
              "display \"5x5@nan\" needs a scale from 0.25 to 8 after the @");
    std::string many = "headless:5x5";
    for (std::size_t i = 0; i < kMaxDisplays; ++i) {
        many += ",5x5";
    }
    EXPECT_EQ(parseOutput(many).error(), "more than 16 displays are given");
}

TEST(RunOptions, ReadsWindowsAndTheBackground) {
    auto windows = parseOutput("window:800x600,640x480");
    ASSERT_TRUE(windows);
    EXPECT_EQ(windows->kind, OutputKind::window);
    EXPECT_EQ(windows->displays.size(), 2U);
    EXPECT_EQ(windows->displays[1].width, 640U);
    auto background = parseOutput("background");
    ASSERT_TRUE(background);
    EXPECT_EQ(background->kind, OutputKind::background);
}

TEST(RunOptions, ReadsAChoiceForADisplay) {
    auto choice = parseChoice("2=builtin.smoke");
    ASSERT_TRUE(choice);
    EXPECT_EQ(choice->first, 2U);
    EXPECT_EQ(choice->second, "builtin.smoke");
    EXPECT_FALSE(parseChoice("builtin.smoke"));
    EXPECT_FALSE(parseChoice("0=x"));
    EXPECT_FALSE(parseChoice("2="));
    EXPECT_FALSE(parseChoice("-1=x"));
}

} // namespace
} // namespace vantor::agent
