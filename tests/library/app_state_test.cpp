#include "library/app_state.h"
#include "tests/support/fake_platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace vantor {
namespace {

using testing::ElementsAre;

class AppStateTest : public FakePlatformTest {
  protected:
    std::filesystem::path file() const { return platform.bundle().home / "LockScreen.plist"; }
    void write(std::string_view text) const { std::ofstream(file(), std::ios::binary) << text; }
    std::optional<PropertyListDictionary> read() { return readAppState(platform, file()); }
    std::string unreadable(int code) const {
        return "app state unreadable (" + std::to_string(code) + ")";
    }
};

TEST_F(AppStateTest, TheFileStandsInTheApplicationsContainerUnderTheRealHome) {
    EXPECT_EQ(realHome(platform), *platform.bundle().userHome);
    EXPECT_EQ(appStateURL(platform),
              *platform.bundle().userHome /
                  "Library/Containers/com.nimbara.app/Data/Library/Application Support/"
                  "VantorEngine/LockScreen.plist");
    platform.bundle().bundleIdentifier = "com.nimbara.app.beta.lockscreen";
    EXPECT_NE(appStateURL(platform).string().find("Containers/com.nimbara.app.beta/Data"),
              std::string::npos);
}

TEST_F(AppStateTest, WithoutAnEntryInTheUserDatabaseTheHomeIsTheProcessesOwn) {
    platform.bundle().userHome = std::nullopt;
    EXPECT_EQ(realHome(platform), platform.bundle().home);
}

TEST_F(AppStateTest, EveryEncodingOfTheDictionaryIsRead) {
    const PropertyListDictionary expected{
        {.key = "desktop", .value = PropertyListDictionary{{.key = "main", .value = "1"}}}};
    write("{ desktop = { main = \"1\"; }; }");
    EXPECT_EQ(read(), expected);
    write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>desktop</key>"
          "<dict><key>main</key><string>1</string></dict></dict></plist>");
    EXPECT_EQ(read(), expected);
    const Bytes binary = platform.propertyLists().writeBinary(expected);
    write({reinterpret_cast<const char*>(binary.data()), binary.size()});
    EXPECT_EQ(read(), expected);
    EXPECT_THAT(log(), ElementsAre());
}

TEST_F(AppStateTest, AFileThatCannotBeReadIsLoggedWithTheSystemsNumber) {
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_THAT(log(), ElementsAre(unreadable(ENOENT)));
    std::filesystem::create_directory(file());
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_EQ(logged(unreadable(EISDIR)), 1U);
}

TEST_F(AppStateTest, AFileThatMayNotBeReadIsLoggedWithTheSystemsNumber) {
    write("{}");
    std::filesystem::permissions(file(), std::filesystem::perms::none);
    // No permission keeps root from a file.
    constexpr uid_t kNobody = 65534;
    const bool isRoot = geteuid() == 0;
    std::filesystem::permissions(platform.bundle().home, std::filesystem::perms::all);
    ASSERT_TRUE(!isRoot || seteuid(kNobody) == 0);
    EXPECT_EQ(read(), std::nullopt);
    ASSERT_TRUE(!isRoot || seteuid(0) == 0);
    EXPECT_EQ(logged(unreadable(EACCES)), 1U);
}

TEST_F(AppStateTest, APipeInTheFilesPlaceIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_THAT(log(), ElementsAre(unreadable(EINVAL)));
}

TEST_F(AppStateTest, AFileBeyondTheLimitIsUnreadable) {
    write("{}");
    std::filesystem::resize_file(file(), (std::uintmax_t{16} << 20) + 1);
    EXPECT_EQ(read(), std::nullopt);
    EXPECT_THAT(log(), ElementsAre(unreadable(EFBIG)));
}

TEST_F(AppStateTest, WhatIsNoDictionaryGivesNothingWithoutALine) {
    for (const char* text : {"", "{ desktop = ", "bplist00", "(1, 2)", "\"text\""}) {
        write(text);
        EXPECT_EQ(read(), std::nullopt) << text;
    }
    EXPECT_THAT(log(), ElementsAre());
}

} // namespace
} // namespace vantor
