// The windows on a Wayland compositor.

#include "agent/output/window/windows.h"
#include "tests/e2e/weston.h"
#include "tests/support/output_recorder.h"
#include "tests/support/surface_painter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace vantor::agent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class WindowsOnWaylandTest : public testing::Test {
  protected:
    /// A kiosk gives a window its whole screen.
    void start(const e2e::WestonOptions& options = {}) {
        server_.emplace(e2e::WindowManager::none, 1280, 1280);
        compositor_.emplace(*server_, options);
        auto made =
            makeWindows(loop_, {{.width = 640, .height = 480, .title = "One"}}, recorder_.events());
        ASSERT_TRUE(made) << made.error();
        backend_ = std::move(*made);
        ASSERT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 1; }));
    }

    template <typename Condition>
    bool turnUntil(Condition condition) {
        return recorder_.turnUntil(loop_, condition);
    }
    Output& output() { return *recorder_.outputs.at(0); }
    const OutputDescription& description() { return output().description(); }

    std::optional<e2e::X11Server> server_;
    std::optional<e2e::Weston> compositor_;
    MainLoop loop_;
    OutputRecorder recorder_;
    std::unique_ptr<OutputBackend> backend_;
};

TEST_F(WindowsOnWaylandTest, WindowTakesTheSizeThatTheCompositorGivesIt) {
    start();
    EXPECT_TRUE(turnUntil([&] { return description().width == 1024; }));
    EXPECT_EQ(description().height, 640U);
    EXPECT_EQ(description().scale, 1);
    EXPECT_EQ(description().connector, "window-1");
    EXPECT_EQ(output().visibility(), Visibility::visible);
}

TEST_F(WindowsOnWaylandTest, RefreshBeforeTheFirstFrameComesAtOnce) {
    start();
    output().requestRefresh();
    output().requestRefresh();
    EXPECT_EQ(recorder_.refreshes[&output()], 0);
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
    recorder_.turnUntil(
        loop_, [] { return false; }, std::chrono::milliseconds(50));
    EXPECT_EQ(recorder_.refreshes[&output()], 1);
}

TEST_F(WindowsOnWaylandTest, CompositorPacesTheFrames) {
    start();
    ASSERT_TRUE(turnUntil([&] { return description().width == 1024; }));
    SurfacePainter painter(output().makeSurface(surfaceInstance()), 1024, 640);
    for (int frame = 1; frame <= 5; ++frame) {
        output().willPresent();
        ASSERT_TRUE(painter.paint(0, 1, 0));
        ASSERT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == frame; })) << frame;
    }
}

TEST_F(WindowsOnWaylandTest, RefreshWithoutAFrameComesToo) {
    start();
    ASSERT_TRUE(turnUntil([&] { return description().width == 1024; }));
    SurfacePainter painter(output().makeSurface(surfaceInstance()), 1024, 640);
    output().willPresent();
    ASSERT_TRUE(painter.paint(0, 1, 0));
    ASSERT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
    for (int count = 2; count <= 4; ++count) {
        output().requestRefresh();
        output().requestRefresh();
        ASSERT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == count; })) << count;
    }
}

TEST_F(WindowsOnWaylandTest, FrameThatWasNeverPresentedLosesNoRefresh) {
    start();
    ASSERT_TRUE(turnUntil([&] { return description().width == 1024; }));
    SurfacePainter painter(output().makeSurface(surfaceInstance()), 1024, 640);
    output().willPresent();
    ASSERT_TRUE(painter.paint(0, 1, 0));
    ASSERT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
    output().willPresent();
    output().requestRefresh();
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 2; }));
}

TEST_F(WindowsOnWaylandTest, PixelsOfADenseDisplayAreMoreThanPoints) {
    start({.scale = 2});
    EXPECT_TRUE(turnUntil([&] { return description().width == 2048 && description().scale == 2; }))
        << description().width << " at " << description().scale;
}

TEST_F(WindowsOnWaylandTest, KeysAreCommands) {
    start();
    ASSERT_TRUE(turnUntil([&] { return description().width == 1024; }));
    SurfacePainter painter(output().makeSurface(surfaceInstance()), 1024, 640);
    ASSERT_TRUE(painter.paint(0, 1, 0));
    // Without a window manager keys go to where the pointer is.
    server_->run({"xdotool", "mousemove", "300", "300"});
    const auto isPressed = [&] {
        server_->run({"xdotool", "key", "n"});
        return recorder_.turnUntil(
            loop_, [&] { return !recorder_.commands.empty(); }, std::chrono::milliseconds(200));
    };
    ASSERT_TRUE(e2e::eventually(isPressed, std::chrono::seconds(20)));
    EXPECT_EQ(recorder_.commands.front(), (std::pair{&output(), WindowCommand::nextWallpaper}));
}

TEST(WindowsWithoutASeatTest, CompositorInMemoryIsRefusedWithASentence) {
    const e2e::Weston compositor({});
    MainLoop loop;
    OutputRecorder recorder;
    const auto made = makeWindows(loop, {{}}, recorder.events());
    ASSERT_FALSE(made);
    EXPECT_THAT(made.error(), HasSubstr("the Wayland compositor offers no seat"));
}

TEST_F(WindowsOnWaylandTest, CompositorThatIsGoneEndsTheOutputsInOrder) {
    start();
    compositor_->kill();
    EXPECT_TRUE(turnUntil([&] { return recorder_.ends == 1; }));
    EXPECT_THAT(recorder_.removed, ElementsAre("window-1"));
    EXPECT_THAT(recorder_.reason, HasSubstr("closed the connection"));
    recorder_.turnUntil(
        loop_, [] { return false; }, std::chrono::milliseconds(100));
    EXPECT_EQ(recorder_.ends, 1);
    backend_ = nullptr;
}

} // namespace
} // namespace vantor::agent
