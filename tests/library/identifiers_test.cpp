#include "library/identifiers.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(IdentifiersTest, TheReleasedExtensionBelongsToTheReleasedApplication) {
    const Identifiers names = Identifiers::fromBundle("com.nimbara.app.lockscreen");
    EXPECT_EQ(names.appBundleID, "com.nimbara.app");
    EXPECT_FALSE(names.isDev);
    EXPECT_EQ(names.changedNotification, "com.nimbara.lockscreen.changed");
    EXPECT_EQ(names.groupID, "com.nimbara.shaders");
    EXPECT_EQ(names.groupName, "VantorEngine");
}

TEST(IdentifiersTest, ADevelopmentBuildHasNamesOfItsOwn) {
    const Identifiers names = Identifiers::fromBundle("com.nimbara.app.beta.lockscreen");
    EXPECT_EQ(names.appBundleID, "com.nimbara.app.beta");
    EXPECT_TRUE(names.isDev);
    EXPECT_EQ(names.changedNotification, "com.nimbara.app.beta.lockscreen.changed");
    EXPECT_EQ(names.groupID, "com.nimbara.shaders.dev");
    EXPECT_EQ(names.groupName, "VantorEngine Dev");
}

TEST(IdentifiersTest, WithoutTheSuffixOrABundleTheApplicationIsTheReleasedOne) {
    for (const auto& identifier :
         {std::optional<std::string>(), std::optional<std::string>("com.nimbara.other"),
          std::optional<std::string>("com.nimbara.app.lockscreen.tests"),
          std::optional<std::string>("")}) {
        EXPECT_EQ(Identifiers::fromBundle(identifier).appBundleID, "com.nimbara.app");
        EXPECT_FALSE(Identifiers::fromBundle(identifier).isDev);
    }
}

class PlatformIdentifiersTest : public FakePlatformTest {};

TEST_F(PlatformIdentifiersTest, ThoseOfThePlatformAreItsBundles) {
    platform.bundle().bundleIdentifier = "com.nimbara.app.beta.lockscreen";
    EXPECT_EQ(identifiers(platform).appBundleID, "com.nimbara.app.beta");
    EXPECT_EQ(changedNotification(platform), "com.nimbara.app.beta.lockscreen.changed");
}

} // namespace
} // namespace vantor
