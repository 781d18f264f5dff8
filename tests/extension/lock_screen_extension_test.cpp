#include "extension/lock_screen_extension.h"
#include "tests/extension/extension_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>

namespace vantor {
namespace {

using testing::ElementsAre;

constexpr const char* kFramework =
    "/System/Library/PrivateFrameworks/WallpaperExtensionKit.framework/WallpaperExtensionKit";
constexpr const char* kLocked = "com.apple.screenIsLocked";
constexpr const char* kUnlocked = "com.apple.screenIsUnlocked";
constexpr const char* kChanged = "com.nimbara.lockscreen.changed";

/// No classes of the agent are known before its framework is loaded.
class LockScreenExtensionTest : public FakePlatformTest {
  protected:
    std::string initLine(const std::string& rest) const {
        return "INIT pid " + std::to_string(getpid()) + " — " + rest;
    }
    void offerFramework(std::function<void()> load) {
        platform.loader().frameworks[kFramework] = std::move(load);
    }
    void offerWholeFramework() {
        offerFramework([this] {
            platform.addAgentClasses();
            platform.addRemoteContexts();
        });
    }
    std::size_t observers() {
        return platform.notifications().distributedObservers(kLocked) +
               platform.notifications().distributedObservers(kUnlocked) +
               platform.notifications().darwinObservers(kChanged);
    }
    void deliver(const char* name) {
        platform.notifications().deliverDistributed(name);
        platform.mainQueue().drain();
    }

    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LockScreenLibrary library{platform, shaderGPU};
    SurfaceRegistry registry{platform, shaderGPU, library};
};

TEST_F(LockScreenExtensionTest, WithTheWholeFrameworkTheLayoutIsFine) {
    offerWholeFramework();
    const LockScreenExtension extension(platform, library, registry);
    EXPECT_THAT(log(), ElementsAre(initLine("WallpaperExtensionKit loaded, runtime layout OK")));
    EXPECT_EQ(observers(), 3U);
}

TEST_F(LockScreenExtensionTest, MissingClassesAreNamedInOrder) {
    offerFramework([this] { platform.addAgentClasses(); });
    const LockScreenExtension extension(platform, library, registry);
    EXPECT_THAT(log(), ElementsAre(initLine("WallpaperExtensionKit loaded, MISSING: CAContext")));
    EXPECT_EQ(observers(), 3U);
}

TEST_F(LockScreenExtensionTest, AFrameworkWithFewClassesGivesAListOfTheRest) {
    offerFramework([this] {
        platform.addClass("WallpaperIDXPC");
        platform.addClass("WallpaperCreationRequestXPC");
        platform.addClass("WallpaperUpdateRequestXPC");
        platform.addRemoteContexts();
    });
    const LockScreenExtension extension(platform, library, registry);
    EXPECT_THAT(log(), ElementsAre(initLine("WallpaperExtensionKit loaded, MISSING: "
                                            "WallpaperRemoteContextXPC, "
                                            "WallpaperSettingsViewModelsXPC")));
}

TEST_F(LockScreenExtensionTest, WithoutTheFrameworkNothingIsObservedButConnectionsAreServed) {
    platform.loader().failure = "no such file";
    LockScreenExtension extension(platform, library, registry);
    EXPECT_THAT(log(), ElementsAre(initLine("dlopen failed: no such file")));
    EXPECT_EQ(observers(), 0U);
    const auto connection = std::make_shared<FakeConnection>(1);
    EXPECT_TRUE(extension.configuration().accept(connection));
    EXPECT_EQ(connection->send(WallpaperOperation::isChoiceDownloaded)->boolean, true);
}

TEST_F(LockScreenExtensionTest, LockingAndUnlockingTheScreenPlaysAndPauses) {
    offerWholeFramework();
    LockScreenExtension extension(platform, library, registry);
    const auto connection = std::make_shared<FakeConnection>(1);
    ASSERT_TRUE(extension.configuration().accept(connection));
    const auto reply = connection->send(WallpaperOperation::acquire);
    platform.mainQueue().drain();
    ASSERT_EQ(reply->error, std::nullopt);
    const SurfaceRegistry::Surface& surface = *registry.surfaces().begin()->second;
    EXPECT_FALSE(surface.shader->isPlaying());

    deliver(kLocked);
    EXPECT_TRUE(registry.screenLocked());
    EXPECT_TRUE(surface.shader->isPlaying());
    deliver(kUnlocked);
    EXPECT_FALSE(registry.screenLocked());
    EXPECT_FALSE(surface.shader->isPlaying());
}

TEST_F(LockScreenExtensionTest, TheHostApplicationsNotificationIsFollowed) {
    offerWholeFramework();
    const LockScreenExtension extension(platform, library, registry);
    platform.notifications().deliverDarwin(kChanged);
    platform.mainQueue().drain();
    EXPECT_EQ(logged("app state re-read, desktop displays []"), 1U);
}

} // namespace
} // namespace vantor
