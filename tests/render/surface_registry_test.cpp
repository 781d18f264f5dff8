#include "render/surface_registry.h"
#include "tests/support/fake_platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>

namespace vantor {
namespace {

using testing::ElementsAre;

class TestResolver : public WallpaperResolver {
  public:
    std::optional<Resolved> resolve(const std::optional<std::string>& configuration,
                                    std::optional<std::uint32_t> displayID) override {
        ++asked;
        lastDisplayID = displayID;
        const auto found = offered.find(configuration.value_or("absent"));
        return found != offered.end() ? std::optional(found->second) : std::nullopt;
    }
    bool isNonShader(std::optional<std::uint32_t> displayID) override {
        return displayID && nonShader.contains(*displayID);
    }

    std::map<std::string, Resolved> offered;
    std::set<std::uint32_t> nonShader;
    std::optional<std::uint32_t> lastDisplayID;
    int asked = 0;
};

Resolved shaderOf(std::string key, float speed = 1) {
    Resolved resolved;
    resolved.key = std::move(key);
    resolved.source = kFakeShader;
    resolved.uniforms.speed = speed;
    return resolved;
}

/// How a surface of a test is acquired.
struct Options {
    std::string mode = "default";
    std::string activity = "active";
    bool isPreview = false;
    std::optional<std::uint32_t> displayID = 1;
};

class SurfaceRegistryTest : public FakePlatformTest {
  protected:
    SurfaceRegistryTest() {
        resolver.offered["plasma"] = shaderOf("plasma");
        resolver.offered["aurora"] = shaderOf("aurora");
        resolver.offered["match-desktop"] = shaderOf("desktop#1");
    }

    SurfaceRegistry::Surface& make(const std::optional<std::string>& choice,
                                   const Options& options = {}) {
        LayerRef root = platform.layers().makeLayer();
        root->setFrame({.origin = {}, .size = {.width = 100, .height = 50}});
        root->setContentsScale(2);
        auto object = std::make_shared<FakeObject>(contextClass);
        contexts.push_back(object);
        const auto surface = std::make_shared<SurfaceRegistry::Surface>(SurfaceRegistry::Surface{
            .context = std::make_shared<PrivateBridge::RemoteContext>(object, 1),
            .root = std::move(root),
            .displayID = options.displayID,
            .isPreview = options.isPreview,
            .presentationMode = options.mode,
            .activityState = options.activity});
        surface->choice = choice;
        lastID = UUID::random();
        registry.add(lastID, surface);
        return *surface;
    }
    SurfaceRegistry::Surface& present(const std::optional<std::string>& choice,
                                      const Options& options = {}) {
        SurfaceRegistry::Surface& surface = make(choice, options);
        registry.present(surface);
        return surface;
    }

    std::filesystem::path still(std::string_view name) {
        auto file = platform.bundle().home / name;
        const std::vector<std::uint8_t> pixel(4);
        platform.images().writePNG(file,
                                   {.bytes = pixel, .width = 1, .height = 1, .bytesPerRow = 4});
        return file;
    }
    void offerStill(const std::string& id, std::optional<std::filesystem::path> file) {
        Resolved resolved;
        resolved.key = id + "#still";
        resolved.still = std::move(file);
        resolver.offered[id] = resolved;
    }

    std::size_t frames() { return platform.gpu().device->submissions.size(); }
    int flushes() { return platform.layers().transactions().flushed; }

    FakeObjectClass contextClass{"CAContext"};
    std::vector<std::shared_ptr<FakeObject>> contexts;
    TestResolver resolver;
    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    SurfaceRegistry registry{platform, shaderGPU, resolver};
    UUID lastID;
};

// What plays.

TEST_F(SurfaceRegistryTest, OnTheUnlockedDesktopNothingPlays) {
    EXPECT_FALSE(registry.shouldPlay(make("plasma")));
    EXPECT_FALSE(registry.shouldPlay(make("plasma", {.mode = "desktop"})));
}

TEST_F(SurfaceRegistryTest, TheLockedAndTheIdleModePlay) {
    EXPECT_TRUE(registry.shouldPlay(make("plasma", {.mode = "locked"})));
    EXPECT_TRUE(registry.shouldPlay(make("plasma", {.mode = "idle"})));
}

TEST_F(SurfaceRegistryTest, PreviewsAndALockedScreenPlayInAnyMode) {
    EXPECT_TRUE(registry.shouldPlay(make("plasma", {.isPreview = true})));
    auto& surface = make("plasma");
    registry.setScreenLocked(true);
    EXPECT_TRUE(registry.shouldPlay(surface));
}

TEST_F(SurfaceRegistryTest, ASuspendedSurfaceNeverPlaysEvenWhileTheScreenIsLocked) {
    registry.setScreenLocked(true);
    EXPECT_FALSE(registry.shouldPlay(
        make("plasma", {.mode = "locked", .activity = "suspended", .isPreview = true})));
}

TEST_F(SurfaceRegistryTest, ASurfaceThatIsAboutToGoDoesNotPlay) {
    auto& surface = make("plasma", {.mode = "locked"});
    registry.scheduleTeardown(lastID);
    EXPECT_FALSE(registry.shouldPlay(surface));
}

// What is shown.

TEST_F(SurfaceRegistryTest, AShaderFillsTheRoot) {
    auto& surface = present("plasma", {.displayID = 9});
    ASSERT_NE(surface.shader, nullptr);
    EXPECT_EQ(surface.entryID, "plasma");
    EXPECT_EQ(resolver.lastDisplayID, 9U);
    const FakeMetalLayer& layer = onlyMetalSublayer(surface.root);
    EXPECT_EQ(layer.frame(), surface.root->bounds());
    EXPECT_EQ(layer.contentsScale(), 2);
    EXPECT_TRUE(log().empty());
}

TEST_F(SurfaceRegistryTest, APausedSurfaceStartsAtTwelveSeconds) {
    auto& surface = present("plasma");
    EXPECT_EQ(surface.shader->elapsed(), 12.0);
    EXPECT_FALSE(surface.shader->isPlaying());
}

TEST_F(SurfaceRegistryTest, APlayingSurfaceStartsAtARandomTimeBelowSixHundredSeconds) {
    std::set<double> starts;
    for (int i = 0; i < 20; ++i) {
        auto& surface = present("plasma", {.mode = "locked"});
        EXPECT_TRUE(surface.shader->isPlaying());
        const double start = surface.shader->elapsed();
        EXPECT_GE(start, 0.0);
        EXPECT_LT(start, 600.0);
        starts.insert(start);
    }
    EXPECT_EQ(starts.size(), 20U);
}

TEST_F(SurfaceRegistryTest, TheSameEntryWithANewLookChangesOnlyTheUniforms) {
    auto& surface = present("plasma");
    const ShaderSurface* const before = surface.shader.get();
    resolver.offered["plasma"] = shaderOf("plasma", 3);
    registry.present(surface);
    EXPECT_EQ(surface.shader.get(), before);
    EXPECT_EQ(surface.shader->look().speed, 3);
    EXPECT_EQ(frames(), 2U) << "a paused surface shows the new look at once";
    EXPECT_EQ(platform.gpu().device->lastPass().floatAt(0, 12), 3.0F);

    surface.presentationMode = "locked";
    registry.present(surface);
    EXPECT_FALSE(surface.shader->isPlaying()) << "presenting it again changes no play state";
}

TEST_F(SurfaceRegistryTest, APlayingSurfaceTakesANewLookWithItsNextTick) {
    auto& surface = present("plasma", {.mode = "locked"});
    resolver.offered["plasma"] = shaderOf("plasma", 3);
    registry.present(surface);
    EXPECT_EQ(surface.shader->look().speed, 3);
    EXPECT_EQ(frames(), 1U);
}

TEST_F(SurfaceRegistryTest, AnotherEntryReplacesWhatIsShown) {
    auto& surface = present("plasma", {.mode = "locked"});
    const std::shared_ptr<ShaderSurface> old = surface.shader;
    surface.choice = "aurora";
    registry.present(surface);
    EXPECT_FALSE(old->isPlaying());
    EXPECT_EQ(surface.entryID, "aurora");
    EXPECT_EQ(surface.shader->entryID(), "aurora");
    EXPECT_EQ(fake(surface.root).sublayers().size(), 1U);
}

TEST_F(SurfaceRegistryTest, ASourceThatDoesNotCompileLeavesTheRootBlack) {
    resolver.offered["plasma"].source = "#error";
    auto& surface = present("plasma");
    EXPECT_EQ(surface.shader, nullptr);
    EXPECT_EQ(surface.still, nullptr);
    EXPECT_EQ(surface.entryID, "plasma");
    EXPECT_TRUE(fake(surface.root).sublayers().empty());
    EXPECT_EQ(log().size(), 1U) << "the compiler's line and no other";

    resolver.offered["plasma"].source = kFakeShader;
    registry.present(surface);
    EXPECT_NE(surface.shader, nullptr) << "with nothing shown the entry is tried again";
}

TEST_F(SurfaceRegistryTest, AStillImageFillsTheRoot) {
    offerStill("photo", still("photo.jpg"));
    auto& surface = present("photo");
    ASSERT_NE(surface.still, nullptr);
    EXPECT_EQ(surface.shader, nullptr);
    EXPECT_EQ(surface.entryID, "photo#still");
    const FakeLayer& layer = fake(surface.still);
    EXPECT_NE(layer.contents, nullptr);
    EXPECT_EQ(layer.gravity, ContentsGravity::resizeAspectFill);
    EXPECT_TRUE(layer.masksToBounds);
    EXPECT_EQ(layer.frame(), surface.root->bounds());
    EXPECT_EQ(layer.contentsScale(), 2);
    EXPECT_EQ(layer.superlayer(), &fake(surface.root));

    const LayerRef before = surface.still;
    registry.present(surface);
    EXPECT_EQ(surface.still, before) << "the same still stays";
}

TEST_F(SurfaceRegistryTest, AStillThatCannotBeReadIsLoggedAsNothing) {
    const auto broken = platform.bundle().home / "broken.jpg";
    std::ofstream(broken) << "no picture";
    offerStill("photo", broken);
    auto& surface = present("photo");
    EXPECT_EQ(surface.still, nullptr);
    EXPECT_EQ(surface.entryID, "photo#still");
    EXPECT_THAT(log(), ElementsAre("  no offered wallpaper for photo — black"));
}

TEST_F(SurfaceRegistryTest, AnEntryWithoutSourceAndStillIsLoggedAsNothing) {
    offerStill("photo", std::nullopt);
    present("photo");
    EXPECT_THAT(log(), ElementsAre("  no offered wallpaper for photo — black"));
}

TEST_F(SurfaceRegistryTest, WhatIsNotOfferedIsLoggedAndLeavesTheRootBlack) {
    auto& surface = present("plasma", {.mode = "locked"});
    surface.choice = "builtin.unknown";
    registry.present(surface);
    EXPECT_EQ(surface.shader, nullptr);
    EXPECT_EQ(surface.entryID, std::nullopt);
    EXPECT_TRUE(fake(surface.root).sublayers().empty());
    surface.choice = std::nullopt;
    registry.present(surface);
    EXPECT_THAT(log(), ElementsAre("  no offered wallpaper for builtin.unknown — black",
                                   "  no offered wallpaper for nil — black"));
}

// The backdrop.

TEST_F(SurfaceRegistryTest, OverANonShaderDesktopABackdropShowsAndIsMadeOnce) {
    auto& surface = present("match-desktop");
    resolver.nonShader = {1};
    registry.present(surface);
    EXPECT_EQ(surface.shader, nullptr);
    EXPECT_EQ(surface.entryID, "#backdrop");
    ASSERT_NE(surface.still, nullptr);
    EXPECT_EQ(surface.still->backgroundColor(), Color::gray(0.1, 1.0));
    EXPECT_EQ(surface.still->frame(), surface.root->bounds());
    EXPECT_EQ(fake(surface.root).sublayers().size(), 1U);

    const LayerRef before = surface.still;
    registry.present(surface);
    EXPECT_EQ(surface.still, before);
}

TEST_F(SurfaceRegistryTest, OnTheLockScreenInPreviewsAndForOtherChoicesThereIsNoBackdrop) {
    resolver.nonShader = {1};
    for (const Options& options : {Options{.mode = "locked"}, Options{.mode = "idle"},
                                   Options{.isPreview = true}, Options{.displayID = 2}}) {
        EXPECT_EQ(present("match-desktop", options).entryID, "desktop#1");
    }
    EXPECT_EQ(present("plasma").entryID, "plasma");
    registry.setScreenLocked(true);
    EXPECT_EQ(present("match-desktop").entryID, "desktop#1");
}

TEST_F(SurfaceRegistryTest, LockingTheScreenReplacesTheBackdropByThePlayingShader) {
    resolver.nonShader = {1};
    auto& surface = present("match-desktop");
    ASSERT_EQ(surface.entryID, "#backdrop");
    registry.setScreenLocked(true);
    registry.applyPolicy();
    ASSERT_NE(surface.shader, nullptr);
    EXPECT_TRUE(surface.shader->isPlaying());
    EXPECT_EQ(surface.still, nullptr);
    EXPECT_EQ(fake(surface.root).sublayers().size(), 1U);
}

// The policy.

TEST_F(SurfaceRegistryTest, ThePolicyPlaysAndPausesEverySurfaceAndFlushesOnce) {
    auto& first = present("plasma");
    auto& second = present("aurora", {.activity = "suspended"});
    registry.setScreenLocked(true);
    const int before = flushes();
    registry.applyPolicy();
    EXPECT_TRUE(first.shader->isPlaying());
    EXPECT_FALSE(second.shader->isPlaying());
    EXPECT_EQ(flushes(), before + 1);
    registry.setScreenLocked(false);
    registry.applyPolicy();
    EXPECT_FALSE(first.shader->isPlaying());
}

TEST_F(SurfaceRegistryTest, ThePolicyPresentsAgainOnlyWhatFollowsTheDesktop) {
    auto& follows = present("match-desktop");
    auto& chosen = present("plasma");
    auto& leaving = present("match-desktop");
    registry.scheduleTeardown(lastID);
    resolver.offered["match-desktop"] = shaderOf("desktop#2");
    resolver.offered["plasma"] = shaderOf("plasma", 3);
    registry.applyPolicy();
    EXPECT_EQ(follows.entryID, "desktop#2");
    EXPECT_EQ(chosen.shader->look().speed, 1);
    EXPECT_EQ(leaving.entryID, "desktop#1");
}

TEST_F(SurfaceRegistryTest, RefreshingPresentsEverySurfaceAndFlushesOnce) {
    auto& chosen = present("plasma");
    auto& follows = present("match-desktop");
    resolver.offered["plasma"] = shaderOf("plasma", 3);
    resolver.offered["match-desktop"] = shaderOf("desktop#2");
    const int before = flushes();
    registry.refreshAll();
    EXPECT_EQ(chosen.shader->look().speed, 3);
    EXPECT_EQ(follows.entryID, "desktop#2");
    EXPECT_EQ(flushes(), before + 1);
}

// Resizing.

TEST_F(SurfaceRegistryTest, ResizingReachesTheShaderButNotTheRoot) {
    auto& surface = present("plasma");
    registry.resize(surface, {.width = 30, .height = 20}, 3);
    const FakeMetalLayer& layer = onlyMetalSublayer(surface.root);
    EXPECT_EQ(layer.frame().size, (Size{.width = 30, .height = 20}));
    EXPECT_EQ(layer.drawableSize(), (Size{.width = 90, .height = 60}));
    EXPECT_EQ(layer.animatedChanges, 0);
    EXPECT_EQ(surface.root->frame().size, (Size{.width = 100, .height = 50}));
}

TEST_F(SurfaceRegistryTest, ResizingReachesTheStillWithoutAnimation) {
    offerStill("photo", still("photo.jpg"));
    auto& surface = present("photo");
    const int before = fake(surface.still).animatedChanges;
    registry.resize(surface, {.width = 30, .height = 20}, 3);
    EXPECT_EQ(surface.still->frame(), (Rect{.origin = {}, .size = {.width = 30, .height = 20}}));
    EXPECT_EQ(surface.still->contentsScale(), 3);
    EXPECT_EQ(fake(surface.still).animatedChanges, before);
}

// The end.

TEST_F(SurfaceRegistryTest, AReleasedSurfacePausesAndGoesAfterFifteenSeconds) {
    auto& surface = present("plasma", {.mode = "locked"});
    const UUID id = lastID;
    contexts.back()->methods = {"invalidate"};
    present("aurora");
    registry.scheduleTeardown(id);
    EXPECT_FALSE(surface.shader->isPlaying());
    const std::shared_ptr<ShaderSurface> shader = surface.shader;
    const LayerRef root = surface.root;

    platform.mainQueue().advance(14.999);
    EXPECT_NE(registry.surface(id), nullptr);
    platform.mainQueue().advance(0.001);
    EXPECT_EQ(registry.surface(id), nullptr);
    EXPECT_EQ(registry.surfaces().size(), 1U);
    EXPECT_TRUE(fake(root).sublayers().empty());
    EXPECT_EQ(contexts.front()->count("invalidate"), 1U);
    EXPECT_EQ(logged("surface " + id.text() + " torn down (1 left)"), 1U);
}

TEST_F(SurfaceRegistryTest, AStillGoesWithItsSurface) {
    offerStill("photo", still("photo.jpg"));
    auto& surface = present("photo");
    const LayerRef root = surface.root;
    registry.scheduleTeardown(lastID);
    platform.mainQueue().advance(15);
    EXPECT_TRUE(fake(root).sublayers().empty());
    EXPECT_EQ(logged("surface " + lastID.text() + " torn down (0 left)"), 1U);
}

TEST_F(SurfaceRegistryTest, ACancelledTeardownKeepsTheSurfaceAndItPlaysAgain) {
    auto& surface = present("plasma", {.mode = "locked"});
    registry.scheduleTeardown(lastID);
    platform.mainQueue().advance(14);
    registry.cancelTeardown(lastID);
    EXPECT_TRUE(surface.shader->isPlaying());
    EXPECT_EQ(surface.teardown, nullptr);
    platform.mainQueue().advance(100);
    EXPECT_NE(registry.surface(lastID), nullptr);
    EXPECT_EQ(contexts.back()->count("invalidate"), 0U);
}

TEST_F(SurfaceRegistryTest, ASecondReleaseStartsTheGracePeriodAnew) {
    present("plasma");
    registry.scheduleTeardown(lastID);
    platform.mainQueue().advance(10);
    registry.scheduleTeardown(lastID);
    EXPECT_EQ(platform.mainQueue().delayedCount(), 1U);
    platform.mainQueue().advance(10);
    EXPECT_NE(registry.surface(lastID), nullptr);
    platform.mainQueue().advance(5);
    EXPECT_EQ(registry.surface(lastID), nullptr);
}

TEST_F(SurfaceRegistryTest, UnknownIdentifiersAreIgnored) {
    registry.scheduleTeardown(UUID::random());
    registry.cancelTeardown(UUID::random());
    EXPECT_EQ(platform.mainQueue().delayedCount(), 0U);
    EXPECT_EQ(registry.surface(UUID::random()), nullptr);
}

TEST_F(SurfaceRegistryTest, CancellingWhatIsNotPendingChangesNoPlayState) {
    auto& surface = present("plasma");
    surface.presentationMode = "locked";
    registry.cancelTeardown(lastID);
    EXPECT_FALSE(surface.shader->isPlaying());
}

TEST_F(SurfaceRegistryTest, ATeardownOfARegistryThatIsGoneDoesNothing) {
    {
        SurfaceRegistry shortLived(platform, shaderGPU, resolver);
        present("plasma");
        shortLived.add(lastID, registry.surface(lastID));
        shortLived.scheduleTeardown(lastID);
    }
    platform.mainQueue().advance(20);
    EXPECT_EQ(contexts.back()->count("invalidate"), 0U);
    EXPECT_TRUE(log().empty());
}

} // namespace
} // namespace vantor
