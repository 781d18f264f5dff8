#include "agent/choices.h"

#include <gtest/gtest.h>

namespace vantor::agent {
namespace {

class ChoicesTest : public testing::Test {
  protected:
    Choices choices(std::map<std::uint32_t, std::string> asked = {}) {
        return {std::move(asked), memory,
                [this](std::string_view choice) { return std::string(choice) + "@" + version; }};
    }
    static OutputSettings configured(std::string wallpaper) {
        return {.wallpaper = std::move(wallpaper)};
    }

    AgentMemory memory;
    std::string version = "1";
};

TEST_F(ChoicesTest, WithoutAWordTheHostApplicationsChoiceIsShown) {
    const auto shown = choices().shown(1, "DP-1", {});
    EXPECT_EQ(shown.choice, "match-desktop");
    EXPECT_EQ(shown.entry, "match-desktop");
    EXPECT_FALSE(shown.setAside);
}

TEST_F(ChoicesTest, TheCommandLineCountsMoreThanWhatIsRememberedAndThatMoreThanTheConfiguration) {
    auto made = choices({{1, "asked"}});
    memory.choices["DP-1"] = "remembered";
    memory.choices["DP-2"] = "remembered";
    EXPECT_EQ(made.shown(1, "DP-1", configured("configured")).choice, "asked");
    EXPECT_EQ(made.shown(2, "DP-2", configured("configured")).choice, "remembered");
    EXPECT_EQ(made.shown(3, "DP-3", configured("configured")).choice, "configured");
}

TEST_F(ChoicesTest, AChoiceReplacesWhatWasAskedForAndIsRememberedUntilItIsTakenBack) {
    auto made = choices({{1, "asked"}});
    made.choose(1, "DP-1", "plasma");
    EXPECT_EQ(made.shown(1, "DP-1", configured("configured")).choice, "plasma");
    EXPECT_EQ(memory.choices.at("DP-1"), "plasma");
    made.choose(1, "DP-1", kNoChoice);
    EXPECT_EQ(made.shown(1, "DP-1", configured("configured")).choice, "configured");
    EXPECT_TRUE(memory.choices.empty());
}

TEST_F(ChoicesTest, AChoiceForNowIsNotRemembered) {
    auto made = choices();
    made.chooseForNow(1, "plasma");
    EXPECT_EQ(made.shown(1, "DP-1", {}).choice, "plasma");
    EXPECT_TRUE(memory.choices.empty());
}

TEST_F(ChoicesTest, WhatIsSetAsideIsReplacedOnItsOutputOnlyAndTellsWhy) {
    auto made = choices({{1, "bad"}, {2, "bad"}});
    EXPECT_TRUE(made.setAside("DP-1", "bad", "it fell over"));
    EXPECT_FALSE(made.setAside("DP-1", "bad", "again"));
    const auto shown = made.shown(1, "DP-1", {});
    EXPECT_EQ(shown.choice, "bad");
    EXPECT_EQ(shown.entry, "builtin.elec-pcb");
    EXPECT_EQ(shown.setAside, "it fell over");
    EXPECT_EQ(made.shown(2, "DP-2", {}).entry, "bad");
}

TEST_F(ChoicesTest, WhatIsShownInsteadIsNeverSetAside) {
    EXPECT_FALSE(choices().setAside("DP-1", kSafeChoice, "it fell over"));
    EXPECT_TRUE(memory.setAside.empty());
}

TEST_F(ChoicesTest, AChoiceThatMeansAnotherWallpaperIsShownAgain) {
    auto made = choices({{1, "bad"}});
    made.setAside("DP-1", "bad", "it fell over");
    EXPECT_FALSE(made.forgetChanged());
    version = "2";
    EXPECT_TRUE(made.forgetChanged());
    EXPECT_EQ(made.shown(1, "DP-1", {}).entry, "bad");
}

TEST_F(ChoicesTest, AnotherChoiceIsShownAndChoosingTheSameAgainGivesItAnotherChance) {
    auto made = choices();
    made.choose(1, "DP-1", "bad");
    made.setAside("DP-1", "bad", "it fell over");
    made.chooseForNow(1, "good");
    EXPECT_EQ(made.shown(1, "DP-1", {}).entry, "good");
    made.choose(1, "DP-1", "bad");
    EXPECT_EQ(made.shown(1, "DP-1", {}).entry, "bad");
}

} // namespace
} // namespace vantor::agent
