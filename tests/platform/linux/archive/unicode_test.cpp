#include "platform/linux/archive/unicode.h"

#include <gtest/gtest.h>

namespace vantor::archive {
namespace {

TEST(Unicode, TakesCharactersOfEveryLength) {
    std::string_view text = "aäあ😀";
    bool valid = true;
    EXPECT_EQ(takeCharacter(text, valid), U'a');
    EXPECT_EQ(takeCharacter(text, valid), U'ä');
    EXPECT_EQ(takeCharacter(text, valid), U'あ');
    EXPECT_EQ(takeCharacter(text, valid), U'😀');
    EXPECT_TRUE(text.empty());
    EXPECT_TRUE(valid);
}

TEST(Unicode, TakesMalformedBytesOneAtATime) {
    for (const std::string_view malformed : {"\x80", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80",
                                             "\xf4\x90\x80\x80", "\xf8", "\xc3", "\xe3\x81",
                                             "\xc3"
                                             "a"}) {
        std::string_view text = malformed;
        bool valid = true;
        EXPECT_EQ(takeCharacter(text, valid), kReplacementCharacter);
        EXPECT_FALSE(valid);
        EXPECT_EQ(text.size(), malformed.size() - 1);
    }
}

TEST(Unicode, NeverAppendsWhatIsNoCharacter) {
    std::string out;
    appendUTF8(out, 0xd800);
    appendUTF8(out, 0x110000);
    EXPECT_EQ(out, "\xef\xbf\xbd\xef\xbf\xbd");
}

} // namespace
} // namespace vantor::archive
