// The desktop background of an X server, with a window manager and without one.

#include "agent/output/x11/x11_background.h"
#include "tests/e2e/x11_server.h"
#include "tests/support/output_recorder.h"
#include "tests/support/surface_painter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <optional>

namespace vantor::agent {
namespace {

using e2e::WindowManager;
using e2e::X11Server;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class X11BackgroundTest : public testing::Test {
  protected:
    void startServer(WindowManager manager = WindowManager::none) {
        server_.emplace(manager, 1280, 800);
    }
    /// Two monitors beside each other.
    void splitScreen() {
        server_->run({"xrandr", "--setmonitor", "LEFT", "640/160x800/200+0+0", "screen"});
        server_->run({"xrandr", "--setmonitor", "RIGHT", "640/160x800/200+640+0", "none"});
    }
    void start() {
        auto made = makeX11Background(loop_, recorder_.events());
        ASSERT_TRUE(made) << made.error();
        backend_ = std::move(*made);
        ASSERT_TRUE(turnUntil([&] { return !recorder_.outputs.empty(); }));
    }

    template <typename Condition>
    bool turnUntil(Condition condition) {
        return recorder_.turnUntil(loop_, condition);
    }
    void turnFor(std::chrono::milliseconds time) {
        recorder_.turnUntil(
            loop_, [] { return false; }, time);
    }
    bool becomes(Visibility visibility, std::size_t index = 0) {
        return turnUntil([&] { return output(index).visibility() == visibility; });
    }
    Output& output(std::size_t index = 0) { return *recorder_.outputs.at(index); }
    std::vector<std::string> connectors() const {
        std::vector<std::string> names;
        for (const Output* const each : recorder_.outputs) {
            names.push_back(each->description().connector);
        }
        return names;
    }
    bool isPainted(int x, int y) const {
        const auto pixel = server_->at(x, y);
        return pixel.red == 255 && pixel.green == 0 && pixel.blue == 51;
    }
    /// Fills the output.
    std::unique_ptr<SurfacePainter> paint(std::size_t index = 0) {
        const OutputDescription& description = output(index).description();
        auto painter = std::make_unique<SurfacePainter>(
            output(index).makeSurface(surfaceInstance()), description.width, description.height);
        output(index).willPresent();
        EXPECT_TRUE(painter->paint(1, 0, 0.2F));
        EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output(index)] > 0; }));
        return painter;
    }

    /// Shows a frame whenever one is to be shown again, until the screen is painted at two corners.
    bool becomesPainted(SurfacePainter& painter, int left, int top, int right, int bottom) {
        int shown = 0;
        return turnUntil([&] {
            const int changes = recorder_.changes[&output()];
            if (std::exchange(shown, changes) != changes) {
                EXPECT_TRUE(painter.paint(1, 0, 0.2F));
            }
            return isPainted(left, top) && isPainted(right, bottom);
        });
    }

    std::optional<X11Server> server_;
    MainLoop loop_;
    OutputRecorder recorder_;
    std::unique_ptr<OutputBackend> backend_;
};

TEST_F(X11BackgroundTest, MonitorIsAnOutput) {
    startServer();
    start();
    EXPECT_EQ(backend_->kind(), "background");
    EXPECT_THAT(connectors(), ElementsAre("screen"));
    EXPECT_EQ(output().description().width, 1280U);
    EXPECT_EQ(output().description().height, 800U);
    EXPECT_EQ(output().description().scale, 1);
    EXPECT_GT(output().description().refreshRate, 0);
    EXPECT_FALSE(output().isInMemory());
    EXPECT_EQ(output().visibility(), Visibility::visible);
}

TEST_F(X11BackgroundTest, MonitorsComeAndGo) {
    startServer();
    start();
    splitScreen();
    EXPECT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 2; }));
    EXPECT_THAT(connectors(), UnorderedElementsAre("LEFT", "RIGHT"));
    EXPECT_EQ(output(0).description().width, 640U);
    server_->run({"xrandr", "--delmonitor", "RIGHT"});
    EXPECT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 1; }));
    EXPECT_EQ(recorder_.removed.back(), "RIGHT");
    EXPECT_THAT(connectors(), ElementsAre("LEFT"));
}

TEST_F(X11BackgroundTest, MonitorOfAnotherSizeStaysTheSameOutput) {
    startServer();
    server_->run({"xrandr", "--setmonitor", "LEFT", "640/160x800/200+0+0", "screen"});
    start();
    ASSERT_THAT(connectors(), ElementsAre("LEFT"));
    // A monitor is not changed by hand but defined anew.
    server_->run({"xrandr", "--delmonitor", "LEFT"});
    server_->run({"xrandr", "--setmonitor", "LEFT", "800/200x600/150+100+50", "screen"});
    EXPECT_TRUE(turnUntil([&] { return output().description().width == 800; }));
    EXPECT_EQ(output().description().height, 600U);
    EXPECT_GT(recorder_.changes[&output()], 0);
    EXPECT_TRUE(recorder_.removed.empty());
    const auto painter = paint();
    EXPECT_TRUE(becomesPainted(*painter, 101, 51, 898, 648));
    EXPECT_FALSE(isPainted(99, 51));
    EXPECT_FALSE(isPainted(101, 651));
}

TEST_F(X11BackgroundTest, WhatIsPresentedIsOnTheScreenBelowEveryWindow) {
    for (const auto manager : {WindowManager::none, WindowManager::openbox}) {
        startServer(manager);
        const auto early = server_->addManaged("");
        start();
        const auto late = server_->addCover(500, 500, 100, 100, 0x00FF00);
        {
            const auto painter = paint();
            EXPECT_TRUE(becomesPainted(*painter, 10, 10, 1270, 790));
            EXPECT_FALSE(isPainted(250, 200));
            EXPECT_EQ(server_->at(550, 550).green, 255);
        }
        server_->removeWindow(early);
        server_->removeWindow(late);
        backend_ = nullptr;
        recorder_ = {};
    }
}

TEST_F(X11BackgroundTest, WhatWasCoveredIsToBeShownAgain) {
    startServer();
    start();
    const auto painter = paint();
    const auto cover = server_->addCover(100, 100, 300, 300, 0x00FF00);
    ASSERT_TRUE(turnUntil([&] { return server_->at(200, 200).green == 255; }));
    turnFor(std::chrono::milliseconds(50));
    recorder_.changes.clear();
    server_->removeWindow(cover);
    ASSERT_TRUE(turnUntil([&] { return recorder_.changes[&output()] > 0; }));
    ASSERT_TRUE(painter->paint(1, 0, 0.2F));
    EXPECT_TRUE(turnUntil([&] { return isPainted(200, 200); }));
}

TEST_F(X11BackgroundTest, PointerMeetsTheRootWindow) {
    startServer();
    start();
    turnFor(std::chrono::milliseconds(100));
    const std::string root = server_->run({"xdotool", "search", "--maxdepth", "0", "--name", ""});
    EXPECT_THAT(server_->run({"xdotool", "mousemove", "300", "300", "getmouselocation", "--shell"}),
                HasSubstr("WINDOW=" + std::to_string(std::stoul(root)) + "\n"));
}

TEST_F(X11BackgroundTest, FullScreenWindowCoversItsMonitorOnly) {
    startServer(WindowManager::openbox);
    splitScreen();
    start();
    ASSERT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 2; }));
    const auto left = connectors()[0] == "LEFT" ? 0U : 1U;
    const auto window = server_->addManaged("_NET_WM_STATE_FULLSCREEN");
    EXPECT_TRUE(becomes(Visibility::covered, left));
    EXPECT_EQ(output(1 - left).visibility(), Visibility::visible);
    server_->removeWindow(window);
    EXPECT_TRUE(becomes(Visibility::visible, left));
}

TEST_F(X11BackgroundTest, FullScreenWindowOfAnotherDesktopCoversNothing) {
    startServer(WindowManager::openbox);
    start();
    server_->addManaged("_NET_WM_STATE_FULLSCREEN");
    EXPECT_TRUE(becomes(Visibility::covered));
    server_->run({"xdotool", "set_desktop", "1"});
    EXPECT_TRUE(becomes(Visibility::visible));
    server_->run({"xdotool", "set_desktop", "0"});
    EXPECT_TRUE(becomes(Visibility::covered));
}

TEST_F(X11BackgroundTest, CoveredOutputSendsNoRefreshUntilItIsSeenAgain) {
    startServer();
    start();
    const auto cover = server_->addCover(0, 0, 1280, 800, 0);
    ASSERT_TRUE(becomes(Visibility::covered));
    output().requestRefresh();
    turnFor(std::chrono::milliseconds(100));
    EXPECT_EQ(recorder_.refreshes[&output()], 0);
    server_->removeWindow(cover);
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
}

TEST_F(X11BackgroundTest, BlankedScreenIsOff) {
    startServer();
    start();
    server_->run({"xset", "s", "activate"});
    EXPECT_TRUE(becomes(Visibility::off));
    server_->run({"xset", "s", "reset"});
    EXPECT_TRUE(becomes(Visibility::visible));
}

TEST_F(X11BackgroundTest, DensityOfTheDesktopIsTheScale) {
    startServer();
    server_->setTextProperty("RESOURCE_MANAGER", "Xft.dpi:\t144\n");
    start();
    EXPECT_EQ(output().description().scale, 1.5);
    server_->setTextProperty("RESOURCE_MANAGER", "Xcursor.size:\t24\nXft.dpi:\t192\n");
    EXPECT_TRUE(turnUntil([&] { return output().description().scale == 2; }));
    EXPECT_EQ(output().description().width, 1280U);
}

TEST_F(X11BackgroundTest, RefreshComesOnceForEachTimeItIsAsked) {
    startServer();
    start();
    output().requestRefresh();
    output().requestRefresh();
    EXPECT_EQ(recorder_.refreshes[&output()], 0);
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
    turnFor(std::chrono::milliseconds(100));
    EXPECT_EQ(recorder_.refreshes[&output()], 1);
}

TEST_F(X11BackgroundTest, StaysLowestWhenWindowManagersComeAndGo) {
    startServer();
    start();
    const auto painter = paint();
    server_->startWindowManager();
    server_->addManaged("");
    EXPECT_TRUE(becomesPainted(*painter, 10, 10, 1270, 790));
    EXPECT_TRUE(turnUntil([&] { return !isPainted(250, 200); }));
    server_->stopWindowManager();
    EXPECT_TRUE(becomesPainted(*painter, 10, 10, 1270, 790));
    EXPECT_TRUE(recorder_.removed.empty());
}

TEST_F(X11BackgroundTest, ServerThatIsGoneEndsTheOutputsInOrder) {
    startServer();
    splitScreen();
    start();
    ASSERT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 2; }));
    output().requestRefresh();
    server_->kill();
    EXPECT_TRUE(turnUntil([&] { return recorder_.ends == 1; }));
    EXPECT_THAT(recorder_.removed, UnorderedElementsAre("LEFT", "RIGHT"));
    EXPECT_THAT(recorder_.reason, HasSubstr("closed the connection"));
    turnFor(std::chrono::milliseconds(50));
    EXPECT_EQ(recorder_.ends, 1);
}

TEST_F(X11BackgroundTest, DestructionLeavesNothingOnTheDisplayAndTellsNothing) {
    startServer();
    const auto before = server_->stacking();
    start();
    turnFor(std::chrono::milliseconds(50));
    EXPECT_NE(server_->stacking(), before);
    backend_ = nullptr;
    EXPECT_TRUE(
        e2e::eventually([&] { return server_->stacking() == before; }, std::chrono::seconds(20)));
    EXPECT_TRUE(recorder_.removed.empty());
    EXPECT_EQ(recorder_.ends, 0);
}

TEST(X11BackgroundWithoutAServerTest, ThereIsASentence) {
    ::unsetenv("DISPLAY");
    MainLoop loop;
    OutputRecorder recorder;
    const auto made = makeX11Background(loop, recorder.events());
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error(), "no X server answers");
}

} // namespace
} // namespace vantor::agent
