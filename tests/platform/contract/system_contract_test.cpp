#include "platform/bundle.h"
#include "platform/code_identity.h"
#include "platform/images.h"
#include "platform/loader.h"
#include "platform/unified_log.h"
#include "platform/workspace.h"
#include "tests/platform/contract/contract_subject.h"
#include "tests/support/temporary_folder.h"

#include <fstream>
#include <limits>
#include <unistd.h>
#include <vector>

namespace vantor {
namespace {

class SystemContract : public Contract {
  protected:
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(16 * 8 * 4, 0x40);
    const BGRAPixels pixels{.bytes = bytes, .width = 16, .height = 8, .bytesPerRow = 64};
};
VANTOR_CONTRACT(SystemContract);

TEST_P(SystemContract, APictureIsReadBackInItsSize) {
    const auto file = folder.path() / "größe 1.png";
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(platform.images().writePNG(file, pixels));
        const auto image = platform.images().read(file);
        ASSERT_NE(image, nullptr);
        EXPECT_EQ(image->width(), 16U);
        EXPECT_EQ(image->height(), 8U);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1)
        << "nothing stands beside the file";
}

TEST_P(SystemContract, APictureIsNotWrittenIntoAFolderThatIsNotThere) {
    EXPECT_FALSE(platform.images().writePNG(folder.path() / "none" / "a.png", pixels));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "none"));
}

TEST_P(SystemContract, WhatIsNoPictureIsNotRead) {
    EXPECT_EQ(platform.images().read(folder.path() / "none.png"), nullptr);
    std::ofstream(folder.path() / "text.png") << "text";
    EXPECT_EQ(platform.images().read(folder.path() / "text.png"), nullptr);
}

TEST_P(SystemContract, HomesAreAbsolute) {
    EXPECT_TRUE(platform.bundle().homeDirectory().is_absolute());
    const auto home = platform.bundle().userDatabaseHome();
    ASSERT_TRUE(home);
    EXPECT_TRUE(home->is_absolute());
}

TEST_P(SystemContract, AResourceThatIsNotThereIsNothing) {
    EXPECT_EQ(platform.bundle().resource("none", "jpg", "Stills"), std::nullopt);
    EXPECT_EQ(platform.bundle().resource("../Info", "plist", "."), std::nullopt);
    EXPECT_EQ(platform.bundle().resource("", "jpg", "Stills"), std::nullopt);
}

TEST_P(SystemContract, OnlyAProcessThatRunsCanBeExamined) {
    EXPECT_NE(platform.codeIdentity().copyGuest(getpid()), nullptr);
    EXPECT_NE(platform.codeIdentity().requirement("anchor apple"), nullptr);
    EXPECT_EQ(platform.codeIdentity().copyGuest(std::numeric_limits<int>::max()), nullptr);
}

TEST_P(SystemContract, ASymbolOfALoadedImageIsFound) {
    EXPECT_NE(platform.loader().symbol("malloc"), nullptr);
    EXPECT_EQ(platform.loader().symbol("vantor_no_such_symbol"), nullptr);
}

TEST_P(SystemContract, AFrameworkThatIsNotThereIsAnErrorInTheLoadersWords) {
    const auto loaded = platform.loader().loadFramework(
        "/System/Library/PrivateFrameworks/VantorNone.framework/VantorNone");
    ASSERT_FALSE(loaded);
    EXPECT_FALSE(loaded.error().empty());
}

TEST_P(SystemContract, AnApplicationThatIsNotInstalledHasNoPlace) {
    EXPECT_EQ(platform.workspace().applicationLocation("com.nimbara.contract.none"), std::nullopt);
}

TEST_P(SystemContract, ALoggerTakesEveryText) {
    const auto logger = platform.unifiedLog().logger("com.nimbara.contract", "contract");
    ASSERT_NE(logger, nullptr);
    EXPECT_TRUE(logger->isDefaultLevelEnabled());
    logger->write("");
    logger->write("a %s that is no format, and größe");
}

} // namespace
} // namespace vantor
