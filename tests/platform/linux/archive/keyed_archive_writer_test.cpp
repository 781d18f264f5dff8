#include "platform/linux/archive/keyed_archive_writer.h"

#include "platform/linux/archive/limits.h"
#include "platform/linux/archive/property_list_codec.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor::archive {
namespace {

using ::testing::HasSubstr;

/// The archive's property list.
PropertyList opened(const Bytes& bytes) {
    const auto list = PropertyListCodec().read(bytes);
    EXPECT_TRUE(list.hasValue());
    return list ? list.value() : PropertyList();
}

const PropertyList& at(const PropertyList& archive, std::size_t index) {
    return (*archive.dictionary()->find("$objects")->array())[index];
}

const PropertyList& follow(const PropertyList& archive, const PropertyList* reference) {
    return at(archive, reference->uid()->index);
}

TEST(KeyedArchiveWriter, WritesThePublishedStructure) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable(std::uint32_t{4294967295}, "UInt32"));
    const PropertyList archive = opened(writer.finishObject("Carrier"));
    const PropertyListDictionary& file = *archive.dictionary();
    EXPECT_EQ(*file.find("$version"), PropertyList(100000));
    EXPECT_EQ(*file.find("$archiver"), PropertyList("NSKeyedArchiver"));
    EXPECT_EQ(*file.find("$top"),
              PropertyList(PropertyListDictionary{{"root", PropertyList::UID{1}}}));
    EXPECT_EQ(at(archive, 0), PropertyList("$null"));
    const PropertyListDictionary& root = *at(archive, 1).dictionary();
    EXPECT_EQ(follow(archive, root.find("UInt32")), PropertyList(std::int64_t{4294967295}));
    EXPECT_EQ(
        follow(archive, root.find("$class")),
        PropertyList(PropertyListDictionary{
            {"$classname", "Carrier"}, {"$classes", PropertyList::Array{"Carrier", "NSObject"}}}));
}

TEST(KeyedArchiveWriter, WritesContainersAsObjectsOfTheirClasses) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable(
        PropertyListDictionary{{"list", PropertyList::Array{1, "a"}}}, "Record"));
    const PropertyList archive = opened(writer.finishObject("Carrier"));
    const PropertyListDictionary& record =
        *follow(archive, at(archive, 1).dictionary()->find("Record")).dictionary();
    EXPECT_EQ(*follow(archive, record.find("$class")).dictionary()->find("$classname"),
              PropertyList("NSDictionary"));
    const PropertyList::Array& keys = *record.find("NS.keys")->array();
    const PropertyList::Array& values = *record.find("NS.objects")->array();
    ASSERT_EQ(keys.size(), 1U);
    ASSERT_EQ(values.size(), 1U);
    EXPECT_EQ(follow(archive, &keys[0]), PropertyList("list"));
    const PropertyListDictionary& list = *follow(archive, &values[0]).dictionary();
    EXPECT_EQ(*follow(archive, list.find("$class")).dictionary()->find("$classname"),
              PropertyList("NSArray"));
    EXPECT_EQ(list.find("NS.objects")->array()->size(), 2U);
}

TEST(KeyedArchiveWriter, WritesEqualTextOnceButNeverAsNothing) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable(PropertyList::Array{"$null", "twice", "twice"}, "Record"));
    const PropertyList archive = opened(writer.finishObject("Carrier"));
    const PropertyList::Array& elements =
        *follow(archive, at(archive, 1).dictionary()->find("Record"))
             .dictionary()
             ->find("NS.objects")
             ->array();
    EXPECT_NE(elements[0].uid()->index, 0U);
    EXPECT_EQ(elements[1], elements[2]);
}

TEST(KeyedArchiveWriter, KeepsTheArchivesOwnNamesApartFromAnObjectsKeys) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable("mine", "$class"));
    const PropertyList archive = opened(writer.finishObject("Carrier"));
    EXPECT_EQ(follow(archive, at(archive, 1).dictionary()->find("$$class")), PropertyList("mine"));
}

TEST(KeyedArchiveWriter, RefusesWhatAnArchiveCannotHoldAndKeepsWhatItHad) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable("first", "A"));
    const auto reference = writer.encodeEncodable(PropertyList::Array{PropertyList::UID{1}}, "B");
    ASSERT_FALSE(reference);
    EXPECT_THAT(reference.error().message, HasSubstr("holds an archive reference"));
    PropertyList deep = PropertyList::Array{};
    for (std::size_t level = 0; level < kMaxDepth; ++level) {
        PropertyList::Array outer;
        outer.push_back(std::move(deep));
        deep = PropertyList(std::move(outer));
    }
    const auto tooDeep = writer.encodeEncodable(deep, "C");
    ASSERT_FALSE(tooDeep);
    EXPECT_THAT(tooDeep.error().message, HasSubstr("nests too deeply"));
    const auto again = writer.encodeEncodable("second", "A");
    ASSERT_FALSE(again);
    EXPECT_THAT(again.error().message, HasSubstr("\"A\" is archived already"));
    const PropertyList archive = opened(writer.finishObject("Carrier"));
    const PropertyListDictionary& root = *at(archive, 1).dictionary();
    EXPECT_EQ(root.size(), 2U);
    EXPECT_EQ(follow(archive, root.find("A")), PropertyList("first"));
}

TEST(KeyedArchiveWriter, WritesTextThatReadsAsNothingAsAnObject) {
    KeyedArchiveWriter writer;
    ASSERT_TRUE(writer.encodeEncodable("$null", "Text"));
    const PropertyList archive = opened(writer.finishObject("Carrier"));
    const PropertyList text = follow(archive, at(archive, 1).dictionary()->find("Text"));
    ASSERT_NE(text.dictionary(), nullptr);
    EXPECT_EQ(*text.dictionary()->find("NS.string"), PropertyList("$null"));
}

TEST(KeyedArchiveWriter, WritesAnObjectWithoutKeys) {
    const PropertyList archive = opened(KeyedArchiveWriter().finishObject("Empty"));
    EXPECT_EQ(at(archive, 1).dictionary()->size(), 1U);
}

} // namespace
} // namespace vantor::archive
