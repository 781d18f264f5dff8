#include "tests/agent/wayland/background_fixture.h"

#include <sys/socket.h>

namespace vantor::agent {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using tests::MonitorState;

class WaylandBackground : public BackgroundFixture {};

TEST_F(WaylandBackground, SaysThatThereIsNoCompositor) {
    const ScopedVariable nowhere("WAYLAND_DISPLAY", "/nonexistent/wayland-7");
    const auto made = makeWaylandBackground(loop, events());
    ASSERT_FALSE(made);
    EXPECT_EQ(
        made.error(),
        "there is no Wayland compositor at '/nonexistent/wayland-7': No such file or directory");
}

TEST_F(WaylandBackground, SaysThatThereIsNoLayerShell) {
    offer({.layerShell = false});
    const auto made = makeWaylandBackground(loop, events());
    ASSERT_FALSE(made);
    EXPECT_EQ(made.error(),
              "the compositor offers no layer shell, so nothing can lie below its windows");
}

TEST_F(WaylandBackground, AnnouncesAnOutputWithWhatTheCompositorSaysOfIt) {
    compositor->addOutput({.name = "DP-3", .make = "Acme", .model = "Wide", .refresh = 59940});
    start();
    EXPECT_EQ(backend->kind(), "background");
    EXPECT_EQ(present[0]->description(), (OutputDescription{.connector = "DP-3",
                                                            .make = "Acme",
                                                            .model = "Wide",
                                                            .width = 1920,
                                                            .height = 1080,
                                                            .scale = 1,
                                                            .refreshRate = 59.94}));
    EXPECT_FALSE(present[0]->isInMemory());
    EXPECT_EQ(present[0]->visibility(), Visibility::visible);
}

TEST_F(WaylandBackground, LiesBelowEverythingAndTakesNoInput) {
    const Id id = compositor->addOutput({.logicalWidth = 1280, .logicalHeight = 720});
    start();
    show(*present[0]);
    ASSERT_TRUE(eventually([&] { return compositor->surface(id)->commits == 2; }));
    const tests::SeenSurface seen = *compositor->surface(id);
    EXPECT_EQ(seen.nameSpace, "wallpaper");
    EXPECT_EQ(seen.layer, 0U);
    EXPECT_EQ(seen.anchor, 15U);
    EXPECT_EQ(seen.exclusiveZone, -1);
    EXPECT_EQ(seen.keyboard, 0U);
    EXPECT_TRUE(seen.takesNoInput);
    EXPECT_EQ(seen.opaque, (std::array{1280, 720}));
    EXPECT_EQ(seen.destination, (std::array{1280, 720}));
    EXPECT_EQ(seen.bufferScale, 1);
    EXPECT_EQ(seen.acknowledged, seen.configured);
    EXPECT_EQ(size("DP-1"), "1920x1080@1.5");
}

TEST_F(WaylandBackground, ScalesItsBufferWhereThereIsNoViewport) {
    offer({.viewporter = false});
    const Id id = compositor->addOutput({.scale = 2, .logicalWidth = 960, .logicalHeight = 540});
    start();
    EXPECT_EQ(size("DP-1"), "1920x1080@2");
    show(*present[0]);
    ASSERT_TRUE(eventually([&] { return compositor->surface(id)->commits == 2; }));
    EXPECT_EQ(compositor->surface(id)->bufferScale, 2);
    EXPECT_EQ(compositor->surface(id)->destination, std::nullopt);
}

TEST_F(WaylandBackground, FollowsAPreferredFractionalScale) {
    offer({.fractionalScales = true});
    const Id id = compositor->addOutput();
    start();
    EXPECT_EQ(size("DP-1"), "1920x1080@1");
    compositor->setPreferredScale(id, 150);
    EXPECT_TRUE(eventually([&] { return size("DP-1") == "2400x1350@1.25"; }));
    EXPECT_THAT(log, ElementsAre("added DP-1", "changed DP-1"));
}

TEST_F(WaylandBackground, KnowsOldOutputsByTheirNumberOrTheirLogicalName) {
    offer({.outputManager = false, .outputVersion = 1});
    compositor->addOutput();
    start();
    EXPECT_THAT(present[0]->description().connector, StartsWith("output-"));
    EXPECT_EQ(present[0]->description().width, 1920U);

    backend.reset();
    present.clear();
    offer({.outputVersion = 3});
    compositor->addOutput({.name = "HDMI-A-1"});
    start();
    EXPECT_EQ(present[0]->description().connector, "HDMI-A-1");
}

TEST_F(WaylandBackground, GivesEveryOutputAConnectorOfItsOwn) {
    compositor->addOutput();
    compositor->addOutput();
    start(2);
    EXPECT_NE(present[0]->description().connector, present[1]->description().connector);
}

TEST_F(WaylandBackground, RefreshesFromTheLoopBeforeTheFirstFrame) {
    const Id id = compositor->addOutput();
    start();
    present[0]->requestRefresh();
    present[0]->requestRefresh();
    EXPECT_EQ(refreshes["DP-1"], 0);
    EXPECT_TRUE(eventually([&] { return refreshes["DP-1"] == 1; }));
    exchange();
    EXPECT_EQ(refreshes["DP-1"], 1);
    // A frame callback would never come on a surface without a picture.
    EXPECT_EQ(awaitedFrames(id), 0U);
}

TEST_F(WaylandBackground, AwaitsOneFrameCallbackHoweverOftenItIsAsked) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    present[0]->requestRefresh();
    present[0]->requestRefresh();
    show(*present[0]);
    exchange();
    EXPECT_EQ(awaitedFrames(id), 1U);
    EXPECT_EQ(refreshes["DP-1"], 0);
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
    exchange();
    EXPECT_EQ(refreshes["DP-1"], 1);
    EXPECT_EQ(awaitedFrames(id), 0U);
}

TEST_F(WaylandBackground, AsksForAFrameCallbackWithoutAPicture) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    ASSERT_TRUE(refreshesOn(id, "DP-1"));
    present[0]->requestRefresh();
    ASSERT_TRUE(eventually([&] { return awaitedFrames(id) == 1; }));
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandBackground, AsksAgainForWhatWasToRideOnAFrameThatWasLost) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    ASSERT_TRUE(refreshesOn(id, "DP-1"));
    // The presentation fails, so nothing commits the surface.
    present[0]->willPresent();
    present[0]->requestRefresh();
    ASSERT_TRUE(eventually([&] { return awaitedFrames(id) == 1; }));
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandBackground, GoesOnElsewhereWhereOneOutputNeverAnswers) {
    const Id silent = compositor->addOutput({.name = "DP-1"});
    const Id lively = compositor->addOutput({.name = "DP-2"});
    start(2);
    show(*output("DP-1"));
    for (int frame = 0; frame < 3; ++frame) {
        show(*output("DP-2"));
        ASSERT_TRUE(eventually([&] { return awaitedFrames(lively) == 1; }));
        ASSERT_TRUE(refreshesOn(lively, "DP-2"));
    }
    EXPECT_EQ(refreshes["DP-1"], 0);
    EXPECT_EQ(awaitedFrames(silent), 1U);
}

TEST_F(WaylandBackground, ReportsAnotherSizeOnceAndAnswersItWithTheNextFrame) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    const MonitorState small = {
        .width = 1280, .height = 800, .logicalWidth = 1280, .logicalHeight = 800};
    compositor->changeOutput(id, small);
    ASSERT_TRUE(eventually([&] { return size("DP-1") == "1280x800@1"; }));
    EXPECT_LT(compositor->surface(id)->acknowledged, compositor->surface(id)->configured);
    show(*present[0]);
    exchange();
    EXPECT_EQ(compositor->surface(id)->acknowledged, compositor->surface(id)->configured);
    EXPECT_EQ(compositor->surface(id)->destination, (std::array{1280, 800}));
    EXPECT_THAT(log, ElementsAre("added DP-1", "changed DP-1"));
}

TEST_F(WaylandBackground, AnswersAConfigurationThatChangesNothingAtOnce) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    compositor->configure(id, 1920, 1080);
    EXPECT_TRUE(eventually([&] {
        return compositor->surface(id)->acknowledged == compositor->surface(id)->configured;
    }));
    EXPECT_THAT(log, ElementsAre("added DP-1"));
}

TEST_F(WaylandBackground, TakesAnEndThatIsMarkedTwiceForNoChange) {
    const Id id = compositor->addOutput();
    start();
    compositor->sendDone(id);
    compositor->sendDone(id);
    exchange();
    EXPECT_THAT(log, ElementsAre("added DP-1"));
}

TEST_F(WaylandBackground, TurnsWithItsDisplay) {
    const Id id = compositor->addOutput();
    start();
    compositor->changeOutput(id, {.transform = 1, .logicalWidth = 1080, .logicalHeight = 1920});
    EXPECT_TRUE(eventually([&] { return size("DP-1") == "1080x1920@1"; }));
}

TEST_F(WaylandBackground, DoesWithoutAnOutputOfAbsurdSizeUntilItHasAnother) {
    const Id id = compositor->addOutput();
    compositor->addOutput({.name = "DP-2"});
    start(2);
    show(*output("DP-1"));
    for (const auto& [width, height] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {0, 0}, {16385, 1}, {0x7FFFFFFF, 0x7FFFFFFF}, {0xFFFFFFFF, 0xFFFFFFFF}}) {
        compositor->setConfiguresBySelf(false);
        compositor->configure(id, width, height);
        ASSERT_TRUE(eventually([&] { return output("DP-1") == nullptr; })) << width;
        // The compositor forgets the picture, and is asked for another size.
        ASSERT_TRUE(eventually([&] {
            const auto seen = compositor->surface(id);
            return seen && seen->commits == 1 && seen->configured == 0;
        })) << width;
        compositor->configure(id, 640, 480);
        ASSERT_TRUE(eventually([&] { return output("DP-1") != nullptr; })) << width;
    }
    EXPECT_NE(output("DP-2"), nullptr);
}

TEST_F(WaylandBackground, MakesTheBestOfAbsurdModesAndScales) {
    const Id id = compositor->addOutput();
    start();
    for (const MonitorState& absurd : {
             MonitorState{.width = 0, .height = 0, .refresh = -1},
             MonitorState{.width = -1, .height = -1, .refresh = 0},
             MonitorState{.width = 2147483647, .height = 2147483647, .refresh = 2147483647},
             MonitorState{.transform = 77, .scale = 0},
             MonitorState{.scale = -2147483647},
             MonitorState{.width = 1, .height = 1, .scale = 2147483647},
         }) {
        compositor->changeOutput(id, absurd);
        exchange();
        ASSERT_NE(output("DP-1"), nullptr);
        const OutputDescription& description = output("DP-1")->description();
        EXPECT_LE(description.width, 1920U);
        EXPECT_LE(description.height, 1080U);
        EXPECT_EQ(description.refreshRate, 60);
    }
}

TEST_F(WaylandBackground, LosesAnOutputThatIsWithdrawnInTheMiddleOfAFrame) {
    const Id id = compositor->addOutput();
    compositor->addOutput({.name = "DP-2"});
    start(2);
    show(*output("DP-1"));
    exchange();
    compositor->removeOutput(id);
    compositor->answerFrames(id);
    compositor->configure(id, 800, 600);
    compositor->setPower(id, false);
    ASSERT_TRUE(eventually([&] { return output("DP-1") == nullptr; }));
    exchange();
    EXPECT_THAT(log, UnorderedElementsAre("added DP-1", "added DP-2", "removed DP-1"));
    EXPECT_EQ(compositor->surface(id), std::nullopt);
}

TEST_F(WaylandBackground, MakesABackgroundAgainThatTheCompositorCloses) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    compositor->close(id);
    ASSERT_TRUE(eventually([&] { return log.size() == 3; }));
    EXPECT_THAT(log, ElementsAre("added DP-1", "removed DP-1", "added DP-1"));
    show(*present[0]);
    exchange();
    EXPECT_TRUE(refreshesOn(id, "DP-1"));
}

TEST_F(WaylandBackground, MakesNoBackgroundForAnOutputThatGoesAfterItsSurface) {
    const Id id = compositor->addOutput();
    start();
    compositor->close(id);
    ASSERT_TRUE(eventually([&] { return present.empty(); }));
    compositor->removeOutput(id);
    exchange();
    EXPECT_EQ(compositor->surface(id), std::nullopt);
    EXPECT_THAT(log, ElementsAre("added DP-1", "removed DP-1"));
}

TEST_F(WaylandBackground, EndsWhenTheCompositorClosesTheConnection) {
    compositor->addOutput({.name = "DP-1"});
    compositor->addOutput({.name = "DP-2"});
    start(2);
    show(*output("DP-1"));
    compositor->disconnect();
    ASSERT_TRUE(eventually([&] { return ended.has_value(); }));
    EXPECT_EQ(*ended, "the compositor closed the connection");
    EXPECT_THAT(log,
                UnorderedElementsAre("added DP-1", "added DP-2", "removed DP-1", "removed DP-2"));
}

TEST_F(WaylandBackground, EndsWithTheReasonOfAProtocolError) {
    const Id id = compositor->addOutput();
    start();
    compositor->sendProtocolError(id);
    ASSERT_TRUE(eventually([&] { return ended.has_value(); }));
    EXPECT_THAT(*ended, HasSubstr("protocol error 1 of zwlr_layer_surface_v1"));
    EXPECT_TRUE(present.empty());
}

TEST_F(WaylandBackground, MayBeLetGoOfWhenItEnds) {
    compositor->addOutput();
    auto recorded = events();
    recorded.ended = [this](const std::string& why) {
        backend.reset();
        ended = why;
    };
    auto made = makeWaylandBackground(loop, recorded);
    ASSERT_TRUE(made);
    backend = std::move(made).value();
    ASSERT_TRUE(eventually([&] { return present.size() == 1; }));
    compositor->disconnect();
    EXPECT_TRUE(eventually([&] { return ended.has_value(); }));
    EXPECT_EQ(backend, nullptr);
}

TEST_F(WaylandBackground, SaysThatACompositorHangsUpWhileItStarts) {
    // The compositor accepts and goes.
    compositor->disconnect();
    int ends[2] = {-1, -1};
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    ::close(ends[1]);
    const ScopedVariable inherited("WAYLAND_SOCKET", std::to_string(ends[0]));
    const auto made = makeWaylandBackground(loop, events());
    ASSERT_FALSE(made);
    EXPECT_THAT(made.error(), StartsWith("the compositor closed the connection"));
}

TEST_F(WaylandBackground, WakesNobodyWhileNothingHappensOrAfterTheEnd) {
    int turns = 0;
    loop.setTurnEnded([&] { ++turns; });
    // The wait itself takes some, the same each time.
    const auto turnsOfAWait = [&] {
        pass(0.01);
        turns = 0;
        pass(0.2);
        return turns;
    };
    const int ofTheWait = turnsOfAWait();
    compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    EXPECT_EQ(turnsOfAWait(), ofTheWait);
    compositor->disconnect();
    ASSERT_TRUE(eventually([&] { return ended.has_value(); }));
    EXPECT_EQ(turnsOfAWait(), ofTheWait);
}

TEST_F(WaylandBackground, LeavesSilentlyWithAllThatItMade) {
    const Id id = compositor->addOutput();
    start();
    show(*present[0]);
    exchange();
    const auto before = log;
    backend.reset();
    EXPECT_TRUE(eventually([&] { return compositor->clients() == 0; }));
    EXPECT_EQ(compositor->surface(id), std::nullopt);
    EXPECT_EQ(log, before);
    EXPECT_EQ(ended, std::nullopt);
}

} // namespace
} // namespace vantor::agent
