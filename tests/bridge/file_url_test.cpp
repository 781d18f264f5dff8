#include "bridge/file_url.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

std::string text(std::string path) {
    const auto url = FileURL{.path = std::move(path)}.absoluteString();
    return url ? url.value() : "failed: " + url.error().message;
}

TEST(FileURL, IsItsAbsoluteText) {
    EXPECT_EQ(text("/tmp/plasma.png"), "file:///tmp/plasma.png");
    EXPECT_EQ(text("/"), "file:///");
}

TEST(FileURL, EscapesWhatAPathOfAURLCannotHold) {
    EXPECT_EQ(text("/Application Support/a#b?c;d%e"),
              "file:///Application%20Support/a%23b%3Fc%3Bd%25e");
    EXPECT_EQ(text("/[\"\\]"), "file:///%5B%22%5C%5D");
    EXPECT_EQ(text("/-._~!$&'()*+,=:@"), "file:///-._~!$&'()*+,=:@");
}

TEST(FileURL, EscapesTextThatIsNotASCIIByteByByte) {
    EXPECT_EQ(text("/Größe/夜"), "file:///Gr%C3%B6%C3%9Fe/%E5%A4%9C");
    EXPECT_EQ(text("/\xff\x01"), "file:///%FF%01") << "a file may have any name";
}

TEST(FileURL, IsNoneForAPathThatIsNotAbsolute) {
    EXPECT_EQ(text("a.png"), "failed: the path \"a.png\" names no file by itself");
    EXPECT_EQ(text(""), "failed: the path \"\" names no file by itself");
    EXPECT_TRUE(text(std::string("/a\0b", 4)).starts_with("failed: "));
}

TEST(FileURL, EqualsLetterByLetter) {
    EXPECT_EQ(FileURL{"/a/b"}, FileURL{"/a/b"});
    EXPECT_NE(FileURL{"/a/b"}, FileURL{"/a//b"});
}

} // namespace
} // namespace vantor
