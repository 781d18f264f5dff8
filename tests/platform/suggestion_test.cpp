#include "platform/suggestion.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

constexpr std::string_view kNames[] = {"builtin.elec-pcb", "builtin.planet-jupiter", "aurora",
                                       "plasma"};

TEST(DidYouMean, AFewWrongLettersFindTheName) {
    EXPECT_EQ(didYouMean("plasme", kNames), "; did you mean \"plasma\"?");
    EXPECT_EQ(didYouMean("palsma", kNames), "; did you mean \"plasma\"?");
    EXPECT_EQ(didYouMean("Aurora", kNames), "; did you mean \"aurora\"?");
    EXPECT_EQ(didYouMean("builtin.elec-pbc", kNames), "; did you mean \"builtin.elec-pcb\"?");
}

TEST(DidYouMean, ThePrefixMayBeMissingOrTooMuch) {
    EXPECT_EQ(didYouMean("elec-pbc", kNames), "; did you mean \"builtin.elec-pcb\"?");
    EXPECT_EQ(didYouMean("builtin.aurora", kNames), "; did you mean \"aurora\"?");
    EXPECT_EQ(didYouMean("jupiter", kNames), "; did you mean \"builtin.planet-jupiter\"?");
}

TEST(DidYouMean, AWordThatIsNothingLikeThemGivesNoAdvice) {
    EXPECT_EQ(didYouMean("waves.metal", kNames), "");
    EXPECT_EQ(didYouMean("", kNames), "");
    EXPECT_EQ(didYouMean("in", kNames), "");
    EXPECT_EQ(didYouMean(std::string(100000, 'a'), kNames), "");
}

} // namespace
} // namespace vantor
