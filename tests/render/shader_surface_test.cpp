#include "render/shader_surface.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

constexpr std::size_t kTimeOffset = 8;

class ShaderSurfaceTest : public FakePlatformTest {
  protected:
    ShaderSurfaceTest() {
        root->setFrame({.origin = {}, .size = {.width = 100, .height = 50}});
        root->setContentsScale(2);
    }

    std::shared_ptr<ShaderSurface> make(std::optional<std::uint32_t> displayID = 1,
                                        double startTime = 12, const char* source = kFakeShader) {
        return ShaderSurface::create(platform, shaderGPU,
                                     {.entryID = "plasma",
                                      .source = source,
                                      .look = look,
                                      .in = root,
                                      .size = {.width = 100, .height = 50},
                                      .scale = 2,
                                      .displayID = displayID,
                                      .startTime = startTime});
    }

    FakeDevice& device() { return *platform.gpu().device; }
    FakeMetalLayer& layer() { return onlyMetalSublayer(root); }
    FakeLinkState& link(FakeScreen& screen) { return *screen.links.at(0); }
    std::size_t frames() { return device().submissions.size(); }
    float shownTime() { return device().lastPass().floatAt(0, kTimeOffset); }

    /// A refresh of the screen, `seconds` after the one before.
    void refresh(FakeScreen& screen, double seconds) {
        platform.mediaClock().advance(seconds);
        screen.refresh();
    }

    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LayerRef root = platform.layers().makeLayer();
    ShaderUniforms look;
};

TEST_F(ShaderSurfaceTest, ItsLayerIsConfiguredForTheRootWithoutAnimation) {
    const auto surface = make();
    ASSERT_NE(surface, nullptr);
    EXPECT_EQ(surface->entryID(), "plasma");
    EXPECT_EQ(layer().device, shaderGPU.device());
    EXPECT_EQ(layer().pixelFormat, gpu::PixelFormat::bgra8Unorm);
    EXPECT_TRUE(layer().framebufferOnly);
    EXPECT_TRUE(layer().opaque);
    EXPECT_EQ(layer().maximumDrawableCount, 2);
    EXPECT_EQ(layer().frame(), (Rect{.origin = {}, .size = {.width = 100, .height = 50}}));
    EXPECT_EQ(layer().contentsScale(), 2);
    EXPECT_EQ(layer().drawableSize(), (Size{.width = 200, .height = 100}));
    EXPECT_EQ(layer().animatedChanges, 0);
    EXPECT_EQ(platform.layers().transactions().depth(), 0U);
}

TEST_F(ShaderSurfaceTest, WithoutADeviceOrAPipelineThereIsNoSurfaceAndNoLayer) {
    EXPECT_EQ(make(1, 12, "#error"), nullptr);
    EXPECT_EQ(log().size(), 1U);
    platform.gpu().device = nullptr;
    ShaderGPU without(platform.gpu(), platform.images());
    EXPECT_EQ(ShaderSurface::create(
                  platform, without,
                  {.entryID = "plasma", .source = kFakeShader, .look = look, .in = root}),
              nullptr);
    EXPECT_TRUE(fake(root).sublayers().empty());
    EXPECT_EQ(log().size(), 1U);
}

TEST_F(ShaderSurfaceTest, OneFrameShowsAtOnceAndStaysWhilePaused) {
    FakeScreen& screen = platform.screens().add(1);
    look.speed = 0.25F;
    const auto surface = make(1, 12);
    EXPECT_FALSE(surface->isPlaying());
    EXPECT_EQ(frames(), 1U);
    EXPECT_EQ(layer().presented, 1);
    EXPECT_EQ(shownTime(), 12.0F);
    const FakePass pass = device().lastPass();
    EXPECT_EQ(pass.floatAt(0, 0), 200.0F);
    EXPECT_EQ(pass.floatAt(0, 4), 100.0F);
    EXPECT_EQ(pass.floatAt(0, 12), 0.25F);
    EXPECT_EQ(pass.clearColor, (Color{.red = 0, .green = 0, .blue = 0, .alpha = 1}));
    EXPECT_EQ(pass.fragmentBytes.at(1).size(), 192U);
    ASSERT_EQ(pass.draws.size(), 1U);
    EXPECT_EQ(pass.draws[0].vertexCount, 3U);
    EXPECT_FALSE(device().submissions.back().waitedFor);

    refresh(screen, 1);
    EXPECT_EQ(frames(), 1U);
}

TEST_F(ShaderSurfaceTest, TheLinkOfItsDisplayDrivesItBetween30And60FramesASecond) {
    FakeScreen& other = platform.screens().add(7);
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = make(1);
    EXPECT_TRUE(other.links.empty());
    EXPECT_EQ(link(screen).range, (FrameRateRange{.minimum = 30, .maximum = 60, .preferred = 60}));
    EXPECT_TRUE(link(screen).paused);
    EXPECT_TRUE(link(screen).onRunLoop);

    surface->setPlaying(true);
    EXPECT_FALSE(link(screen).paused);
    refresh(screen, 1);
    refresh(screen, 1.0 / 64);
    EXPECT_EQ(frames(), 3U);
    EXPECT_EQ(shownTime(), 12.0F + 1.0F / 64);
    surface->setPlaying(false);
    EXPECT_TRUE(link(screen).paused);
    EXPECT_EQ(platform.mainQueue().timerCount(), 0U);
}

TEST_F(ShaderSurfaceTest, WithNoMatchingScreenTheFirstOneDrivesIt) {
    FakeScreen& first = platform.screens().add(7);
    FakeScreen& second = platform.screens().add(std::nullopt);
    const auto surface = make(99);
    EXPECT_EQ(first.links.size(), 1U);
    EXPECT_TRUE(second.links.empty());
}

TEST_F(ShaderSurfaceTest, AnAbsentDisplayMatchesAScreenWithoutAReadableNumber) {
    FakeScreen& first = platform.screens().add(7);
    FakeScreen& second = platform.screens().add(std::nullopt);
    const auto surface = make(std::nullopt);
    EXPECT_TRUE(first.links.empty());
    EXPECT_EQ(second.links.size(), 1U);
}

TEST_F(ShaderSurfaceTest, TheFirstTickAfterAPauseOfAnyLengthAddsNoTime) {
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = make(1, 0);
    surface->setPlaying(true);
    refresh(screen, 5);
    refresh(screen, 0.0625);
    EXPECT_EQ(surface->elapsed(), 0.0625);
    surface->setPlaying(false);
    platform.mediaClock().advance(3600);
    surface->setPlaying(true);
    refresh(screen, 0.0625);
    EXPECT_EQ(surface->elapsed(), 0.0625);
    refresh(screen, 0.0625);
    EXPECT_EQ(surface->elapsed(), 0.125);
}

TEST_F(ShaderSurfaceTest, AStallAdvancesTheAnimationByATenthOfASecondOnly) {
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = make(1, 0);
    surface->setPlaying(true);
    refresh(screen, 1);
    refresh(screen, 2);
    EXPECT_DOUBLE_EQ(surface->elapsed(), 0.1);
}

TEST_F(ShaderSurfaceTest, AClockThatRunsBackwardsIsTakenAsItIs) {
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = make(1, 8);
    surface->setPlaying(true);
    refresh(screen, 1);
    refresh(screen, -0.5);
    EXPECT_EQ(surface->elapsed(), 7.5);
}

TEST_F(ShaderSurfaceTest, PlayingTwiceUnpausesOnce) {
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = make();
    const int before = link(screen).pauseChanges;
    surface->setPlaying(true);
    surface->setPlaying(true);
    EXPECT_EQ(link(screen).pauseChanges, before + 1);
}

TEST_F(ShaderSurfaceTest, WithoutScreensAPlayedSurfaceRunsOnOneTimerOf30FramesASecond) {
    const auto surface = make(1, 0);
    EXPECT_EQ(platform.mainQueue().timerCount(), 0U);
    surface->setPlaying(true);
    surface->setPlaying(true);
    EXPECT_EQ(platform.mainQueue().timerCount(), 1U);
    platform.mainQueue().advance(0.999);
    EXPECT_EQ(frames(), 1U + 29U);
    EXPECT_NEAR(surface->elapsed(), 28.0 / 30, 1e-9) << "the first tick adds no time";

    surface->setPlaying(false);
    EXPECT_EQ(platform.mainQueue().timerCount(), 0U);
    platform.mainQueue().advance(1);
    EXPECT_EQ(frames(), 30U);
}

TEST_F(ShaderSurfaceTest, AScreenThatMakesNoLinkLeavesItToTheTimer) {
    platform.screens().add(1).refusesLinks = true;
    const auto surface = make();
    surface->setPlaying(true);
    EXPECT_EQ(platform.mainQueue().timerCount(), 1U);
}

TEST_F(ShaderSurfaceTest, TheTimerDoesNotKeepTheSurface) {
    auto surface = make();
    surface->setPlaying(true);
    const std::weak_ptr<ShaderSurface> weak = surface;
    surface.reset();
    EXPECT_TRUE(weak.expired());
    platform.mainQueue().advance(1);
    EXPECT_EQ(frames(), 1U);
}

TEST_F(ShaderSurfaceTest, ANewLookShowsWithTheNextFrame) {
    const auto surface = make();
    look.speed = -2;
    surface->setLook(look);
    EXPECT_EQ(frames(), 1U);
    surface->renderFrame();
    EXPECT_EQ(device().lastPass().floatAt(0, 12), -2.0F);
    EXPECT_EQ(shownTime(), 12.0F);
}

TEST_F(ShaderSurfaceTest, AFrameWithoutOneOfItsObjectsIsSkippedAndLosesNoDrawable) {
    const auto surface = make();
    layer().refusesDrawables = true;
    surface->renderFrame();
    layer().refusesDrawables = false;
    device().refusesCommandBuffers = true;
    for (int i = 0; i < 5; ++i) {
        surface->renderFrame();
    }
    EXPECT_EQ(frames(), 1U);
    device().refusesCommandBuffers = false;
    surface->renderFrame();
    EXPECT_EQ(frames(), 2U);
}

TEST_F(ShaderSurfaceTest, WithoutAnEncoderTheDrawableIsStillPresented) {
    device().refusesEncoders = true;
    const auto surface = make();
    EXPECT_EQ(layer().presented, 1);
    EXPECT_TRUE(device().submissions.back().passes.empty());
}

TEST_F(ShaderSurfaceTest, WithoutAQueueTheSurfaceExistsAndDrawsNothing) {
    device().refusesQueues = true;
    ShaderGPU without(platform.gpu(), platform.images());
    const auto surface = ShaderSurface::create(
        platform, without,
        {.entryID = "plasma", .source = kFakeShader, .look = look, .in = root, .size = {1, 1}});
    ASSERT_NE(surface, nullptr);
    surface->setPlaying(true);
    surface->tick();
    EXPECT_EQ(frames(), 0U);
}

TEST_F(ShaderSurfaceTest, AHostThatGivesNothingBackCostsFramesButNotMore) {
    const auto surface = make();
    layer().hostIsSlow = true;
    for (int i = 0; i < 5; ++i) {
        surface->renderFrame();
    }
    EXPECT_EQ(layer().presented, 3) << "one at creation, then two in flight";
    layer().composite();
    surface->renderFrame();
    EXPECT_EQ(layer().presented, 4);
}

TEST_F(ShaderSurfaceTest, ASizeWithoutPixelsShowsNoFrame) {
    const auto surface = make();
    surface->resize({.width = 0, .height = 50}, 2);
    surface->renderFrame();
    surface->resize({.width = 1e300, .height = 1e300}, 2);
    surface->renderFrame();
    EXPECT_EQ(frames(), 1U);
}

TEST_F(ShaderSurfaceTest, ResizingChangesFrameScaleAndDrawablesWithoutAnimation) {
    const auto surface = make();
    surface->resize({.width = 300, .height = 200}, 1.5);
    EXPECT_EQ(layer().frame(), (Rect{.origin = {}, .size = {.width = 300, .height = 200}}));
    EXPECT_EQ(layer().contentsScale(), 1.5);
    EXPECT_EQ(layer().drawableSize(), (Size{.width = 450, .height = 300}));
    EXPECT_EQ(layer().animatedChanges, 0);
    surface->renderFrame();
    EXPECT_EQ(device().lastPass().floatAt(0, 0), 450.0F);
}

TEST_F(ShaderSurfaceTest, AStoppedSurfaceLeavesTheTreeAndItsClock) {
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = make();
    surface->setPlaying(true);
    surface->stop();
    EXPECT_FALSE(surface->isPlaying());
    EXPECT_TRUE(link(screen).invalidated);
    EXPECT_TRUE(fake(root).sublayers().empty());
    refresh(screen, 1);
    EXPECT_EQ(frames(), 1U);
}

TEST_F(ShaderSurfaceTest, AStoppedSurfaceOfTheTimerLeavesNoTimer) {
    const auto surface = make();
    surface->setPlaying(true);
    surface->stop();
    EXPECT_EQ(platform.mainQueue().timerCount(), 0U);
}

} // namespace
} // namespace vantor
