#include "platform/property_list.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantor {
namespace {

TEST(PropertyList, ViewsNeverConvertBetweenKinds) {
    EXPECT_EQ(PropertyList(1).boolean(), nullptr);
    EXPECT_EQ(PropertyList(true).integer(), nullptr);
    EXPECT_EQ(PropertyList(1).real(), nullptr);
    EXPECT_EQ(PropertyList("1").integer(), nullptr);
    EXPECT_NE(PropertyList("text").string(), nullptr);
}

TEST(PropertyList, KeepsUnsignedIntegersOnlyAboveTheSignedRange) {
    constexpr auto kLargest = std::numeric_limits<std::uint64_t>::max();
    ASSERT_NE(PropertyList(kLargest).unsignedInteger(), nullptr);
    EXPECT_EQ(*PropertyList(kLargest).unsignedInteger(), kLargest);
    ASSERT_NE(PropertyList(std::uint64_t{7}).integer(), nullptr);
    EXPECT_EQ(PropertyList(std::uint64_t{7}), PropertyList(7));
}

TEST(PropertyList, ReadsEveryNumberAsADouble) {
    double out = -1;
    EXPECT_TRUE(PropertyList(true).numberAsDouble(out));
    EXPECT_EQ(out, 1.0);
    EXPECT_TRUE(PropertyList(-3).numberAsDouble(out));
    EXPECT_EQ(out, -3.0);
    EXPECT_TRUE(PropertyList(0.25).numberAsDouble(out));
    EXPECT_EQ(out, 0.25);
    EXPECT_FALSE(PropertyList("1").numberAsDouble(out));
}

TEST(PropertyList, DictionariesKeepInsertionOrderAndReplaceInPlace) {
    PropertyListDictionary dictionary{{"b", 1}, {"a", 2}};
    dictionary.set("b", 3);
    dictionary.set("c", 4);
    ASSERT_EQ(dictionary.size(), 3U);
    EXPECT_EQ(dictionary.begin()[0].key, "b");
    EXPECT_EQ(*dictionary.find("b"), PropertyList(3));
    EXPECT_EQ(dictionary.begin()[2].key, "c");
    EXPECT_TRUE(dictionary.erase("a"));
    EXPECT_FALSE(dictionary.erase("a"));
    EXPECT_EQ(dictionary.find("a"), nullptr);
}

TEST(PropertyList, DictionariesAreEqualInAnyOrder) {
    const PropertyListDictionary one{{"a", 1}, {"b", "x"}};
    const PropertyListDictionary other{{"b", "x"}, {"a", 1}};
    EXPECT_EQ(one, other);
    EXPECT_FALSE(one == (PropertyListDictionary{{"a", 1}, {"b", "y"}}));
}

} // namespace
} // namespace vantor
