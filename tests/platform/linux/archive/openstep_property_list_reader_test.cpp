#include "platform/linux/archive/openstep_property_list_reader.h"

#include "platform/linux/archive/limits.h"
#include "tests/platform/linux/archive/archive_bytes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor::archive {
namespace {

using ::testing::HasSubstr;

PropertyList parsed(std::string_view text) {
    const auto list = readOpenStepPropertyList(bytesOf(text));
    EXPECT_TRUE(list.hasValue()) << text << ": " << list.error().message;
    return list ? list.value() : PropertyList();
}

std::string whyNot(std::string_view text) {
    const auto list = readOpenStepPropertyList(bytesOf(text));
    return list ? "it was read" : list.error().message;
}

TEST(OpenStepPropertyListReader, ReadsContainersTextAndData) {
    EXPECT_EQ(parsed("{ a = b; \"c d\" = ( 1, x/y.z, ); e = <01 fF>; f = {}; g = (); }"),
              PropertyList(PropertyListDictionary{{"a", "b"},
                                                  {"c d", PropertyList::Array{"1", "x/y.z"}},
                                                  {"e", Bytes{0x01, 0xff}},
                                                  {"f", PropertyListDictionary{}},
                                                  {"g", PropertyList::Array{}}}));
}

TEST(OpenStepPropertyListReader, NumbersStayText) { EXPECT_EQ(parsed("12"), PropertyList("12")); }

TEST(OpenStepPropertyListReader, ReadsEntriesWithoutBracesAsADictionary) {
    EXPECT_EQ(parsed("/* greeting */ \"hello\" = \"world\"; // end\n self;"),
              PropertyList(PropertyListDictionary{{"hello", "world"}, {"self", "self"}}));
}

TEST(OpenStepPropertyListReader, ReadsEscapes) {
    EXPECT_EQ(parsed(R"("a\n\t\\\"\U00e4\101")"), PropertyList("a\n\t\\\"äA"));
    EXPECT_EQ(parsed(R"('\Ud83d\Ude00 \Ud83dx')"), PropertyList("😀 \xef\xbf\xbdx"));
}

TEST(OpenStepPropertyListReader, ReadsOctalEscapesInTheNeXTSTEPEncoding) {
    EXPECT_EQ(parsed(R"("\341\256\377")"), PropertyList("Æﬁ\xef\xbf\xbd"));
}

TEST(OpenStepPropertyListReader, RefusesMalformedLists) {
    EXPECT_THAT(whyNot(""), HasSubstr("holds no value"));
    EXPECT_THAT(whyNot("{ a = b }"), HasSubstr("lacks a semicolon"));
    EXPECT_THAT(whyNot("{ a = b;"), HasSubstr("lacks a closing brace"));
    EXPECT_THAT(whyNot("( a b )"), HasSubstr("lacks a comma"));
    EXPECT_THAT(whyNot("\"open"), HasSubstr("without a closing quote"));
    EXPECT_THAT(whyNot("\"open\\"), HasSubstr("without a closing quote"));
    EXPECT_THAT(whyNot("<012>"), HasSubstr("half a byte"));
    EXPECT_THAT(whyNot("<01"), HasSubstr("without an end"));
    EXPECT_THAT(whyNot("<0x>"), HasSubstr("no hexadecimal digit"));
    EXPECT_THAT(whyNot("a b"), HasSubstr("text after its value"));
    EXPECT_THAT(whyNot("{ a = ; }"), HasSubstr("a character where a value belongs"));
    EXPECT_THAT(whyNot("a = b; }"), HasSubstr("text after its entries"));
    EXPECT_THAT(whyNot("(\n\n*)"), HasSubstr("at line 3"));
    EXPECT_THAT(whyNot("\xff"), HasSubstr("no UTF-8"));
}

TEST(OpenStepPropertyListReader, RefusesListsNestedTooDeep) {
    EXPECT_THAT(whyNot(std::string(kMaxDepth, '(') + std::string(kMaxDepth, ')')), "it was read");
    EXPECT_THAT(whyNot(std::string(500000, '(')), HasSubstr("deeper than the limit of 512"));
    std::string braces;
    for (int level = 0; level < 100000; ++level) {
        braces += "{a=";
    }
    EXPECT_THAT(whyNot(braces), HasSubstr("deeper than the limit of 512"));
}

} // namespace
} // namespace vantor::archive
