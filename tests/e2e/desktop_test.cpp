// The agent as the background of a real compositor, and what becomes of it when somebody dies.

#include "tests/e2e/desktop.h"

#include <gmock/gmock.h>

#include <csignal>

namespace vantor::e2e {
namespace {

using nlohmann::json;
using std::chrono::seconds;
using testing::HasSubstr;

constexpr int kDisplayServerGone = 4;

std::size_t occurrences(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

/// Whether the middle and the corners have the colour.
bool isFlat(const Picture& picture, const Pixel& color) {
    const unsigned right = picture.width() - 1;
    const unsigned bottom = picture.height() - 1;
    for (const auto& [x, y] :
         {std::pair{0U, 0U}, {right, 0U}, {0U, bottom}, {right, bottom}, {right / 2, bottom / 2}}) {
        const Pixel pixel = picture.at(x, y);
        if (std::abs(pixel.red - color.red) > 1 || std::abs(pixel.green - color.green) > 1 ||
            std::abs(pixel.blue - color.blue) > 1) {
            return false;
        }
    }
    return true;
}

constexpr Pixel kOrange{.red = 255, .green = 128, .blue = 64};

class DesktopTest : public Desktop {
  protected:
    /// The host application's choice for a display: one colour.
    void chooseOrange(const std::string& display) const {
        const auto shader = write("orange.metal", flatShader("float3(1.0, 0.5, 0.25)"));
        ASSERT_EQ(vantorctl({"set", "--display", display, shader.string()}).status, 0);
    }
    bool showsOrange(const std::string& connector) const {
        return isFlat(sway_->screenshot(connector), kOrange);
    }
    /// What the extension draws of the entry while it is paused, by another program.
    Picture rendered(const std::string& entry, const std::string& size) const {
        const auto file = folder() / (entry + ".png");
        EXPECT_EQ(
            vantorctl({"render", entry, "--size", size, "--time", "12", "--out", file.string()})
                .status,
            0);
        return Picture::read(file);
    }
};

TEST_F(DesktopTest, ShowsTheExtensionsOwnFrameOnEveryOutputToThePixel) {
    // Sides that are whole numbers of points at that scale, so that nothing need be stretched.
    startSway(2, "480x270");
    sway_->command("output HEADLESS-2 scale 1.5");
    startAgent({"--mode", "default", "--choose", "1=plasma", "--choose", "2=aurora"});
    const std::pair<std::string, std::string> shown[] = {{"HEADLESS-1", "plasma"},
                                                         {"HEADLESS-2", "aurora"}};
    for (const auto& [connector, entry] : shown) {
        const std::string name = connector;
        ASSERT_TRUE(eventually([&] { return frames(name) > 0; })) << agent_->errors();
        const Picture own = rendered(entry, "480x270");
        EXPECT_TRUE(eventually([&] {
            const Picture seen = sway_->screenshot(name);
            return seen.width() == own.width() && seen.difference(own) < 0.1;
        })) << connector;
    }
    EXPECT_EQ(output("HEADLESS-2").at("scale"), 1.5);
}

TEST_F(DesktopTest, MovesWhileItIsSeenAndRestsWithoutOneWakeUpWhileItIsPaused) {
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
    GTEST_SKIP() << "the sanitizer has a thread of its own that wakes up";
#endif
#endif
    startSway();
    startAgent({"--choose", "1=plasma", "--choose", "2=plasma"});
    ASSERT_TRUE(moves({"HEADLESS-1", "HEADLESS-2"})) << agent_->errors();
    ASSERT_EQ(agentctl({"pause"}).status, 0);
    EXPECT_EQ(output("HEADLESS-1").at("pauses"), json({"asked"}));
    EXPECT_EQ(output("HEADLESS-1").at("activityState"), "suspended");
    // What was on its way arrives first.
    ASSERT_TRUE(eventually([&] {
        const auto before = wakeUps(extension());
        std::this_thread::sleep_for(seconds(1));
        return wakeUps(extension()) == before;
    }));
    const pid_t other = extension();
    const std::uint64_t before[] = {wakeUps(agent_->pid()), wakeUps(other)};
    std::this_thread::sleep_for(seconds(3));
    EXPECT_EQ(wakeUps(agent_->pid()), before[0]);
    EXPECT_EQ(wakeUps(other), before[1]);
    ASSERT_EQ(agentctl({"resume"}).status, 0);
    EXPECT_TRUE(moves({"HEADLESS-1", "HEADLESS-2"}));
}

TEST_F(DesktopTest, AnOutputThatAWindowCoversRestsWhileTheOtherGoesOn) {
    startSway();
    startAgent({"--choose", "1=plasma", "--choose", "2=plasma"});
    ASSERT_TRUE(moves({"HEADLESS-1", "HEADLESS-2"})) << agent_->errors();
    sway_->command("focus output HEADLESS-2");
    auto variables = sway_->environment();
    variables["HOME"] = home().string();
    const Process terminal({"/usr/bin/env", "foot", "--fullscreen", "sleep", "100"}, variables);
    ASSERT_TRUE(eventually([&] { return output("HEADLESS-2").at("pauses") == json({"covered"}); }));
    const std::uint64_t rested = frames("HEADLESS-2");
    EXPECT_TRUE(moves({"HEADLESS-1"}, 10));
    EXPECT_LE(frames("HEADLESS-2"), rested + 1);
    // Its own policy may be that it goes on.
    configure("pause_when_covered = false\n");
    EXPECT_TRUE(eventually([&] { return output("HEADLESS-2").at("pauses") == json::array(); }));
}

TEST_F(DesktopTest, FollowsModesScalesAndOutputsThatComeAndGo) {
    startSway();
    chooseOrange("1");
    chooseOrange("3");
    startAgent({"--choose", "2=plasma"});
    ASSERT_TRUE(eventually([&] { return showsOrange("HEADLESS-1"); })) << agent_->errors();
    sway_->command("output HEADLESS-1 mode 400x300");
    EXPECT_TRUE(eventually([&] { return output("HEADLESS-1").at("width") == 400; }));
    EXPECT_TRUE(eventually([&] {
        return sway_->screenshot("HEADLESS-1").width() == 400 && showsOrange("HEADLESS-1");
    }));
    sway_->command("output HEADLESS-1 scale 1.25");
    EXPECT_TRUE(eventually([&] { return output("HEADLESS-1").at("scale") == 1.25; }));
    EXPECT_TRUE(eventually([&] { return showsOrange("HEADLESS-1"); }));

    sway_->command("create_output");
    ASSERT_TRUE(eventually([&] { return !output("HEADLESS-3").is_null(); }));
    EXPECT_EQ(output("HEADLESS-3").at("display"), 3);
    EXPECT_TRUE(eventually([&] { return showsOrange("HEADLESS-3"); }));

    ASSERT_TRUE(moves({"HEADLESS-2"}));
    const std::size_t asked = occurrences(log(), " choice=plasma ");
    configure("[[output]]\nconnector = \"HEADLESS-2\"\nenabled = false\n");
    ASSERT_TRUE(eventually([&] { return output("HEADLESS-2").is_null(); }));
    configure("");
    ASSERT_TRUE(eventually([&] { return !output("HEADLESS-2").is_null(); }));
    EXPECT_EQ(output("HEADLESS-2").at("display"), 2);
    EXPECT_TRUE(moves({"HEADLESS-2"}));
    EXPECT_EQ(occurrences(log(), " choice=plasma "), asked + 1);
    // Within the grace period it is the wallpaper of before.
    EXPECT_THAT(log(), Not(HasSubstr("torn down")));
    EXPECT_EQ(status().at("extension").at("restarts"), 0);
}

TEST_F(DesktopTest, GoesOnWhenAnOutputIsUnplugged) {
    const Sway screen(1);
    sway_ = Sway::inside(screen, 2);
    startAgent({"--choose", "1=plasma", "--choose", "2=plasma"});
    ASSERT_TRUE(moves({"WL-1", "WL-2"})) << agent_->errors();
    screen.closeWindow("WL-2");
    ASSERT_TRUE(eventually([&] { return output("WL-2").is_null(); }));
    EXPECT_TRUE(eventually([&] { return log().find("INVALIDATE ") != std::string::npos; }));
    EXPECT_TRUE(moves({"WL-1"}));
    EXPECT_EQ(endAgent().status, 0);
}

TEST_F(DesktopTest, ShowsTheLockScreensWallpaperWhileItIsLocked) {
    configure("desktop = \"still\"\n");
    startSway(1);
    startAgent({"--choose", "1=plasma"});
    ASSERT_TRUE(eventually([&] { return frames("HEADLESS-1") > 0; })) << agent_->errors();
    EXPECT_EQ(output("HEADLESS-1").at("presentationMode"), "default");
    ASSERT_EQ(agentctl({"lock"}).status, 0);
    EXPECT_EQ(output("HEADLESS-1").at("presentationMode"), "locked");
    EXPECT_TRUE(moves({"HEADLESS-1"}));
    ASSERT_EQ(agentctl({"unlock"}).status, 0);
    EXPECT_EQ(output("HEADLESS-1").at("presentationMode"), "default");
}

TEST_F(DesktopTest, AChoiceIsRememberedAndTakenBack) {
    configure("[[output]]\nconnector = \"HEADLESS-*\"\nwallpaper = \"match-desktop\"\n");
    startSway(1);
    chooseOrange("1");
    startAgent();
    ASSERT_TRUE(eventually([&] { return showsOrange("HEADLESS-1"); })) << agent_->errors();
    ASSERT_EQ(agentctl({"choose", "HEADLESS-1", "plasma"}).status, 0);
    EXPECT_TRUE(eventually([&] { return !showsOrange("HEADLESS-1"); }));
    EXPECT_EQ(agentctl({"choose", "DP-9", "plasma"}).status, 1);
    // The extension need not have told by now what it offers.
    static_cast<void>(agentctl({"choose", "HEADLESS-1", "plasmoid"}));
    EXPECT_TRUE(eventually([&] {
        return output("HEADLESS-1").at("trouble") == "the extension offers no entry \"plasmoid\"";
    }));
    EXPECT_EQ(agentctl({"choose", "HEADLESS-1", "plasmatic"}).status, 1);
    ASSERT_EQ(agentctl({"choose", "HEADLESS-1", "plasma"}).status, 0);
    EXPECT_TRUE(
        eventually([&] { return output("HEADLESS-1").at("trouble").get<std::string>().empty(); }));
    ASSERT_EQ(endAgent().status, 0);

    startAgent();
    EXPECT_EQ(output("HEADLESS-1").at("choice"), "plasma");
    ASSERT_EQ(agentctl({"choose", "1", "default"}).status, 0);
    EXPECT_TRUE(eventually([&] { return showsOrange("HEADLESS-1"); }));
}

TEST_F(DesktopTest, AMistakeInTheConfigurationIsToldWithItsPlaceAndChangesNothing) {
    configure("max_fps = 5\n");
    startSway(1);
    startAgent({"--choose", "1=plasma"});
    ASSERT_TRUE(moves({"HEADLESS-1"})) << agent_->errors();
    configure("max_fps = 5\ndesktop = \"upside down\"\n");
    ASSERT_TRUE(
        eventually([&] { return !status().at("configurationError").get<std::string>().empty(); }));
    EXPECT_THAT(status().at("configurationError").get<std::string>(), HasSubstr("agent.toml:2:"));
    const Outcome reload = agentctl({"reload"});
    EXPECT_EQ(reload.status, 1);
    EXPECT_THAT(reload.errors, HasSubstr("agent.toml:2:"));
    EXPECT_TRUE(moves({"HEADLESS-1"}));
    // The first second has the frames of the start in it too.
    EXPECT_LE(output("HEADLESS-1").at("framesPerSecond").get<double>(), 10.0);
    configure("[[output]]\nenabled = false\n");
    EXPECT_TRUE(eventually([&] { return status().at("outputs").empty(); }));
    EXPECT_EQ(status().at("configurationError"), "");
}

TEST_F(DesktopTest, TheLastFrameStaysWhileAnExtensionThatDiedIsStartedAgain) {
    startSway();
    chooseOrange("1");
    startAgent({"--choose", "2=plasma"});
    ASSERT_TRUE(eventually([&] { return showsOrange("HEADLESS-1"); })) << agent_->errors();
    const pid_t first = extension();
    ASSERT_EQ(::kill(first, SIGKILL), 0);
    while (isRunning(first) || extension() == 0 || extension() == first) {
        EXPECT_TRUE(showsOrange("HEADLESS-1"));
    }
    EXPECT_TRUE(moves({"HEADLESS-2"}));
    EXPECT_TRUE(showsOrange("HEADLESS-1"));
    EXPECT_EQ(status().at("extension").at("restarts"), 1);
    EXPECT_EQ(status().at("extension").at("lastEnd"), "was ended by signal 9");
    EXPECT_EQ(output("HEADLESS-2").at("trouble"), "");
}

TEST_F(DesktopTest, AChoiceThatBringsTheExtensionDownIsSetAsideAcrossStartsUntilACleanOne) {
    startSway(1);
    startAgent({"--choose", "1=plasma"});
    for (int death = 0; death < 5; ++death) {
        ASSERT_TRUE(eventually([&] { return extension() > 0; }));
        const pid_t running = extension();
        ASSERT_EQ(::kill(running, SIGKILL), 0);
        ASSERT_TRUE(eventually([&] { return extension() != running; }));
    }
    ASSERT_TRUE(eventually([&] { return !output("HEADLESS-1").at("setAside").is_null(); }));
    EXPECT_EQ(output("HEADLESS-1").at("choice"), "plasma");
    EXPECT_THAT(agent_->errors(), HasSubstr("HEADLESS-1 shows builtin.elec-pcb, for plasma is set "
                                            "aside until it changes"));
    ASSERT_TRUE(
        eventually([&] { return log().find("choice=builtin.elec-pcb") != std::string::npos; }));
    ASSERT_EQ(endAgent().status, 0);

    startAgent({"--choose", "1=plasma"});
    EXPECT_FALSE(output("HEADLESS-1").at("setAside").is_null());
    ASSERT_EQ(endAgent().status, 0);

    startAgent({"--choose", "1=plasma", "--clean"});
    EXPECT_TRUE(output("HEADLESS-1").at("setAside").is_null());
    EXPECT_TRUE(moves({"HEADLESS-1"}));
}

TEST_F(DesktopTest, AKilledAgentTakesItsExtensionAlongAndTheNextOneTakesItsPlace) {
    startSway(1);
    startAgent({"--choose", "1=plasma"});
    ASSERT_TRUE(moves({"HEADLESS-1"})) << agent_->errors();
    const pid_t orphan = extension();
    agent_->signal(SIGKILL);
    EXPECT_TRUE(eventually([&] { return !isRunning(orphan); }));
    static_cast<void>(agent_->wait(kPatience));
    startAgent({"--choose", "1=plasma"});
    EXPECT_TRUE(moves({"HEADLESS-1"})) << agent_->errors();
}

TEST_F(DesktopTest, TheDesktopHasOneAgent) {
    startSway(1);
    startAgent();
    const Outcome second =
        run({VANTOR_BIN "/vantor-agent", "run", "--output", "background"}, environment());
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.errors, HasSubstr(std::to_string(agent_->pid())));
}

TEST_F(DesktopTest, AnAgentWhoseCompositorDiesEndsAndLeavesNothing) {
    startSway(1);
    startAgent({"--choose", "1=plasma"});
    ASSERT_TRUE(moves({"HEADLESS-1"})) << agent_->errors();
    const pid_t orphan = extension();
    ::kill(sway_->pid(), SIGKILL);
    const Outcome outcome = agent_->wait(kPatience);
    EXPECT_EQ(outcome.status, kDisplayServerGone) << outcome.errors;
    EXPECT_FALSE(isRunning(orphan));
    EXPECT_FALSE(std::filesystem::exists(home() / ".local/state/vantor/agent.sock"));
}

} // namespace
} // namespace vantor::e2e
