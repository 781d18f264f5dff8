// Starts the real programs with homes of their own and checks what a user would see.

#include "tests/e2e/installation.h"

#include <gtest/gtest.h>

#include <csignal>

namespace vantor::e2e {
namespace {

using std::chrono::seconds;

constexpr int kExtensionEnded = 3;

std::size_t occurrences(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

class WholeRoad : public Installation {
  protected:
    std::vector<std::string> agentCommand(const std::string& length) const {
        return {VANTOR_BIN "/vantor-agent",
                "run",
                "--output",
                "headless:160x90,160x90",
                "--mode",
                "locked",
                "--choose",
                "1=match-desktop",
                "--choose",
                "2=plasma",
                "--seconds",
                length,
                "--out",
                out().string()};
    }
    /// Long enough that a loaded machine shows something before the first picture.
    Outcome agent() const { return run(agentCommand("3"), environment()); }
};

TEST_F(WholeRoad, AShaderOfTheHostApplicationShowsItsColourOnItsDisplay) {
    const auto shader = write("flat.metal", flatShader("float3(1.0, 0.5, 0.25)"));
    ASSERT_EQ(vantorctl({"set", "--display", "1", shader.string(), "--tint", "1,1,0.5,1"}).status,
              0);
    const Outcome outcome = agent();
    ASSERT_EQ(outcome.status, 0) << outcome.errors;

    const Picture picture = Picture::read(out() / "display-1-b.png");
    ASSERT_EQ(picture.width(), 160U);
    ASSERT_EQ(picture.height(), 90U);
    for (unsigned y = 0; y < 90; y += 7) {
        for (unsigned x = 0; x < 160; x += 7) {
            const Pixel pixel = picture.at(x, y);
            ASSERT_EQ(pixel.red, 255);
            ASSERT_NEAR(pixel.green, 128, 1);
            ASSERT_NEAR(pixel.blue, 32, 1);
        }
    }
}

TEST_F(WholeRoad, FramesThatGoThroughSharedMemoryShowTheSameColour) {
    const auto shader = write("flat.metal", flatShader("float3(1.0, 0.5, 0.25)"));
    ASSERT_EQ(vantorctl({"set", "--display", "1", shader.string()}).status, 0);
    auto variables = environment();
    variables["VANTOR_FORCE_SHM"] = "1";
    const Outcome outcome = run(agentCommand("3"), variables);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;

    const Picture first = Picture::read(out() / "display-1-b.png");
    EXPECT_EQ(first.at(0, 0).red, 255);
    EXPECT_NEAR(first.at(159, 89).green, 128, 1);
    EXPECT_NEAR(first.at(80, 45).blue, 64, 1);
    // The other display's wallpaper moves.
    EXPECT_GT(Picture::read(out() / "display-2-b.png")
                  .difference(Picture::read(out() / "display-2-a.png")),
              0.1);
}

TEST_F(WholeRoad, BothDisplaysShowTheirOwnWallpaperAndMove) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "builtin.elec-oscilloscope"}).status, 0);
    const Outcome outcome = agent();
    ASSERT_EQ(outcome.status, 0) << outcome.errors;

    const Picture first = Picture::read(out() / "display-1-b.png");
    const Picture second = Picture::read(out() / "display-2-b.png");
    EXPECT_GT(first.difference(Picture::read(out() / "display-1-a.png")), 0.1);
    EXPECT_GT(second.difference(Picture::read(out() / "display-2-a.png")), 0.1);
    EXPECT_GT(first.difference(second), 5.0);
    EXPECT_NE(outcome.output.find("display 1"), std::string::npos) << outcome.output;
    EXPECT_NE(outcome.output.find("display 2"), std::string::npos) << outcome.output;
}

TEST_F(WholeRoad, SpeedZeroStandsStill) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma", "--speed", "0"}).status, 0);
    ASSERT_EQ(agent().status, 0);
    EXPECT_EQ(Picture::read(out() / "display-1-a.png")
                  .difference(Picture::read(out() / "display-1-b.png")),
              0.0);
}

TEST_F(WholeRoad, AnUnlockedScreenKeepsItsPictureAndPausesIt) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma"}).status, 0);
    std::vector<std::string> command = agentCommand("3");
    command.insert(command.end(), {"--unlock-after", "0.6"});
    const Outcome outcome = run(command, environment());
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    for (const std::string display : {"display-1", "display-2"}) {
        const Picture picture = Picture::read(out() / (display + "-a.png"));
        EXPECT_GT(picture.brightest(), 32);
        EXPECT_EQ(picture.difference(Picture::read(out() / (display + "-b.png"))), 0.0);
    }
    const std::string text = log();
    EXPECT_NE(text.find(" UPDATE "), std::string::npos) << text;
    EXPECT_NE(text.find(" mode=default/active\n"), std::string::npos) << text;
}

TEST_F(WholeRoad, AnInterruptedAgentEndsItsExtensionAndSaysWhatItShowed) {
    Process agent(
        {VANTOR_BIN "/vantor-agent", "run", "--output", "headless:160x90", "--choose", "1=plasma"},
        environment());
    ASSERT_TRUE(
        eventually([&] { return log().find(" display=1 ") != std::string::npos; }, seconds(30)));
    const pid_t extension = childrenOf(agent.pid()).front();
    agent.signal(SIGINT);
    const Outcome outcome = agent.wait(seconds(20));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("display 1"), std::string::npos);
    EXPECT_FALSE(isRunning(extension));
}

TEST_F(WholeRoad, WrongUsageIsStatusTwoAndASentence) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"run", "--output", "wall"},
          {"run", "--choose", "7=plasma"},
          {"run", "--mode", "asleep"},
          {"run", "--seconds", "1"},
          {"walk"}}) {
        std::vector<std::string> command{VANTOR_BIN "/vantor-agent"};
        command.insert(command.end(), words.begin(), words.end());
        const Outcome outcome = run(command, environment());
        EXPECT_EQ(outcome.status, 2) << words.back();
        EXPECT_NE(outcome.errors, "") << words.back();
    }
    EXPECT_EQ(vantorctl({"set", "--display", "1", "plasma", "--tint", "red"}).status, 2);
    EXPECT_EQ(vantorctl({"set", "--display", "1", "no-such-shader"}).status, 1);
    EXPECT_EQ(run({VANTOR_BIN "/mslc"}, environment()).status, 2);
}

TEST_F(WholeRoad, WithoutTheAgentsFrameworkTheExtensionSaysSoAndStaysUp) {
    // A system root that lacks the framework; the bundle is the real one.
    const std::filesystem::path root = home() / "system";
    std::filesystem::create_directories(root);
    auto changed = environment();
    changed["VANTOR_SYSTEM_ROOT"] = root.string();
    std::vector<std::string> command = agentCommand("2");
    command.insert(command.end(),
                   {"--extension", VANTOR_BIN "/../lib/vantor/VantorLockScreen.appex"});
    const Outcome outcome = run(command, changed);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.errors.find("vantor-agent: display 1: "), std::string::npos)
        << outcome.errors;
    EXPECT_NE(log().find(" — dlopen failed: "), std::string::npos) << log();
}

TEST_F(WholeRoad, TheLogTellsTheStoryOfARun) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma"}).status, 0);
    ASSERT_EQ(agent().status, 0);
    const std::string text = log();
    EXPECT_NE(text.find(" — WallpaperExtensionKit loaded, runtime layout OK\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find(" accept pid "), std::string::npos) << text;
    EXPECT_NE(text.find(" choice=match-desktop 160x90@1.0x display=1 preview=false "
                        "mode=locked/active\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find(" choice=plasma 160x90@1.0x display=2 preview=false "), std::string::npos)
        << text;
    EXPECT_NE(text.find(" INVALIDATE "), std::string::npos) << text;
}

TEST_F(WholeRoad, AShaderThatDoesNotCompileIsRefusedWithItsPlace) {
    const auto shader = write("broken.metal", flatShader("float3(1.0, colour, 0.25)"));
    const Outcome outcome = vantorctl({"set", "--display", "1", shader.string()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.errors.find(shader.string() + ":12:"), std::string::npos) << outcome.errors;
    EXPECT_NE(outcome.errors.find("error: "), std::string::npos) << outcome.errors;
    EXPECT_FALSE(std::filesystem::exists(stateFile()));
}

TEST_F(WholeRoad, ABrokenShaderInTheStateIsBlackAndTouchesNothingElse) {
    const auto shader = write("broken.metal", flatShader("float3(1.0, colour, 0.25)"));
    ASSERT_EQ(vantorctl({"set", "--display", "1", shader.string(), "--no-check"}).status, 0);
    const Outcome outcome = agent();
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_EQ(Picture::read(out() / "display-1-b.png").brightest(), 0);
    EXPECT_GT(Picture::read(out() / "display-2-b.png").brightest(), 32);
    EXPECT_NE(log().find(" failed to compile: program_source:12:"), std::string::npos) << log();
}

TEST_F(WholeRoad, AMalformedStateFileMeansTheFallbackWallpaper) {
    std::filesystem::create_directories(stateFile().parent_path());
    std::ofstream(stateFile()) << "bplist00 and then nothing that makes sense";
    // The fallback's shader is the one that takes longest to compile.
    const Outcome outcome = run(agentCommand("6"), environment());
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_GT(Picture::read(out() / "display-1-b.png").brightest(), 32);
}

TEST_F(WholeRoad, AnExtensionThatDiesIsStartedAgainAndShowsItsWallpapersAgain) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma"}).status, 0);
    Process agent(agentCommand("8"), environment());
    ASSERT_TRUE(
        eventually([&] { return log().find(" display=2 ") != std::string::npos; }, seconds(30)));
    const auto children = childrenOf(agent.pid());
    ASSERT_EQ(children.size(), 1U);
    ::kill(children.front(), SIGKILL);
    const Outcome outcome = agent.wait(seconds(60));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.errors.find("the extension was ended by signal 9; it is started again in "),
              std::string::npos)
        << outcome.errors;
    EXPECT_EQ(occurrences(log(), "INIT pid "), 2U);
    for (const char* display : {"1", "2"}) {
        EXPECT_GT(
            Picture::read(out() / ("display-" + std::string(display) + "-b.png"))
                .difference(Picture::read(out() / ("display-" + std::string(display) + "-a.png"))),
            0.1);
    }
}

TEST_F(WholeRoad, AnExtensionThatIsGoneAtTheEndGivesTheAgentAStatusOfItsOwn) {
    // An installation whose extension cannot be started again.
    const auto bundle = folder() / "Broken.appex";
    std::filesystem::create_directories(bundle);
    std::ofstream(bundle / "Broken") << "#!/bin/sh\nexit 7\n";
    std::filesystem::permissions(bundle / "Broken", std::filesystem::perms::owner_all);
    auto command = agentCommand("2");
    command.insert(command.end(), {"--extension", bundle.string()});
    const Outcome outcome = run(command, environment());
    EXPECT_EQ(outcome.status, kExtensionEnded);
    EXPECT_NE(outcome.errors.find("the extension exited with status 7"), std::string::npos)
        << outcome.errors;
}

TEST_F(WholeRoad, AnExtensionEndsWithinASecondOfItsAgent) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma"}).status, 0);
    Process agent(agentCommand("60"), environment());
    ASSERT_TRUE(
        eventually([&] { return log().find(" display=2 ") != std::string::npos; }, seconds(30)));
    const auto children = childrenOf(agent.pid());
    ASSERT_EQ(children.size(), 1U);
    ASSERT_TRUE(isRunning(children.front()));
    agent.signal(SIGKILL);
    EXPECT_TRUE(eventually([&] { return !isRunning(children.front()); }, seconds(1)));
}

TEST_F(WholeRoad, NoProcessIsLeftBehind) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma"}).status, 0);
    Process agent(agentCommand("2"), environment());
    ASSERT_TRUE(eventually([&] { return !childrenOf(agent.pid()).empty(); }, seconds(10)));
    const pid_t extension = childrenOf(agent.pid()).front();
    ASSERT_EQ(agent.wait(seconds(60)).status, 0);
    EXPECT_FALSE(isRunning(extension));
}

} // namespace
} // namespace vantor::e2e
