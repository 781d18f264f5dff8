#include "agent/output/window/help_panel.h"

#include <gtest/gtest.h>

namespace vantor::agent {
namespace {

OutputDescription display(std::uint32_t width, std::uint32_t height, double scale) {
    OutputDescription made;
    made.connector = "window-1";
    made.width = width;
    made.height = height;
    made.scale = scale;
    return made;
}

TEST(HelpPanelTest, EveryPixelIsOpaque) {
    const Picture panel = drawHelpPanel(display(1280, 800, 1));
    ASSERT_EQ(panel.bytes.size(), std::size_t{panel.width} * panel.height * 4);
    for (std::size_t i = 3; i < panel.bytes.size(); i += 4) {
        ASSERT_EQ(panel.bytes[i], 255) << i / 4;
    }
}

TEST(HelpPanelTest, TwiceTheScaleHasTwiceThePixels) {
    const Picture one = drawHelpPanel(display(1280, 800, 1));
    const Picture two = drawHelpPanel(display(2560, 1600, 2));
    EXPECT_EQ(two.width, 2 * one.width);
    EXPECT_EQ(two.height, 2 * one.height);
}

TEST(HelpPanelTest, FitsIntoASmallDisplay) {
    const Picture panel = drawHelpPanel(display(300, 200, 1));
    EXPECT_GT(panel.width, 0U);
    EXPECT_LE(panel.width, 300U);
    EXPECT_LE(panel.height, 200U);
}

TEST(HelpPanelTest, ThereIsNoneWhereNobodyCouldReadIt) {
    EXPECT_TRUE(drawHelpPanel(display(60, 40, 1)).bytes.empty());
    EXPECT_TRUE(drawHelpPanel(display(0, 0, 1)).bytes.empty());
}

TEST(HelpPanelTest, NamesTheDisplay) {
    OutputDescription other = display(1280, 800, 1);
    other.connector = "window-2";
    EXPECT_NE(drawHelpPanel(display(1280, 800, 1)).bytes, drawHelpPanel(other).bytes);
}

} // namespace
} // namespace vantor::agent
