#include "agent/configuration/configuration_file.h"

#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace vantor::agent {
namespace {

std::string errorOf(std::string_view text) {
    const auto parsed = parseConfiguration(text, "agent.toml");
    return parsed ? "" : parsed.error();
}

TEST(ParseConfiguration, ReadsEverySetting) {
    auto parsed = parseConfiguration(R"(
# How often.
max_fps = 30
desktop = "still"
pause_when_covered = false
pause_on_battery = true

[[output]]
connector = "DP-*"
make = "Acme"
model = "Wide ?"
wallpaper = "builtin.smoke"
max_fps = 23.976

[[output]]
enabled = false
)",
                                     "agent.toml");
    ASSERT_TRUE(parsed) << parsed.error();
    EXPECT_EQ(*parsed, (Configuration{.maxFps = 30,
                                      .animateDesktop = false,
                                      .pauseWhenCovered = false,
                                      .pauseOnBattery = true,
                                      .outputs = {{.connector = "DP-*",
                                                   .make = "Acme",
                                                   .model = "Wide ?",
                                                   .wallpaper = "builtin.smoke",
                                                   .maxFps = 23.976},
                                                  {.enabled = false}}}));
}

TEST(ParseConfiguration, WhatIsNotSaidIsAsByDefault) {
    EXPECT_EQ(*parseConfiguration("", "agent.toml"), Configuration{});
    EXPECT_EQ(*parseConfiguration("desktop = \"animated\"", "agent.toml"), Configuration{});
    EXPECT_EQ(parseConfiguration("[[output]]", "agent.toml")->outputs, std::vector{OutputRule{}});
}

TEST(ParseConfiguration, AMistakeOfSpellingHasItsPlace) {
    EXPECT_THAT(errorOf("max_fps = 30\ndesktop = still\n"),
                testing::StartsWith("agent.toml:2:11: "));
    EXPECT_THAT(errorOf("[[output]\n"), testing::StartsWith("agent.toml:1:10: "));
    EXPECT_THAT(errorOf("max_fps = 1\nmax_fps = 2\n"), testing::StartsWith("agent.toml:2:"));
    EXPECT_THAT(errorOf("desktop = \"\xff\"\n"), testing::StartsWith("agent.toml:1:"));
}

TEST(ParseConfiguration, AKeyThatIsNotKnownIsSaidWithTheOneThatWasMeant) {
    EXPECT_EQ(errorOf("\n  max_fsp = 1"),
              "agent.toml:2:3: max_fsp is not known; did you mean \"max_fps\"?");
    EXPECT_EQ(errorOf("colour = 1"), "agent.toml:1:1: colour is not known");
    EXPECT_EQ(errorOf("[[output]]\nmonitor = \"DP-1\""),
              "agent.toml:2:1: monitor is not known in [[output]]");
    EXPECT_EQ(errorOf("[[outputs]]\nconnector = \"DP-1\""),
              "agent.toml:1:3: outputs is not known; did you mean \"output\"?");
    EXPECT_EQ(errorOf("wallpaper = \"aurora\""), "agent.toml:1:1: wallpaper is not known")
        << "an output's keys are not the file's";
}

TEST(ParseConfiguration, AValueOfAnotherKindIsSaidWithWhatIsWanted) {
    EXPECT_EQ(errorOf("max_fps = \"30\""),
              "agent.toml:1:11: max_fps is \"30\", but must be a number");
    EXPECT_EQ(errorOf("max_fps = true"), "agent.toml:1:11: max_fps is true, but must be a number");
    EXPECT_EQ(errorOf("max_fps = [1]"),
              "agent.toml:1:11: max_fps is an array, but must be a number");
    EXPECT_EQ(errorOf("desktop = \"moving\""),
              "agent.toml:1:11: desktop is \"moving\", but must be \"animated\" or \"still\"");
    EXPECT_EQ(errorOf("desktop = true"),
              "agent.toml:1:11: desktop is true, but must be \"animated\" or \"still\"");
    EXPECT_EQ(errorOf("pause_on_battery = 1"),
              "agent.toml:1:20: pause_on_battery is 1, but must be true or false");
    EXPECT_EQ(errorOf("pause_when_covered = 2026-05-01"),
              "agent.toml:1:22: pause_when_covered is 2026-05-01, but must be true or false");
    EXPECT_EQ(errorOf("[output]\nconnector = \"DP-1\""),
              "agent.toml:1:1: output is a table, but must be written as [[output]]");
    EXPECT_EQ(errorOf("output = [1]"),
              "agent.toml:1:11: output is 1, but must be written as [[output]]");
    EXPECT_EQ(errorOf("[[output]]\nmodel = 5"), "agent.toml:2:9: model is 5, but must be a string");
    EXPECT_EQ(errorOf("[[output]]\nwallpaper = \"\""),
              "agent.toml:2:13: wallpaper is \"\", but must be the identifier of an entry");
    EXPECT_EQ(errorOf("[[output]]\nenabled = {}"),
              "agent.toml:2:11: enabled is a table, but must be true or false");
}

TEST(ParseConfiguration, ARateIsAboveZero) {
    EXPECT_EQ(errorOf("max_fps = -1"), "agent.toml:1:11: max_fps is -1, but must be above 0");
    EXPECT_EQ(errorOf("max_fps = 0"), "agent.toml:1:11: max_fps is 0, but must be above 0");
    EXPECT_EQ(errorOf("[[output]]\nmax_fps = -0.5"),
              "agent.toml:2:11: max_fps is -0.5, but must be above 0");
    EXPECT_EQ(errorOf("max_fps = inf"), "agent.toml:1:11: max_fps is inf, but must be a number");
    EXPECT_EQ(errorOf("max_fps = nan"), "agent.toml:1:11: max_fps is nan, but must be a number");
    EXPECT_EQ(parseConfiguration("max_fps = 0.1", "agent.toml")->maxFps, 0.1);
}

TEST(ParseConfiguration, OfSeveralMistakesTheFirstInTheFileIsSaid) {
    EXPECT_EQ(errorOf("pause_on_battery = 1\ndesktop = 1\nzebra = 1\n[[output]]\nmake = 1\n"),
              "agent.toml:1:20: pause_on_battery is 1, but must be true or false");
}

TEST(ParseConfiguration, ALongValueIsShortened) {
    EXPECT_EQ(errorOf("max_fps = \"" + std::string(60, 'x') + "\""),
              "agent.toml:1:11: max_fps is \"" + std::string(39, 'x') + "…, but must be a number");
}

class ConfigurationFileTest : public testing::Test {
  protected:
    std::filesystem::path file() const { return folder_.path() / "agent.toml"; }
    void write(const std::string& text) const { std::ofstream(file()) << text; }

  private:
    TemporaryFolder folder_;
};

TEST_F(ConfigurationFileTest, IsReadAndItsMistakesNameIt) {
    write("max_fps = 20");
    EXPECT_EQ(*loadConfiguration(file()), Configuration{.maxFps = 20});
    write("max_fps = 0");
    EXPECT_EQ(loadConfiguration(file()).error(),
              file().string() + ":1:11: max_fps is 0, but must be above 0");
}

TEST_F(ConfigurationFileTest, ThatIsNotThereSaysNothingSpecial) {
    EXPECT_EQ(*loadConfiguration(file()), Configuration{});
}

TEST_F(ConfigurationFileTest, ThatIsTooLargeIsRefused) {
    write(std::string((1U << 20U) + 1, '\n'));
    EXPECT_EQ(loadConfiguration(file()).error(),
              file().string() + ": a file of more than 1048576 bytes exceeds the limit");
}

TEST(ConfigurationFile, StandsInTheUsersSettings) {
    const ScopedVariable home("VANTOR_USER_HOME", "/given");
    EXPECT_EQ(configurationFile(), "/given/.config/vantor/agent.toml");
}

} // namespace
} // namespace vantor::agent
