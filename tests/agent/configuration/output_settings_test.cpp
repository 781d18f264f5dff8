#include "agent/configuration/output_settings.h"

#include <gtest/gtest.h>

namespace vantor::agent {
namespace {

OutputDescription display(std::string connector, std::string make = "", std::string model = "") {
    return {.connector = std::move(connector), .make = std::move(make), .model = std::move(model)};
}

TEST(OutputSettings, WithoutRulesAnOutputIsShownAsEverything) {
    EXPECT_EQ(settingsFor({}, display("DP-1")), OutputSettings{});
    EXPECT_EQ(settingsFor({.maxFps = 30}, display("DP-1")), OutputSettings{.maxFps = 30});
}

TEST(OutputSettings, ARuleHoldsWhereAllItsPatternsMatch) {
    const Configuration configuration{
        .outputs = {{.connector = "DP-*", .make = "Acme", .model = "W?", .wallpaper = "aurora"}}};
    EXPECT_EQ(settingsFor(configuration, display("DP-1", "Acme", "W2")).wallpaper, "aurora");
    EXPECT_EQ(settingsFor(configuration, display("HDMI-A-1", "Acme", "W2")).wallpaper,
              std::nullopt);
    EXPECT_EQ(settingsFor(configuration, display("DP-1", "Acme & Co", "W2")).wallpaper,
              std::nullopt);
    EXPECT_EQ(settingsFor(configuration, display("DP-1", "Acme", "W")).wallpaper, std::nullopt);
}

TEST(OutputSettings, ForEachSettingTheFirstRuleThatSaysSomethingCounts) {
    const Configuration configuration{
        .maxFps = 60,
        .outputs = {{.connector = "DP-1", .enabled = false},
                    {.connector = "DP-*", .wallpaper = "aurora"},
                    {.wallpaper = "plasma", .maxFps = 24, .enabled = true}}};
    EXPECT_EQ(settingsFor(configuration, display("DP-1")),
              (OutputSettings{.wallpaper = "aurora", .maxFps = 24, .isEnabled = false}));
    EXPECT_EQ(settingsFor(configuration, display("DP-2")),
              (OutputSettings{.wallpaper = "aurora", .maxFps = 24, .isEnabled = true}));
    EXPECT_EQ(settingsFor(configuration, display("eDP-1")),
              (OutputSettings{.wallpaper = "plasma", .maxFps = 24, .isEnabled = true}));
}

} // namespace
} // namespace vantor::agent
