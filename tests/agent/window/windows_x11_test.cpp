// The windows on an X server.

#include "agent/host/hosted_context.h"
#include "agent/output/window/windows.h"
#include "tests/e2e/x11_server.h"
#include "tests/support/output_recorder.h"
#include "tests/support/surface_painter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <optional>

namespace vantor::agent {
namespace {

using e2e::WindowManager;
using e2e::X11Server;
using testing::ElementsAre;
using testing::HasSubstr;

class WindowsOnX11Test : public testing::Test {
  protected:
    void start(WindowManager manager, const std::vector<WindowOptions>& windows) {
        server_.emplace(manager);
        auto made = makeWindows(loop_, windows, recorder_.events());
        ASSERT_TRUE(made) << made.error();
        backend_ = std::move(*made);
        ASSERT_TRUE(
            recorder_.turnUntil(loop_, [&] { return recorder_.outputs.size() == windows.size(); }));
    }
    void startOne(WindowManager manager) {
        start(manager, {{.width = 640, .height = 480, .title = "One"}});
    }

    template <typename Condition>
    bool turnUntil(Condition condition) {
        return recorder_.turnUntil(loop_, condition);
    }

    std::uint32_t idOf(const std::string& title) {
        std::uint32_t found = 0;
        turnUntil([&] { return (found = server_->windowTitled(title)) != 0; });
        return found;
    }
    void press(const std::string& title, const std::string& key) {
        server_->run({"xdotool", "windowfocus", "--sync", std::to_string(idOf(title))});
        server_->run({"xdotool", "key", key});
    }
    Output& output(std::size_t index = 0) { return *recorder_.outputs.at(index); }

    std::optional<X11Server> server_;
    MainLoop loop_;
    OutputRecorder recorder_;
    std::unique_ptr<OutputBackend> backend_;
};

TEST_F(WindowsOnX11Test, EachWindowIsAnOutputOfItsSize) {
    start(WindowManager::none, {{.width = 640, .height = 480, .title = "One"},
                                {.width = 320, .height = 200, .title = "Two"}});
    EXPECT_EQ(backend_->kind(), "window");
    EXPECT_EQ(output(0).description().connector, "window-1");
    EXPECT_EQ(output(0).description().width, 640U);
    EXPECT_EQ(output(0).description().height, 480U);
    EXPECT_EQ(output(0).description().scale, 1);
    EXPECT_GT(output(0).description().refreshRate, 0);
    EXPECT_EQ(output(1).description().connector, "window-2");
    EXPECT_EQ(output(1).description().width, 320U);
    EXPECT_EQ(output(1).description().height, 200U);
    for (const Output* const each : recorder_.outputs) {
        EXPECT_FALSE(each->isInMemory());
        EXPECT_EQ(each->visibility(), Visibility::visible);
    }
    EXPECT_NE(idOf("One"), 0U);
    EXPECT_NE(idOf("Two"), 0U);
}

TEST_F(WindowsOnX11Test, ResizedWindowTellsItsNewSize) {
    startOne(WindowManager::none);
    server_->run({"xdotool", "windowsize", std::to_string(idOf("One")), "500", "300"});
    EXPECT_TRUE(turnUntil([&] { return output().description().width == 500; }));
    EXPECT_EQ(output().description().height, 300U);
    EXPECT_GT(recorder_.changes[&output()], 0);
}

TEST_F(WindowsOnX11Test, KeysAreCommands) {
    startOne(WindowManager::none);
    const std::pair<const char*, WindowCommand> keys[] = {
        {"l", WindowCommand::toggleLock},    {"i", WindowCommand::toggleIdle},
        {"s", WindowCommand::toggleSuspend}, {"n", WindowCommand::nextWallpaper},
        {"q", WindowCommand::quit},          {"Escape", WindowCommand::quit},
    };
    for (const auto& [key, command] : keys) {
        recorder_.commands.clear();
        press("One", key);
        ASSERT_TRUE(turnUntil([&] { return !recorder_.commands.empty(); })) << key;
        EXPECT_EQ(recorder_.commands.front(), (std::pair{&output(), command})) << key;
    }
}

TEST_F(WindowsOnX11Test, KeyGoesToTheWindowThatHasTheFocus) {
    start(WindowManager::none, {{.width = 640, .height = 480, .title = "One"},
                                {.width = 320, .height = 200, .title = "Two"}});
    press("Two", "n");
    ASSERT_TRUE(turnUntil([&] { return !recorder_.commands.empty(); }));
    EXPECT_EQ(recorder_.commands.front().first, &output(1));
}

TEST_F(WindowsOnX11Test, ChordsBelongToTheDesktop) {
    startOne(WindowManager::none);
    press("One", "ctrl+l");
    press("One", "alt+n");
    press("One", "i");
    ASSERT_TRUE(turnUntil([&] { return !recorder_.commands.empty(); }));
    EXPECT_THAT(recorder_.commands, ElementsAre(std::pair{&output(), WindowCommand::toggleIdle}));
}

TEST_F(WindowsOnX11Test, HelpIsThereAtTheStartAndGoesByItselfOnceThereIsAPicture) {
    startOne(WindowManager::none);
    EXPECT_NE(output().overlay(), nullptr);
    output().willPresent();
    EXPECT_TRUE(turnUntil([&] { return output().overlay() == nullptr; }));
    EXPECT_GT(recorder_.changes[&output()], 0);
}

TEST_F(WindowsOnX11Test, KeysShowAndHideTheHelp) {
    startOne(WindowManager::none);
    const bool isShown = output().overlay() != nullptr;
    press("One", "h");
    EXPECT_TRUE(turnUntil([&] { return (output().overlay() != nullptr) != isShown; }));
    press("One", "F1");
    EXPECT_TRUE(turnUntil([&] { return (output().overlay() != nullptr) == isShown; }));
    EXPECT_TRUE(recorder_.commands.empty());
}

TEST_F(WindowsOnX11Test, KeyMakesTheWindowFillTheScreenAndBack) {
    startOne(WindowManager::openbox);
    press("One", "f");
    EXPECT_TRUE(turnUntil([&] { return output().description().width == 1280; }));
    EXPECT_TRUE(turnUntil([&] { return output().description().height == 800; }));
    press("One", "f");
    EXPECT_TRUE(turnUntil([&] { return output().description().width == 640; }));
}

TEST_F(WindowsOnX11Test, ClosedWindowIsAnUnpluggedDisplay) {
    start(WindowManager::openbox, {{.width = 640, .height = 480, .title = "One"},
                                   {.width = 320, .height = 200, .title = "Two"}});
    server_->requestClose(idOf("One"));
    EXPECT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 1; }));
    EXPECT_THAT(recorder_.removed, ElementsAre("window-1"));
    EXPECT_TRUE(turnUntil([&] { return server_->windowTitled("One") == 0; }));
    EXPECT_TRUE(recorder_.commands.empty());
}

TEST_F(WindowsOnX11Test, ClosingTheLastWindowAsksToQuit) {
    startOne(WindowManager::openbox);
    server_->requestClose(idOf("One"));
    ASSERT_TRUE(turnUntil([&] { return !recorder_.commands.empty(); }));
    EXPECT_THAT(recorder_.commands, ElementsAre(std::pair{&output(), WindowCommand::quit}));
}

// In a process of its own: SDL's video does not outlive the server.
TEST_F(WindowsOnX11Test, ServerThatIsGoneEndsTheOutputsInOrder) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto play = [this] {
        start(WindowManager::none, {{.width = 640, .height = 480, .title = "One"},
                                    {.width = 320, .height = 200, .title = "Two"}});
        output().requestRefresh();
        server_->kill();
        EXPECT_TRUE(turnUntil([&] { return recorder_.ends == 1; }));
        EXPECT_THAT(recorder_.removed, ElementsAre("window-1", "window-2"));
        EXPECT_THAT(recorder_.reason, HasSubstr("closed the connection"));
        const auto refreshes = recorder_.refreshes;
        recorder_.turnUntil(
            loop_, [] { return false; }, std::chrono::milliseconds(100));
        EXPECT_EQ(recorder_.ends, 1);
        EXPECT_EQ(recorder_.refreshes, refreshes);
        backend_ = nullptr;
        server_.reset();
        std::_Exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(play(), testing::ExitedWithCode(0), "");
}

TEST_F(WindowsOnX11Test, CoveredWindowSendsNoRefreshUntilItIsSeenAgain) {
    startOne(WindowManager::none);
    const auto cover = server_->addCover(0, 0, 1280, 800, 0);
    ASSERT_TRUE(turnUntil([&] { return output().visibility() == Visibility::off; }));
    output().requestRefresh();
    recorder_.turnUntil(
        loop_, [] { return false; }, std::chrono::milliseconds(100));
    EXPECT_EQ(recorder_.refreshes[&output()], 0);
    server_->removeWindow(cover);
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
    EXPECT_EQ(output().visibility(), Visibility::visible);
}

TEST_F(WindowsOnX11Test, MinimisedWindowIsOff) {
    startOne(WindowManager::openbox);
    const std::string window = std::to_string(idOf("One"));
    server_->run({"xdotool", "windowminimize", "--sync", window});
    EXPECT_TRUE(turnUntil([&] { return output().visibility() == Visibility::off; }));
    server_->run({"xdotool", "windowactivate", window});
    EXPECT_TRUE(turnUntil([&] { return output().visibility() == Visibility::visible; }));
}

TEST_F(WindowsOnX11Test, RefreshComesOnceForEachTimeItIsAsked) {
    startOne(WindowManager::none);
    output().requestRefresh();
    output().requestRefresh();
    EXPECT_EQ(recorder_.refreshes[&output()], 0);
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 1; }));
    recorder_.turnUntil(
        loop_, [] { return false; }, std::chrono::milliseconds(100));
    EXPECT_EQ(recorder_.refreshes[&output()], 1);
    output().requestRefresh();
    EXPECT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == 2; }));
}

TEST_F(WindowsOnX11Test, WhatIsPresentedIsOnTheScreen) {
    startOne(WindowManager::none);
    SurfacePainter painter(output().makeSurface(surfaceInstance()), 640, 480);
    server_->run({"xdotool", "windowmove", std::to_string(idOf("One")), "0", "0"});
    for (int frame = 1; frame <= 3; ++frame) {
        output().willPresent();
        ASSERT_TRUE(painter.paint(1, 0, 0.2F));
        ASSERT_TRUE(turnUntil([&] { return recorder_.refreshes[&output()] == frame; }));
    }
    const auto isPainted = [&] {
        const auto pixel = server_->at(320, 240);
        return pixel.red == 255 && pixel.green == 0 && pixel.blue == 51;
    };
    EXPECT_TRUE(turnUntil(isPainted));
}

TEST_F(WindowsOnX11Test, SurfaceOfAnInstanceWithoutTheExtensionIsNone) {
    startOne(WindowManager::none);
    VkInstanceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    VkInstance bare = VK_NULL_HANDLE;
    ASSERT_EQ(vkCreateInstance(&info, nullptr, &bare), VK_SUCCESS);
    EXPECT_EQ(output().makeSurface(bare), VK_NULL_HANDLE);
    vkDestroyInstance(bare, nullptr);
}

TEST_F(WindowsOnX11Test, SignalsStayTheAgents) {
    struct sigaction before {};
    sigaction(SIGTERM, nullptr, &before);
    startOne(WindowManager::none);
    for (const int number : {SIGINT, SIGTERM}) {
        struct sigaction after {};
        sigaction(number, nullptr, &after);
        EXPECT_EQ(after.sa_handler, before.sa_handler);
    }
}

TEST_F(WindowsOnX11Test, DestructionLeavesNothingOnTheDisplayAndTellsNothing) {
    startOne(WindowManager::none);
    ASSERT_NE(idOf("One"), 0U);
    backend_ = nullptr;
    EXPECT_TRUE(recorder_.removed.empty());
    EXPECT_EQ(recorder_.ends, 0);
    EXPECT_EQ(server_->windowTitled("One"), 0U);
}

TEST_F(WindowsOnX11Test, BackendCanBeMadeAgain) {
    startOne(WindowManager::none);
    backend_ = nullptr;
    recorder_.outputs.clear();
    auto again =
        makeWindows(loop_, {{.width = 200, .height = 100, .title = "Again"}}, recorder_.events());
    ASSERT_TRUE(again);
    EXPECT_TRUE(turnUntil([&] { return recorder_.outputs.size() == 1; }));
    EXPECT_EQ(output().description().width, 200U);
}

TEST(WindowsTest, WithoutADisplayServerThereIsASentence) {
    ::unsetenv("DISPLAY");
    ::unsetenv("WAYLAND_DISPLAY");
    ::setenv("XDG_RUNTIME_DIR", "/nonexistent", 1);
    MainLoop loop;
    OutputRecorder recorder;
    const auto made = makeWindows(loop, {{}}, recorder.events());
    ASSERT_FALSE(made);
    EXPECT_THAT(made.error(), HasSubstr("no display server shows windows"));
}

} // namespace
} // namespace vantor::agent
