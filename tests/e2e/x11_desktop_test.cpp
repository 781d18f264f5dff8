// The agent on an X server: as its background, and in windows.

#include "tests/e2e/installation.h"
#include "tests/e2e/x11_server.h"

#include <cstdlib>
#include <memory>
#include <optional>

namespace vantor::e2e {
namespace {

/// A machine with everything at once takes its time.
constexpr std::chrono::seconds kPatience{60};
constexpr int kDisplayServerGone = 4;

class X11DesktopTest : public Installation {
  protected:
    /// Every display shows one colour.
    void start(const std::string& output, WindowManager manager = WindowManager::none) {
        server_.emplace(manager, 640, 400);
        const auto shader = write("orange.metal", flatShader("float3(1.0, 0.5, 0.25)"));
        for (const char* const display : {"1", "2"}) {
            ASSERT_EQ(vantorctl({"set", "--display", display, shader.string()}).status, 0);
        }
        agent_ = std::make_unique<Process>(std::vector<std::string>{VANTOR_BIN "/vantor-agent",
                                                                    "run", "--output", output,
                                                                    "--mode", "locked"},
                                           environment());
    }
    bool eventually(const std::function<bool()>& holds) const {
        return e2e::eventually(holds, kPatience);
    }
    bool isOrange(int x, int y) const {
        const Pixel pixel = server_->at(x, y);
        return std::abs(pixel.red - 255) <= 1 && std::abs(pixel.green - 128) <= 1 &&
               std::abs(pixel.blue - 64) <= 1;
    }
    bool becomesOrange(int x, int y) const {
        return eventually([&] { return isOrange(x, y); });
    }
    std::uint32_t windowOf(const std::string& display) const {
        std::uint32_t window = 0;
        eventually([&] {
            return (window = server_->windowTitled("Vantor wallpaper, display " + display)) != 0;
        });
        return window;
    }
    void moveTo(std::uint32_t window, int x, int y) const {
        server_->run({"xdotool", "windowmove", std::to_string(window), std::to_string(x),
                      std::to_string(y)});
    }
    void press(std::uint32_t window, const std::string& key) const {
        server_->run({"xdotool", "windowfocus", "--sync", std::to_string(window), "key", key});
    }

    std::optional<X11Server> server_;
    std::unique_ptr<Process> agent_;
};

TEST_F(X11DesktopTest, WallpaperFillsTheScreenBelowTheWindows) {
    start("background", WindowManager::openbox);
    ASSERT_TRUE(becomesOrange(0, 0)) << agent_->errors();
    EXPECT_TRUE(becomesOrange(639, 399));
    EXPECT_TRUE(becomesOrange(320, 200));
    server_->addManaged("");
    EXPECT_TRUE(eventually([&] { return server_->at(250, 200).blue == 255; }));
    EXPECT_TRUE(isOrange(0, 0));
}

TEST_F(X11DesktopTest, WallpaperFollowsTheMonitors) {
    start("background");
    ASSERT_TRUE(becomesOrange(0, 0)) << agent_->errors();
    server_->run({"xrandr", "--setmonitor", "LEFT", "320/80x400/100+0+0", "screen"});
    server_->run({"xrandr", "--setmonitor", "RIGHT", "320/80x400/100+320+0", "none"});
    EXPECT_TRUE(eventually([&] {
        const Outcome told = command("vantor-agent", {"status", "--json"});
        return told.output.find("\"RIGHT\"") != std::string::npos;
    }));
    EXPECT_TRUE(becomesOrange(319, 399));
    EXPECT_TRUE(becomesOrange(320, 0));
    EXPECT_TRUE(becomesOrange(639, 399));
}

TEST_F(X11DesktopTest, RestingWallpaperIsThereAgainWhenAWindowGoes) {
    start("background");
    ASSERT_TRUE(becomesOrange(320, 200)) << agent_->errors();
    ASSERT_EQ(command("vantor-agent", {"pause"}).status, 0);
    const auto cover = server_->addCover(100, 100, 300, 200, 0x0000FF);
    ASSERT_TRUE(eventually([&] { return server_->at(320, 200).blue == 255; }));
    server_->removeWindow(cover);
    EXPECT_TRUE(becomesOrange(320, 200));
}

TEST_F(X11DesktopTest, WindowsShowTheWallpaperWithTheHelpOverIt) {
    start("window:500x390");
    const auto window = windowOf("1");
    ASSERT_NE(window, 0U) << agent_->errors();
    moveTo(window, 0, 0);
    ASSERT_TRUE(becomesOrange(499, 0));
    EXPECT_TRUE(becomesOrange(499, 389));
    // It goes by itself, and comes when it is asked for.
    ASSERT_TRUE(becomesOrange(20, 100));
    press(window, "h");
    EXPECT_TRUE(eventually([&] { return !isOrange(20, 100); }));
    EXPECT_TRUE(isOrange(499, 389));
}

TEST_F(X11DesktopTest, KeyEndsTheAgent) {
    start("window:300x200,300x200");
    ASSERT_NE(windowOf("1"), 0U);
    const auto window = windowOf("2");
    ASSERT_NE(window, 0U) << agent_->errors();
    press(window, "q");
    EXPECT_EQ(agent_->wait(kPatience).status, 0);
}

TEST_F(X11DesktopTest, AgentEndsInOrderWithTheServer) {
    for (const char* const output : {"background", "window:640x400"}) {
        SCOPED_TRACE(output);
        start(output);
        ASSERT_TRUE(becomesOrange(600, 300)) << agent_->errors();
        server_->kill();
        const Outcome outcome = agent_->wait(kPatience);
        EXPECT_EQ(outcome.status, kDisplayServerGone) << outcome.errors;
        EXPECT_NE(outcome.errors.find("closed the connection"), std::string::npos)
            << outcome.errors;
    }
}

} // namespace
} // namespace vantor::e2e
