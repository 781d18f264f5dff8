#include "tools/gallery_page.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

std::string encoded(std::string_view text) {
    return base64({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

TEST(GalleryPage, Base64IsThatOfRFC4648) {
    EXPECT_EQ(encoded(""), "");
    EXPECT_EQ(encoded("f"), "Zg==");
    EXPECT_EQ(encoded("fo"), "Zm8=");
    EXPECT_EQ(encoded("foo"), "Zm9v");
    EXPECT_EQ(encoded("foobar"), "Zm9vYmFy");
    EXPECT_EQ(encoded("\xfb\xff\xbf"), "+/+/");
}

TEST(GalleryPage, EveryPictureStandsInThePageWithTitleAndIdentifier) {
    const GalleryPicture pictures[] = {
        {.id = "one", .title = "One · A", .png = {'f', 'o', 'o'}},
        {.id = "two", .title = "<Two> & \"more\"", .png = {'b', 'a', 'r'}}};
    const std::string page = galleryPage(pictures, 640, 360, 1.5F);
    EXPECT_NE(page.find("data:image/png;base64,Zm9v\" width=\"640\" height=\"360\""),
              std::string::npos);
    EXPECT_NE(page.find("data:image/png;base64,YmFy"), std::string::npos);
    EXPECT_NE(page.find("<code>one</code>"), std::string::npos);
    EXPECT_NE(page.find(">One · A<"), std::string::npos);
    EXPECT_NE(page.find(">&lt;Two&gt; &amp; &quot;more&quot;<"), std::string::npos);
    EXPECT_NE(page.find("2 shaders"), std::string::npos);
    EXPECT_NE(page.find("1.5 seconds"), std::string::npos);
    EXPECT_EQ(page.find("{{"), std::string::npos) << "every place of the template is filled";
}

TEST(GalleryPage, NothingBesideThePageIsNeeded) {
    const std::string page = galleryPage({}, 640, 360, 12);
    for (const char* reference : {"http:", "https:", "src=\"/", "href=", "url(", "@import"}) {
        EXPECT_EQ(page.find(reference), std::string::npos) << reference;
    }
}

} // namespace
} // namespace vantor
