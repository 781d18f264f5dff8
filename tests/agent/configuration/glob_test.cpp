#include "agent/configuration/glob.h"

#include <gtest/gtest.h>

#include <string>

namespace vantor::agent {
namespace {

TEST(Glob, TextStandsForItself) {
    EXPECT_TRUE(matchesGlob("DP-1", "DP-1"));
    EXPECT_FALSE(matchesGlob("DP-1", "dp-1"));
    EXPECT_FALSE(matchesGlob("DP-12", "DP-1"));
    EXPECT_FALSE(matchesGlob("DP-1", "DP-12"));
    EXPECT_FALSE(matchesGlob("eDP-1", "DP-1"));
    EXPECT_TRUE(matchesGlob("", ""));
    EXPECT_FALSE(matchesGlob("", "x"));
    EXPECT_FALSE(matchesGlob("x", ""));
}

TEST(Glob, AStarStandsForAnyCharactersAlsoNone) {
    EXPECT_TRUE(matchesGlob("", "*"));
    EXPECT_TRUE(matchesGlob("DP-1", "*"));
    EXPECT_TRUE(matchesGlob("DP-1", "DP-*"));
    EXPECT_TRUE(matchesGlob("DP-", "DP-*"));
    EXPECT_TRUE(matchesGlob("eDP-1", "*DP*"));
    EXPECT_TRUE(matchesGlob("eDP-1", "**e***1**"));
    EXPECT_TRUE(matchesGlob("abcabd", "*ab?"));
    EXPECT_TRUE(matchesGlob("aXbXc", "a*X*c"));
    EXPECT_FALSE(matchesGlob("HDMI-A-1", "*DP*"));
    EXPECT_FALSE(matchesGlob("abc", "*b"));
    EXPECT_FALSE(matchesGlob("aab", "a*ab*b"));
}

TEST(Glob, AQuestionMarkStandsForOneCharacter) {
    EXPECT_TRUE(matchesGlob("DP-1", "DP-?"));
    EXPECT_FALSE(matchesGlob("DP-", "DP-?"));
    EXPECT_FALSE(matchesGlob("DP-12", "DP-?"));
    EXPECT_TRUE(matchesGlob("DP-12", "DP-?*"));
    EXPECT_TRUE(matchesGlob("Büro", "B?ro"));
    EXPECT_FALSE(matchesGlob("Büro", "B??ro"));
    EXPECT_TRUE(matchesGlob("Büro", "*?o"));
}

TEST(Glob, BytesThatAreNoTextMatchOrNotAndNothingElseHappens) {
    EXPECT_TRUE(matchesGlob("\xc3", "?"));
    EXPECT_TRUE(matchesGlob("\x80\x80", "*"));
    EXPECT_FALSE(matchesGlob("\x80", "a"));
}

/// With a star of each kind tried again for every other it would not end in this universe's time.
TEST(Glob, ManyStarsAreTriedOnlyOnceEach) {
    std::string pattern;
    for (int i = 0; i < 500; ++i) {
        pattern += "*a";
    }
    EXPECT_FALSE(matchesGlob(std::string(2000, 'a') + "c", pattern + "b"));
    EXPECT_TRUE(matchesGlob(std::string(2000, 'a') + "b", pattern + "b"));
}

} // namespace
} // namespace vantor::agent
