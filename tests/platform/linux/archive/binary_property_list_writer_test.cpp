#include "platform/linux/archive/binary_property_list_writer.h"

#include "platform/linux/archive/binary_property_list_reader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace vantor::archive {
namespace {

Bytes written(const PropertyList& value) {
    BinaryPropertyListWriter writer;
    return writer.finish(writer.value(value));
}

void expectRoundTrip(const PropertyList& value) {
    const auto read = readBinaryPropertyList(written(value));
    ASSERT_TRUE(read.hasValue()) << read.error().message;
    EXPECT_EQ(read.value(), value);
}

/// From the trailer.
std::uint64_t objectCount(const Bytes& list) {
    std::uint64_t count = 0;
    for (std::size_t index = list.size() - 24; index < list.size() - 16; ++index) {
        count = count << 8 | list[index];
    }
    return count;
}

TEST(BinaryPropertyListWriter, WritesEveryKindSoThatItReadsBack) {
    expectRoundTrip(true);
    expectRoundTrip(false);
    for (const std::int64_t value :
         {std::int64_t{0}, std::int64_t{255}, std::int64_t{256}, std::int64_t{65536},
          std::int64_t{1} << 32, std::numeric_limits<std::int64_t>::max(), std::int64_t{-1},
          std::numeric_limits<std::int64_t>::min()}) {
        expectRoundTrip(value);
    }
    expectRoundTrip(std::numeric_limits<std::uint64_t>::max());
    expectRoundTrip(0.1);
    expectRoundTrip(-std::numeric_limits<double>::infinity());
    expectRoundTrip(PropertyList::Date{-1e9});
    expectRoundTrip(PropertyList::UID{0});
    expectRoundTrip(PropertyList::UID{0xffffffff});
    expectRoundTrip("");
    expectRoundTrip("plain");
    expectRoundTrip("ä 漢 😀");
    expectRoundTrip(Bytes(70000, 0xab));
    expectRoundTrip(std::string(70000, 'x'));
    expectRoundTrip(PropertyList::Array{});
    expectRoundTrip(PropertyListDictionary{});
    expectRoundTrip(PropertyListDictionary{
        {"b", PropertyList::Array{1, 1.0, true, "1", PropertyListDictionary{{"ü", Bytes{}}}}},
        {"a", "last"}});
}

TEST(BinaryPropertyListWriter, KeepsTheOrderOfKeys) {
    const auto read =
        readBinaryPropertyList(written(PropertyListDictionary{{"z", 1}, {"a", 2}, {"m", 3}}));
    ASSERT_TRUE(read.hasValue());
    const PropertyListDictionary& dictionary = *read.value().dictionary();
    ASSERT_EQ(dictionary.size(), 3U);
    EXPECT_EQ(dictionary.begin()[0].key, "z");
    EXPECT_EQ(dictionary.begin()[1].key, "a");
    EXPECT_EQ(dictionary.begin()[2].key, "m");
}

TEST(BinaryPropertyListWriter, WritesEqualObjectsOnce) {
    const PropertyList entry = PropertyListDictionary{{"name", "value"}};
    // The array, one dictionary, two texts.
    EXPECT_EQ(objectCount(written(PropertyList::Array{entry, entry, entry})), 4U);
    // Equal numbers of different kinds stay apart.
    EXPECT_EQ(objectCount(written(PropertyList::Array{1, 1.0, true, "1", 1})), 5U);
}

TEST(BinaryPropertyListWriter, WidensReferencesWithTheNumberOfObjects) {
    for (const int count : {254, 255, 256, 70000}) {
        PropertyList::Array numbers;
        for (int index = 0; index < count; ++index) {
            numbers.emplace_back(index);
        }
        expectRoundTrip(numbers);
    }
}

TEST(BinaryPropertyListWriter, ReplacesMalformedText) {
    const auto read = readBinaryPropertyList(written("a\xff"
                                                     "b"));
    ASSERT_TRUE(read.hasValue());
    EXPECT_EQ(read.value(), PropertyList("a\xef\xbf\xbd"
                                         "b"));
}

TEST(BinaryPropertyListWriter, KeepsNaN) {
    const auto read = readBinaryPropertyList(written(std::nan("")));
    ASSERT_TRUE(read.hasValue());
    ASSERT_NE(read.value().real(), nullptr);
    EXPECT_TRUE(std::isnan(*read.value().real()));
}

} // namespace
} // namespace vantor::archive
