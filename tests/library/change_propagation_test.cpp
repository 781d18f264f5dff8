#include "library/change_propagation.h"
#include "library/lock_screen_library.h"
#include "render/surface_registry.h"
#include "tests/library/state_file.h"
#include "tests/support/fake_xpc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kChanged = "com.nimbara.lockscreen.changed";
constexpr const char* kFirstSource = "v_main f_main first";
constexpr const char* kSecondSource = "v_main f_main second";

struct RecordingAgent : ConnectedAgent {
    std::shared_ptr<AgentProxy> agent() const override { return proxy; }
    std::shared_ptr<FakeAgentProxy> proxy = std::make_shared<FakeAgentProxy>();
};

class ChangePropagationTest : public FakePlatformTest {
  protected:
    ChangePropagationTest() {
        writeState(platform, {{"1", "shown", kFirstSource}});
        propagation.startObserving();
    }

    SurfaceRegistry::Surface& present(const std::optional<std::string>& choice,
                                      std::string mode = "default") {
        const auto surface = std::make_shared<SurfaceRegistry::Surface>(
            SurfaceRegistry::Surface{.context = std::make_shared<PrivateBridge::RemoteContext>(
                                         std::make_shared<FakeObject>(contextClass), 1),
                                     .root = platform.layers().makeLayer(),
                                     .displayID = 1,
                                     .presentationMode = std::move(mode),
                                     .activityState = "active"});
        surface->choice = choice;
        registry.add(UUID::random(), surface);
        registry.present(*surface);
        return *surface;
    }

    /// The host application posts its notification and the main queue has its turn.
    void change() {
        platform.notifications().deliverDarwin(kChanged);
        platform.mainQueue().drain();
    }
    void offerViewModels() {
        platform.addClass("WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels");
    }

    FakeObjectClass contextClass{"CAContext"};
    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LockScreenLibrary library{platform, shaderGPU};
    SurfaceRegistry registry{platform, shaderGPU, library};
    ChangePropagation propagation{platform, library, registry};
};

TEST_F(ChangePropagationTest, TheNotificationOnlyHopsToTheMainQueue) {
    EXPECT_EQ(platform.notifications().darwinObservers(kChanged), 1U);
    platform.notifications().deliverDarwin(kChanged);
    EXPECT_THAT(log(), IsEmpty());
    EXPECT_EQ(platform.mainQueue().postedCount(), 1U);
    platform.mainQueue().drain();
    EXPECT_EQ(logged("app state re-read, desktop displays [\"1\"]"), 1U);
}

TEST_F(ChangePropagationTest, TheLineListsTheDisplayKeysInStringOrder) {
    offerViewModels();
    writeState(platform, {{"2", "a", kFirstSource},
                          {"10", "b", kFirstSource},
                          {"odd \"key\"\\\n", "c", kFirstSource}});
    change();
    writeState(platform, {});
    change();
    EXPECT_THAT(log(), ElementsAre("app state re-read, desktop displays "
                                   "[\"10\", \"2\", \"odd \\\"key\\\"\\\\\\n\"]",
                                   "app state re-read, desktop displays []"));
}

TEST_F(ChangePropagationTest, SurfacesThatFollowTheDesktopShowTheNewState) {
    auto& follows = present("match-desktop");
    EXPECT_EQ(follows.entryID, "shown#" + DesktopState::stableHash(kFirstSource));
    writeState(platform, {{"1", "shown", kSecondSource}});
    const int before = platform.layers().transactions().flushed;
    change();
    EXPECT_EQ(follows.entryID, "shown#" + DesktopState::stableHash(kSecondSource));
    EXPECT_EQ(platform.layers().transactions().flushed, before + 2) << "one is the policy's";
}

TEST_F(ChangePropagationTest, AStateThatBecomesUnreadableLeavesTheFallback) {
    auto& follows = present("match-desktop");
    std::filesystem::remove(library.appStateURL());
    change();
    EXPECT_EQ(follows.entryID, "builtin.elec-pcb");
    EXPECT_EQ(logged("app state unreadable (2)"), 1U);
    EXPECT_EQ(logged("app state re-read, desktop displays []"), 1U);
}

TEST_F(ChangePropagationTest, AnotherChoiceIsNotPresentedAgainButItsPlayStateIsReviewed) {
    auto& chosen = present("builtin.smoke");
    auto& absent = present(std::nullopt);
    const std::string before = *absent.entryID;
    chosen.presentationMode = "locked";
    absent.presentationMode = "locked";
    chosen.entryID = "presented anew this would be replaced";
    writeState(platform, {{"1", "shown", kSecondSource}});
    change();
    EXPECT_EQ(chosen.entryID, "presented anew this would be replaced");
    EXPECT_TRUE(chosen.shader->isPlaying());
    EXPECT_EQ(absent.entryID, before) << "an absent choice resolves alike, but stays";
    EXPECT_TRUE(absent.shader->isPlaying());
}

TEST_F(ChangePropagationTest, WithoutAnAgentTheSurfacesAreRefreshedAndNothingIsSent) {
    auto& follows = present("match-desktop");
    offerViewModels();
    writeState(platform, {{"1", "shown", kSecondSource}});
    change();
    EXPECT_EQ(follows.entryID, "shown#" + DesktopState::stableHash(kSecondSource));
    EXPECT_EQ(log().size(), 1U);
}

TEST_F(ChangePropagationTest, EveryConnectedAgentIsSentTheViewModels) {
    offerViewModels();
    const auto first = std::make_shared<RecordingAgent>();
    const auto second = std::make_shared<RecordingAgent>();
    library.addHandler(first);
    library.addHandler(second);
    change();
    ASSERT_EQ(first->proxy->received.size(), 1U);
    ASSERT_EQ(second->proxy->received.size(), 1U);
    EXPECT_EQ(first->proxy->received[0]->objectClass().name(), "WallpaperSettingsViewModelsXPC");
    EXPECT_EQ(log().size(), 1U) << "a reply without error is not logged";
}

TEST_F(ChangePropagationTest, AHandlerWithoutAnAgentIsSkipped) {
    offerViewModels();
    const auto gone = std::make_shared<RecordingAgent>();
    const auto connected = std::make_shared<RecordingAgent>();
    gone->proxy.reset();
    library.addHandler(gone);
    library.addHandler(connected);
    change();
    EXPECT_EQ(connected->proxy->received.size(), 1U);
}

TEST_F(ChangePropagationTest, WithoutViewModelsTheAgentsAreNotTold) {
    const auto connected = std::make_shared<RecordingAgent>();
    library.addHandler(connected);
    change();
    EXPECT_THAT(connected->proxy->received, IsEmpty());
}

TEST_F(ChangePropagationTest, AnErrorOfTheAgentIsLogged) {
    offerViewModels();
    const auto handler = std::make_shared<RecordingAgent>();
    handler->proxy->answer = Error{.domain = "Agent", .code = 5, .message = "no room"};
    library.addHandler(handler);
    change();
    EXPECT_EQ(logged("updateSettingsViewModels: no room"), 1U);
}

TEST_F(ChangePropagationTest, TheLockIsNotHeldWhileAnAgentIsCalled) {
    offerViewModels();
    const auto handler = std::make_shared<RecordingAgent>();
    std::size_t seen = 0;
    handler->proxy->onUpdate = [&] { seen = library.handlers().size(); };
    library.addHandler(handler);
    change();
    EXPECT_EQ(seen, 1U);
}

TEST_F(ChangePropagationTest, TwoNotificationsAreTwoWholePropagations) {
    offerViewModels();
    const auto handler = std::make_shared<RecordingAgent>();
    library.addHandler(handler);
    platform.notifications().deliverDarwin(kChanged);
    platform.notifications().deliverDarwin(kChanged);
    platform.mainQueue().drain();
    EXPECT_EQ(logged("app state re-read, desktop displays [\"1\"]"), 2U);
    EXPECT_EQ(handler->proxy->received.size(), 2U);
}

} // namespace
} // namespace vantor
