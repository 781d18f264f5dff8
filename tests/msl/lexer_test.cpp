#include <gtest/gtest.h>

#include "tests/msl/stages_test_support.h"

namespace msl::tests {
namespace {

TEST(LexerTest, LongestPunctuatorWins) {
    Stages stages("a<<=b>>=c->d++ +e::f...");
    EXPECT_EQ(stages.spelled(), "a <<= b >>= c -> d ++ + e :: f ...");
}

TEST(LexerTest, CommentsAndSplicesSeparateNothingButThemselves) {
    Stages stages("a/* x */b // c\n/**/d va\\\nlue 1\\\n2");
    EXPECT_EQ(stages.spelled(), "a b d value 12");
}

TEST(LexerTest, NumbersKeepTheirSuffixesAndExponents) {
    Stages stages("1.5e-3f 0x1F .5h 0x1.8p+2 7u 1e5");
    EXPECT_EQ(stages.spelled(), "1.5e-3f 0x1F .5h 0x1.8p+2 7u 1e5");
}

TEST(LexerTest, PlacesCountLinesAndColumnsFromOne) {
    Stages stages("a\n  bc");
    const auto tokens = stages.tokens();
    const auto place = stages.sources.resolve(tokens[1].location);
    EXPECT_EQ(place.line, 2U);
    EXPECT_EQ(place.column, 3U);
}

} // namespace
} // namespace msl::tests
