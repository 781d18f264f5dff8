#include "platform/linux/archive/xml_property_list_reader.h"

#include "platform/linux/archive/limits.h"
#include "tests/platform/linux/archive/archive_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace vantor::archive {
namespace {

using ::testing::HasSubstr;

Result<PropertyList> readXML(std::string_view text) { return readXMLPropertyList(bytesOf(text)); }

PropertyList parsed(std::string_view body) {
    const auto list = readXML("<plist version=\"1.0\">" + std::string(body) + "</plist>");
    EXPECT_TRUE(list.hasValue()) << body << ": " << list.error().message;
    return list ? list.value() : PropertyList();
}

std::string whyNot(std::string_view text) {
    const auto list = readXML(text);
    return list ? "it was read" : list.error().message;
}

std::string repeated(std::string_view text, std::size_t count) {
    std::string out;
    out.reserve(text.size() * count);
    for (std::size_t index = 0; index < count; ++index) {
        out += text;
    }
    return out;
}

TEST(XMLPropertyListReader, ReadsEveryKind) {
    EXPECT_EQ(parsed("<string>a &lt; b &amp; ä</string>"), PropertyList("a < b & ä"));
    EXPECT_EQ(parsed("<string/>"), PropertyList(""));
    EXPECT_EQ(parsed("<string><![CDATA[<x>]]></string>"), PropertyList("<x>"));
    EXPECT_EQ(parsed("<integer>-5</integer>"), PropertyList(-5));
    EXPECT_EQ(parsed("<integer> 0x1F\n</integer>"), PropertyList(31));
    EXPECT_EQ(parsed("<integer>18446744073709551615</integer>"),
              PropertyList(std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(parsed("<integer>-9223372036854775808</integer>"),
              PropertyList(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(parsed("<real>1.5e3</real>"), PropertyList(1500.0));
    EXPECT_EQ(parsed("<real>-infinity</real>"),
              PropertyList(-std::numeric_limits<double>::infinity()));
    EXPECT_EQ(parsed("<true/>"), PropertyList(true));
    EXPECT_EQ(parsed("<false></false>"), PropertyList(false));
    EXPECT_EQ(parsed("<date>2001-01-02T00:00:01Z</date>"), PropertyList(PropertyList::Date{86401}));
    EXPECT_EQ(parsed("<data>\n\tAQID\n\tBA==\n</data>"), PropertyList(Bytes{1, 2, 3, 4}));
    EXPECT_EQ(parsed("<array><true/> <array/> </array>"),
              PropertyList(PropertyList::Array{true, PropertyList::Array{}}));
    EXPECT_EQ(parsed("<dict><key>a</key><integer>1</integer><key/><dict/></dict>"),
              PropertyList(PropertyListDictionary{{"a", 1}, {"", PropertyListDictionary{}}}));
}

TEST(XMLPropertyListReader, ReadsArchiveReferences) {
    EXPECT_EQ(parsed("<dict><key>CF$UID</key><integer>7</integer></dict>"),
              PropertyList(PropertyList::UID{7}));
    EXPECT_EQ(parsed("<dict><key>CF$UID</key><integer>-1</integer></dict>"),
              PropertyList(PropertyListDictionary{{"CF$UID", -1}}));
}

TEST(XMLPropertyListReader, ReadsOtherEncodingsOfText) {
    Bytes utf16{0xff, 0xfe};
    for (const char character : std::string_view("<plist><string>ok</string></plist>")) {
        utf16.push_back(static_cast<std::uint8_t>(character));
        utf16.push_back(0);
    }
    const auto list = readXMLPropertyList(utf16);
    ASSERT_TRUE(list.hasValue()) << list.error().message;
    EXPECT_EQ(list.value(), PropertyList("ok"));
    EXPECT_EQ(readXML("<?xml version='1.0' encoding='ISO-8859-1'?><plist><string>\xe4</string>"
                      "</plist>")
                  .value(),
              PropertyList("ä"));
}

TEST(XMLPropertyListReader, RefusesMalformedLists) {
    EXPECT_THAT(whyNot("<plist><dict><key>a</key></dict></plist>"),
                HasSubstr("a key without a value"));
    EXPECT_THAT(whyNot("<plist><dict><true/></dict></plist>"), HasSubstr("a value without a key"));
    EXPECT_THAT(whyNot("<plist><dict><key>a</key><key>b</key></dict></plist>"),
                HasSubstr("a key where none belongs"));
    EXPECT_THAT(whyNot("<plist><key>a</key></plist>"), HasSubstr("a key where none belongs"));
    EXPECT_THAT(whyNot("<plist><array>text</array></plist>"),
                HasSubstr("text outside of a value at line 1"));
    EXPECT_THAT(whyNot("<plist><string>a<true/></string></plist>"),
                HasSubstr("<true> within text"));
    EXPECT_THAT(whyNot("<plist>\n<set/></plist>"), HasSubstr("malformed <set> at line 2"));
    EXPECT_THAT(whyNot("<plist><true/><true/></plist>"), HasSubstr("a second root"));
    EXPECT_THAT(whyNot("<plist></plist>"), HasSubstr("holds no value"));
    EXPECT_THAT(whyNot("<plist><array></plist>"), HasSubstr("is malformed at line 1"));
    EXPECT_THAT(whyNot("<plist><integer>1x</integer></plist>"), HasSubstr("malformed <integer>"));
    EXPECT_THAT(whyNot("<plist><array><plist/></array></plist>"), HasSubstr("<plist> within"));
}

TEST(XMLPropertyListReader, RefusesDeclaredEntities) {
    EXPECT_THAT(whyNot("<!DOCTYPE plist [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;\">]>"
                       "<plist><string>&b;</string></plist>"),
                HasSubstr("declares an entity"));
    EXPECT_THAT(whyNot("<!DOCTYPE plist [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>"
                       "<plist><string>&x;</string></plist>"),
                HasSubstr("declares an entity"));
}

TEST(XMLPropertyListReader, TakesTheUsualDocumentType) {
    const auto list = readXML(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST "
        "1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">"
        "<!-- note --><true/></plist>\n");
    ASSERT_TRUE(list.hasValue()) << list.error().message;
    EXPECT_EQ(list.value(), PropertyList(true));
}

TEST(XMLPropertyListReader, ReadsListsUpToTheDepthLimitAndNoDeeper) {
    const auto nested = [](std::size_t depth) {
        return "<plist>" + repeated("<array>", depth) + repeated("</array>", depth) + "</plist>";
    };
    EXPECT_TRUE(readXML(nested(kMaxDepth)).hasValue());
    EXPECT_THAT(whyNot(nested(kMaxDepth + 1)), HasSubstr("deeper than the limit of 512"));
    EXPECT_THAT(whyNot(nested(500000)), HasSubstr("deeper than the limit of 512"));
}

TEST(XMLPropertyListReader, RefusesMoreValuesThanTheLimit) {
    EXPECT_THAT(
        whyNot("<plist><array>" + repeated("<true/>", kMaxExpandedValues + 1) + "</array></plist>"),
        HasSubstr("expands beyond the limit"));
}

} // namespace
} // namespace vantor::archive
