#include "platform/linux/archive/binary_property_list_reader.h"

#include "platform/linux/archive/limits.h"
#include "tests/platform/linux/archive/archive_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace vantor::archive {
namespace {

using ::testing::HasSubstr;

std::string whyNot(const Bytes& bytes) {
    const auto list = readBinaryPropertyList(bytes);
    return list ? "it was read" : list.error().message;
}

PropertyList single(std::vector<std::uint8_t> encoded) {
    const auto list = readBinaryPropertyList(RawBinaryList().object(std::move(encoded)).finish());
    EXPECT_TRUE(list.hasValue()) << list.error().message;
    return list ? list.value() : PropertyList();
}

TEST(BinaryPropertyListReader, ReadsIntegersOfEveryWidth) {
    EXPECT_EQ(single({0x10, 0xff}), PropertyList(255));
    EXPECT_EQ(single({0x11, 0xff, 0xff}), PropertyList(65535));
    EXPECT_EQ(single({0x12, 0xff, 0xff, 0xff, 0xff}), PropertyList(std::int64_t{4294967295}));
    EXPECT_EQ(single({0x13, 0x80, 0, 0, 0, 0, 0, 0, 0}),
              PropertyList(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(
        single({0x14, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}),
        PropertyList(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(single({0x14, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff,
                      0xff, 0xff, 0xff, 0xfe}),
              PropertyList(-2));
}

TEST(BinaryPropertyListReader, RefusesIntegersBeyond64Bits) {
    EXPECT_THAT(whyNot(RawBinaryList()
                           .object({0x14, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0})
                           .finish()),
                HasSubstr("beyond 64 bits"));
}

TEST(BinaryPropertyListReader, ReadsRealsDatesDataAndReferences) {
    EXPECT_EQ(single({0x22, 0x3f, 0x80, 0, 0}), PropertyList(1.0));
    EXPECT_EQ(single({0x23, 0xbf, 0xe0, 0, 0, 0, 0, 0, 0}), PropertyList(-0.5));
    EXPECT_EQ(single({0x33, 0x40, 0x59, 0, 0, 0, 0, 0, 0}),
              PropertyList(PropertyList::Date{100.0}));
    EXPECT_EQ(single({0x42, 1, 2}), PropertyList(Bytes{1, 2}));
    EXPECT_EQ(single({0x83, 0xff, 0xff, 0xff, 0xff}), PropertyList(PropertyList::UID{0xffffffff}));
    EXPECT_EQ(single({0x08}), PropertyList(false));
    EXPECT_EQ(single({0x09}), PropertyList(true));
}

TEST(BinaryPropertyListReader, ReadsUTF16WithSurrogatePairsAndReplacesLoneOnes) {
    EXPECT_EQ(single({0x63, 0x00, 0xe4, 0xd8, 0x3d, 0xde, 0x00}), PropertyList("ä😀"));
    EXPECT_EQ(single({0x62, 0xd8, 0x3d, 0x00, 0x41}), PropertyList("\xef\xbf\xbd"
                                                                   "A"));
}

TEST(BinaryPropertyListReader, ReadsASharedObjectWhereverItIsReferredTo) {
    const auto list = readBinaryPropertyList(RawBinaryList()
                                                 .object({0xa2, 1, 1})
                                                 .object({0xd1, 2, 3})
                                                 .object({0x51, 'k'})
                                                 .object({0x10, 7})
                                                 .finish());
    ASSERT_TRUE(list.hasValue()) << list.error().message;
    const PropertyList entry = PropertyListDictionary{{"k", 7}};
    EXPECT_EQ(list.value(), PropertyList(PropertyList::Array{entry, entry}));
}

TEST(BinaryPropertyListReader, RefusesACycleByName) {
    EXPECT_THAT(whyNot(RawBinaryList().object({0xa1, 1}).object({0xa1, 0}).finish()),
                HasSubstr("contains itself"));
}

TEST(BinaryPropertyListReader, RefusesAListOfSharedListsThatWouldExpandWithoutEnd) {
    RawBinaryList list;
    for (std::uint8_t level = 0; level < 40; ++level) {
        const auto next = static_cast<std::uint8_t>(level + 1);
        list.object({0xa8, next, next, next, next, next, next, next, next});
    }
    list.object({0x09});
    EXPECT_THAT(whyNot(list.finish()), HasSubstr("expands beyond the limit"));
}

TEST(BinaryPropertyListReader, CountsTheBytesOfSharedTextEachTimeItIsReferredTo) {
    RawBinaryList list;
    std::vector<std::uint8_t> outer{0xaf, 0x10, 200};
    outer.insert(outer.end(), 200, 1);
    std::vector<std::uint8_t> text{0x5f, 0x12, 0, 4, 0, 0};
    text.insert(text.end(), std::size_t{4} << 16, 'x');
    EXPECT_THAT(whyNot(list.object(outer).object(text).finish()),
                HasSubstr("expands beyond the limit"));
}

TEST(BinaryPropertyListReader, PaysForContainersBeforeItMakesThem) {
    // Every level announces as many elements as there are bytes, over and over the same ones.
    RawBinaryList list;
    std::vector<std::uint8_t> level{0xaf, 0x12, 0, 2, 0, 0};
    level.insert(level.end(), std::size_t{2} << 16, 1);
    list.object(level).object({0xa1, 0});
    EXPECT_THAT(whyNot(list.finish()), HasSubstr("contains itself"));
    RawBinaryList chain;
    for (std::uint8_t depth = 0; depth < 10; ++depth) {
        level.assign({0xaf, 0x12, 0, 1, 0, 0});
        level.insert(level.end(), std::size_t{1} << 16, static_cast<std::uint8_t>(depth + 1));
        chain.object(level);
    }
    chain.object({0x09});
    EXPECT_THAT(whyNot(chain.finish()), HasSubstr("expands beyond the limit"));
}

TEST(BinaryPropertyListReader, ReadsListsUpToTheDepthLimitAndNoDeeper) {
    const auto nested = [](std::size_t depth) {
        RawBinaryList list(2);
        for (std::size_t level = 1; level < depth; ++level) {
            list.object(
                {0xa1, static_cast<std::uint8_t>(level >> 8), static_cast<std::uint8_t>(level)});
        }
        return list.object({0xa0}).finish();
    };
    EXPECT_TRUE(readBinaryPropertyList(nested(kMaxDepth)).hasValue());
    EXPECT_THAT(whyNot(nested(kMaxDepth + 1)), HasSubstr("deeper than the limit of 512"));
}

TEST(BinaryPropertyListReader, RefusesListsNestedHalfAMillionDeep) {
    RawBinaryList list(4);
    constexpr std::uint32_t kLevels = 262144;
    for (std::uint32_t level = 1; level < kLevels; ++level) {
        list.object({0xa1, static_cast<std::uint8_t>(level >> 24),
                     static_cast<std::uint8_t>(level >> 16), static_cast<std::uint8_t>(level >> 8),
                     static_cast<std::uint8_t>(level)});
    }
    list.object({0xa0});
    EXPECT_THAT(whyNot(list.finish()), HasSubstr("deeper than the limit"));
    for (std::uint32_t level = kLevels; level < 500000; ++level) {
        list.object({0xa0});
    }
    EXPECT_THAT(whyNot(list.finish()), HasSubstr("of 500000 objects exceeds the limit of 262144"));
}

TEST(BinaryPropertyListReader, RefusesCountsAndOffsetsThatTheBytesDoNotHold) {
    const RawBinaryList list = RawBinaryList().object({0x09});
    EXPECT_THAT(whyNot(list.finish(0, std::uint64_t{1} << 63)),
                HasSubstr("of 9223372036854775808 objects exceeds the limit"));
    EXPECT_THAT(whyNot(list.finish(0, 2)), HasSubstr("outside the bytes"));
    EXPECT_THAT(whyNot(list.finish(1)), HasSubstr("names object 1 of 1 as its root"));
    EXPECT_THAT(whyNot(list.finish(0, 1, std::numeric_limits<std::uint64_t>::max())),
                HasSubstr("outside the bytes"));
    EXPECT_THAT(whyNot(list.finish(0, 0)), HasSubstr("names object 0 of 0"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0x09}).objectAt(1 << 20).finish(1)),
                HasSubstr("outside the object table"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0x09}).objectAt(7).finish(1)),
                HasSubstr("outside the object table"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0xa1, 9}).finish()),
                HasSubstr("refers to object 9 of 1"));
    EXPECT_THAT(whyNot(bytesOf("bplist00")), HasSubstr("too short"));
}

TEST(BinaryPropertyListReader, RefusesLengthsThatTheBytesDoNotHold) {
    for (const unsigned kind : {0x40U, 0x50U, 0x60U, 0xa0U, 0xd0U}) {
        EXPECT_THAT(
            whyNot(RawBinaryList()
                       .object({static_cast<std::uint8_t>(kind | 0x0f), 0x12, 0x80, 0, 0, 0})
                       .finish()),
            HasSubstr("than the bytes that are there"))
            << kind;
        EXPECT_THAT(whyNot(RawBinaryList()
                               .object({static_cast<std::uint8_t>(kind | 0x0f), 0x13, 0xff, 0xff,
                                        0xff, 0xff, 0xff, 0xff, 0xff, 0xff})
                               .finish()),
                    HasSubstr("than the bytes that are there"))
            << kind;
    }
    EXPECT_THAT(whyNot(RawBinaryList().object({0x13, 0, 0}).finish()), HasSubstr("malformed"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0x33, 0, 0}).finish()), HasSubstr("malformed date"));
}

TEST(BinaryPropertyListReader, RefusesWhatNoPropertyListHolds) {
    EXPECT_THAT(whyNot(RawBinaryList().object({0x00}).finish()), HasSubstr("unknown kind 0"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0xc1, 1}).object({0x09}).finish()),
                HasSubstr("unknown kind"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0x51, 0xe4}).finish()), HasSubstr("ASCII"));
    EXPECT_THAT(whyNot(RawBinaryList().object({0xd1, 1, 1}).object({0x10, 1}).finish()),
                HasSubstr("is a key and no text"));
}

} // namespace
} // namespace vantor::archive
