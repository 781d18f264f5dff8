#include "tools/json.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantor {
namespace {

TEST(ToJSON, NestsWithTwoSpacesInTheOrderOfTheKeys) {
    EXPECT_EQ(toJSON(PropertyListDictionary{{"b", PropertyList::Array{1, true, 0.5}},
                                            {"a", PropertyListDictionary{}},
                                            {"c", PropertyList::Array{}}}),
              "{\n  \"b\": [\n    1,\n    true,\n    0.5\n  ],\n  \"a\": {},\n  \"c\": []\n}\n");
}

TEST(ToJSON, EscapesWhatJSONCannotHoldAndKeepsTheRest) {
    EXPECT_EQ(toJSON(PropertyList("a\"b\\c\n\r\t\x01\x1f · é")),
              "\"a\\\"b\\\\c\\n\\r\\t\\u0001\\u001f · é\"\n");
}

TEST(ToJSON, NumbersReadBackAsTheyWere) {
    EXPECT_EQ(toJSON(0.1), "0.1\n");
    EXPECT_EQ(toJSON(-1e300), "-1e+300\n");
    EXPECT_EQ(toJSON(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615\n");
    EXPECT_EQ(toJSON(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808\n");
    EXPECT_EQ(toJSON(std::numeric_limits<double>::infinity()), "null\n");
}

TEST(ToJSON, KindsWithoutAWordOfTheirOwnBecomeNumbers) {
    EXPECT_EQ(toJSON(Bytes{1, 2, 3}), "3\n");
    EXPECT_EQ(toJSON(PropertyList::Date{2.5}), "2.5\n");
    EXPECT_EQ(toJSON(PropertyList::UID{9}), "9\n");
}

} // namespace
} // namespace vantor
