#include "bridge/agent_classes.h"

#include "tests/support/fake_platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor::PrivateBridge {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

using AgentClasses = FakePlatformTest;

std::vector<std::string> names(const ClassSet& classes) {
    std::vector<std::string> out;
    for (const ObjectClass* each : classes) {
        out.push_back(each->name());
    }
    return out;
}

TEST_F(AgentClasses, AreFifteenInTheProtocolsOrder) {
    const auto all = xpcClassNames();
    EXPECT_THAT(std::vector<std::string>(all.begin(), all.end()),
                ElementsAre("WallpaperIDXPC", "WallpaperCreationRequestXPC",
                            "WallpaperUpdateRequestXPC", "WallpaperRemoteContextXPC",
                            "WallpaperSnapshotXPC", "WallpaperContentTypeSetXPC",
                            "WallpaperChoiceIDXPC", "WallpaperChoiceIDsXPC",
                            "WallpaperExtensionChoiceRequestXPC",
                            "WallpaperChoiceRequestAdditionResultXPC", "WallpaperDebugRequestXPC",
                            "WallpaperDebugResponseXPC", "WallpaperMigrationVersionXPC",
                            "WallpaperSettingsViewModelsXPC", "AuditTokenXPC"));
}

TEST_F(AgentClasses, WithoutTheFrameworkAllThatStartUpNeedsIsMissing) {
    EXPECT_THAT(missingClasses(platform),
                ElementsAre("WallpaperIDXPC", "WallpaperCreationRequestXPC",
                            "WallpaperUpdateRequestXPC", "WallpaperRemoteContextXPC",
                            "WallpaperSettingsViewModelsXPC", "CAContext"));
    platform.addRemoteContexts();
    platform.addClass("WallpaperCreationRequestXPC");
    EXPECT_THAT(missingClasses(platform),
                ElementsAre("WallpaperIDXPC", "WallpaperUpdateRequestXPC",
                            "WallpaperRemoteContextXPC", "WallpaperSettingsViewModelsXPC"));
}

TEST_F(AgentClasses, NothingIsMissingOnceEverythingIsThere) {
    platform.addAgentClasses();
    platform.addRemoteContexts();
    EXPECT_THAT(missingClasses(platform), IsEmpty());
}

TEST_F(AgentClasses, WithoutTheFrameworkOnlyThePlatformsClassesAreAllowed) {
    EXPECT_THAT(names(xpcAllowedClasses(platform)),
                ElementsAre("NSString", "NSNumber", "NSData", "NSArray", "NSDictionary", "NSURL",
                            "NSError"));
}

TEST_F(AgentClasses, AClassThatAppearsLaterIsAllowedFromThenOn) {
    platform.addClass("Unrelated");
    EXPECT_EQ(xpcAllowedClasses(platform).size(), 7U);
    auto& late = platform.addClass("WallpaperDebugRequestXPC");
    const ClassSet allowed = xpcAllowedClasses(platform);
    ASSERT_EQ(allowed.size(), 8U);
    EXPECT_EQ(allowed[7], &late);
}

TEST_F(AgentClasses, WithTheFrameworkAllAreAllowed) {
    platform.addAgentClasses();
    std::vector<std::string> expected = names(xpcAllowedClasses(platform));
    ASSERT_EQ(expected.size(), 22U);
    expected.erase(expected.begin(), expected.begin() + 7);
    const auto all = xpcClassNames();
    EXPECT_EQ(expected, std::vector<std::string>(all.begin(), all.end()));
}

} // namespace
} // namespace vantor::PrivateBridge
