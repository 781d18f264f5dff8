#include "platform/linux/archive/property_list_codec.h"

#include "platform/linux/archive/limits.h"
#include "tests/platform/linux/archive/archive_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor {
namespace {

using ::testing::HasSubstr;

TEST(PropertyListCodec, TellsTheEncodingsApart) {
    PropertyListCodec codec;
    const PropertyList expected = PropertyListDictionary{{"a", "b"}};
    EXPECT_EQ(codec.read(codec.writeBinary(expected)).value(), expected);
    EXPECT_EQ(
        codec.read(bytesOf("<plist><dict><key>a</key><string>b</string></dict></plist>")).value(),
        expected);
    EXPECT_EQ(codec
                  .read(bytesOf("\xef\xbb\xbf\n<?xml version='1.0'?><plist><dict><key>a</key>"
                                "<string>b</string></dict></plist>"))
                  .hasValue(),
              false)
        << "an XML declaration comes first or not at all";
    EXPECT_EQ(codec.read(bytesOf("{a = b;}")).value(), expected);
    EXPECT_EQ(codec.read(bytesOf("\xef\xbb\xbf{a = b;}")).value(), expected);
    EXPECT_EQ(codec.read(bytesOf(" <ab>")).value(), PropertyList(Bytes{0xab}));
}

TEST(PropertyListCodec, RefusesOtherBytesWithAReason) {
    PropertyListCodec codec;
    EXPECT_THAT(codec.read({}).error().message, HasSubstr("holds no value"));
    EXPECT_THAT(codec.read(bytesOf("bplist15xxxxxxxx")).error().message,
                HasSubstr("unknown version"));
    EXPECT_EQ(codec.read({}).error().domain, "NSCocoaErrorDomain");
    EXPECT_EQ(codec.read({}).error().code, 3840);
}

TEST(PropertyListCodec, RefusesListsOverTheSizeLimit) {
    EXPECT_THAT(PropertyListCodec().read(Bytes(archive::kMaxEncodedBytes + 1, 'a')).error().message,
                HasSubstr("of 16777217 bytes exceeds the limit of 16777216"));
}

} // namespace
} // namespace vantor
