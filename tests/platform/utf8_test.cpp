#include "platform/utf8.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(UTF8, TakesEveryWellFormedText) {
    EXPECT_TRUE(isUTF8(""));
    EXPECT_TRUE(isUTF8(std::string_view("a\0b", 3)));
    EXPECT_TRUE(isUTF8("ä あ 😀 \xef\xbf\xbf \xf4\x8f\xbf\xbf \xed\x9f\xbf"));
}

TEST(UTF8, RefusesTruncatedOverlongAndForbiddenForms) {
    for (const std::string_view text :
         {"\x80", "a\xc3", "\xe3\x81", "\xf0\x9f\x98", "\xc0\x80", "\xc1\xbf", "\xe0\x9f\xbf",
          "\xf0\x8f\xbf\xbf", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xff",
          "\xc3(", "\xe3\x81("}) {
        EXPECT_FALSE(isUTF8(text)) << testing::PrintToString(text);
    }
}

} // namespace
} // namespace vantor
