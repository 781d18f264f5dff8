#include "tests/agent/wayland/background_fixture.h"

namespace vantor::agent {
namespace {

using testing::ElementsAre;

// As the protocol numbers them.
constexpr std::uint32_t kMinimized = 1;
constexpr std::uint32_t kActivated = 2;
constexpr std::uint32_t kFullscreen = 3;

class WaylandVisibility : public BackgroundFixture {
  protected:
    bool becomes(const std::string& connector, Visibility expected) {
        return eventually([&] { return visibility(connector) == expected; });
    }
    /// A window on that output.
    Id window(Id output, const std::vector<std::uint32_t>& states) {
        const Id id = compositor->openWindow();
        compositor->enterOutput(id, output);
        compositor->setWindowStates(id, states);
        return id;
    }
};

TEST_F(WaylandVisibility, IsOffWhileTheDisplayIs) {
    const Id id = compositor->addOutput();
    start();
    compositor->setPower(id, false);
    EXPECT_TRUE(becomes("DP-1", Visibility::off));
    compositor->setPower(id, true);
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
    EXPECT_THAT(log, ElementsAre("added DP-1", "changed DP-1", "changed DP-1"));
}

TEST_F(WaylandVisibility, CountsAsOnWhereNobodyTells) {
    const Id id = compositor->addOutput();
    start();
    compositor->setPower(id, false);
    ASSERT_TRUE(becomes("DP-1", Visibility::off));
    compositor->failPower(id);
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
}

TEST_F(WaylandVisibility, PostponesARefreshUntilTheDisplayIsOnAgain) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    compositor->setPower(id, false);
    ASSERT_TRUE(becomes("DP-1", Visibility::off));
    // The compositor answers all the same; nobody would see the frame.
    compositor->answerFrames(id);
    exchange();
    EXPECT_EQ(refreshes["DP-1"], 0);
    compositor->setPower(id, true);
    ASSERT_TRUE(eventually([&] { return awaitedFrames(id) == 1; }));
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandVisibility, AsksTheCompositorAgainThatForgotWhatItWasAsked) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    ASSERT_TRUE(refreshesOn(id, "DP-1"));
    compositor->setPower(id, false);
    ASSERT_TRUE(becomes("DP-1", Visibility::off));
    present[0]->requestRefresh();
    exchange();
    EXPECT_EQ(awaitedFrames(id), 0U);
    compositor->setPower(id, true);
    ASSERT_TRUE(eventually([&] { return awaitedFrames(id) == 1; }));
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandVisibility, PostponesTheFirstRefreshToo) {
    const Id id = compositor->addOutput();
    start();
    compositor->setPower(id, false);
    ASSERT_TRUE(becomes("DP-1", Visibility::off));
    present[0]->requestRefresh();
    exchange();
    EXPECT_EQ(refreshes["DP-1"], 0);
    compositor->setPower(id, true);
    EXPECT_TRUE(eventually([&] { return refreshes["DP-1"] == 1; }));
}

TEST_F(WaylandVisibility, IsCoveredByAFullScreenWindowOnItsOutputOnly) {
    const Id first = compositor->addOutput({.name = "DP-1"});
    compositor->addOutput({.name = "DP-2"});
    start(2);
    const Id id = window(first, {kActivated});
    exchange();
    EXPECT_EQ(visibility("DP-1"), Visibility::visible);
    compositor->setWindowStates(id, {kActivated, kFullscreen});
    EXPECT_TRUE(becomes("DP-1", Visibility::covered));
    EXPECT_EQ(visibility("DP-2"), Visibility::visible);
    compositor->closeWindow(id);
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
}

TEST_F(WaylandVisibility, LeavesItToTheCompositorWhetherSomethingShowsThroughACover) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    window(id, {kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    ASSERT_EQ(awaitedFrames(id), 1U);
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandVisibility, AsksAgainOnceItIsNoLongerCovered) {
    const Id id = compositor->addOutput();
    start();
    const Id cover = window(id, {kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    show(*present[0]);
    exchange();
    const int before = compositor->surface(id)->commits;
    compositor->closeWindow(cover);
    ASSERT_TRUE(becomes("DP-1", Visibility::visible));
    EXPECT_TRUE(eventually([&] { return compositor->surface(id)->commits > before; }));
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandVisibility, IsNotCoveredByAWindowThatIsMinimizedOrElsewhere) {
    const Id output = compositor->addOutput();
    start();
    const Id id = window(output, {kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    compositor->setWindowStates(id, {kFullscreen, kMinimized});
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
    compositor->setWindowStates(id, {kFullscreen});
    EXPECT_TRUE(becomes("DP-1", Visibility::covered));
    compositor->leaveOutput(id, output);
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
}

TEST_F(WaylandVisibility, IsSeenWhenTheFocusLeavesTheFullScreenWindowForAnotherOfTheOutput) {
    const Id output = compositor->addOutput();
    start();
    const Id full = window(output, {kActivated, kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    compositor->setWindowStates(full, {kFullscreen});
    const Id other = window(output, {kActivated});
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
    compositor->setWindowStates(other, {});
    compositor->setWindowStates(full, {kActivated, kFullscreen});
    EXPECT_TRUE(becomes("DP-1", Visibility::covered));
}

TEST_F(WaylandVisibility, StaysCoveredWhenTheFocusMovesToAnotherOutput) {
    const Id first = compositor->addOutput({.name = "DP-1"});
    const Id second = compositor->addOutput({.name = "DP-2"});
    start(2);
    const Id full = window(first, {kActivated, kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    // Both have it for a moment, as with two seats.
    window(second, {kActivated});
    compositor->setWindowStates(full, {kFullscreen});
    exchange();
    EXPECT_EQ(visibility("DP-1"), Visibility::covered);
}

TEST_F(WaylandVisibility, IsOffRatherThanCovered) {
    const Id output = compositor->addOutput();
    start();
    window(output, {kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    compositor->setPower(output, false);
    EXPECT_TRUE(becomes("DP-1", Visibility::off));
    compositor->setPower(output, true);
    EXPECT_TRUE(becomes("DP-1", Visibility::covered));
}

TEST_F(WaylandVisibility, OutlivesWindowsOnOutputsThatAreGone) {
    const Id first = compositor->addOutput({.name = "DP-1"});
    compositor->addOutput({.name = "DP-2"});
    start(2);
    const Id id = window(first, {kFullscreen});
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    compositor->removeOutput(first);
    compositor->enterOutput(id, first);
    ASSERT_TRUE(eventually([&] { return output("DP-1") == nullptr; }));
    compositor->enterOutput(id, first);
    compositor->leaveOutput(id, first);
    compositor->setWindowStates(id, {kFullscreen, 99, 4000000000});
    compositor->closeWindow(id);
    compositor->closeWindow(id);
    exchange();
    EXPECT_EQ(visibility("DP-2"), Visibility::visible);
}

TEST_F(WaylandVisibility, KeepsTheWindowsWhenTheCompositorTellsOfNoMore) {
    const Id output = compositor->addOutput();
    start();
    const Id id = window(output, {kFullscreen});
    compositor->finishToplevels();
    ASSERT_TRUE(becomes("DP-1", Visibility::covered));
    compositor->setWindowStates(id, {});
    EXPECT_TRUE(becomes("DP-1", Visibility::visible));
}

TEST_F(WaylandVisibility, IsAlwaysVisibleWhereTheCompositorTellsNothing) {
    offer({.outputPowers = false, .toplevels = false});
    const Id output = compositor->addOutput();
    start();
    window(output, {kFullscreen});
    compositor->setPower(output, false);
    exchange();
    EXPECT_EQ(visibility("DP-1"), Visibility::visible);
}

} // namespace
} // namespace vantor::agent
