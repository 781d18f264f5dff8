// The agent as the background of a compositor that does what it should not, or stops doing what it
// should.

#include "platform/linux/file_descriptor.h"
#include "tests/e2e/desktop.h"
#include "tests/support/wayland_compositor.h"

#include <gmock/gmock.h>

#include <sys/socket.h>
#include <sys/un.h>

namespace vantor::e2e {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;
using tests::MonitorState;

constexpr int kDisplayServerGone = 4;
constexpr std::int32_t kWidth = 320;
constexpr std::int32_t kHeight = 180;

/// A small output, for what is drawn here is drawn by the CPU.
MonitorState small(const std::string& name) {
    return {.name = name,
            .width = kWidth,
            .height = kHeight,
            .logicalWidth = kWidth,
            .logicalHeight = kHeight};
}

class HostileCompositor : public Desktop {
  protected:
    using Id = tests::WaylandCompositor::Id;

    void offer(const tests::CompositorOffers& offers) { compositor_.emplace(offers); }
    void SetUp() override {
        Desktop::SetUp();
        offer({});
    }
    /// Whatever it met, the agent keeps to the protocols.
    void TearDown() override { EXPECT_THAT(compositor_->violations(), IsEmpty()); }

    std::map<std::string, std::string> environment() const override {
        auto variables = Desktop::environment();
        variables["WAYLAND_DISPLAY"] = compositor_->socket().string();
        return variables;
    }
    /// Starts the agent on two outputs and waits until both move.
    void startOnTwo() {
        first_ = compositor_->addOutput(small("DP-1"));
        second_ = compositor_->addOutput(small("DP-2"));
        startAgent({"--choose", "1=plasma", "--choose", "2=plasma"});
        ASSERT_TRUE(moves({"DP-1", "DP-2"})) << agent_->errors();
    }
    /// Whether pictures of that size are shown on the output.
    bool shows(Id id, std::array<std::int32_t, 2> size) const {
        return eventually([&] {
            const auto seen = compositor_->surface(id);
            return seen && seen->buffer == size;
        });
    }

    std::optional<tests::WaylandCompositor> compositor_;
    Id first_ = 0;
    Id second_ = 0;
};

TEST_F(HostileCompositor, IsToldThatItLacksALayerShell) {
    offer({.layerShell = false});
    const Outcome outcome =
        run({VANTOR_BIN "/vantor-agent", "run", "--output", "background"}, environment());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("the compositor offers no layer shell"));
}

TEST_F(HostileCompositor, IsNotWaitedForWithoutAnEnd) {
    // It takes connections and answers nobody.
    const auto path = folder() / "silent";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.native().copy(address.sun_path, sizeof(address.sun_path) - 1);
    const FileDescriptor listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    ASSERT_EQ(::bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)),
              0);
    ASSERT_EQ(::listen(listening.get(), 1), 0);
    auto variables = environment();
    variables["WAYLAND_DISPLAY"] = path.string();
    const Outcome outcome =
        run({VANTOR_BIN "/vantor-agent", "run", "--output", "background"}, variables, kPatience);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.errors, HasSubstr("the compositor does not answer within 10 seconds"));
}

TEST_F(HostileCompositor, GetsAPixelForEachOfItsDisplayAtAnyScale) {
    offer({.fractionalScales = true});
    startOnTwo();
    EXPECT_TRUE(shows(first_, {kWidth, kHeight}));
    compositor_->setPreferredScale(first_, 150);
    EXPECT_TRUE(shows(first_, {400, 225}));
    EXPECT_EQ(compositor_->surface(first_)->destination, (std::array{kWidth, kHeight}));
    EXPECT_EQ(output("DP-1").at("scale"), 1.25);
    EXPECT_TRUE(shows(second_, {kWidth, kHeight}));
}

TEST_F(HostileCompositor, GetsNothingForADisplayThatIsOffWhileTheOtherGoesOn) {
    startOnTwo();
    compositor_->setPower(first_, false);
    ASSERT_TRUE(eventually([&] { return output("DP-1").at("pauses") == json({"off"}); }));
    EXPECT_TRUE(moves({"DP-2"}, 10));
    const std::uint64_t rested = frames("DP-1");
    EXPECT_TRUE(moves({"DP-2"}, 10));
    EXPECT_EQ(frames("DP-1"), rested);
    compositor_->setPower(first_, true);
    EXPECT_TRUE(moves({"DP-1", "DP-2"}));
}

TEST_F(HostileCompositor, HoldsUpNothingButFramesWhenItAnswersNoneOfThem) {
    startOnTwo();
    compositor_->setAnswersFrames(false);
    // The last ones may be on their way.
    ASSERT_TRUE(eventually([&] {
        const std::uint64_t before = frames("DP-1") + frames("DP-2");
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        return frames("DP-1") + frames("DP-2") == before;
    }));
    EXPECT_EQ(agentctl({"choose", "DP-1", "aurora"}).status, 0);
    EXPECT_EQ(output("DP-1").at("choice"), "aurora");
    EXPECT_EQ(compositor_->surface(first_)->awaitedFrames, 1U);
    compositor_->setAnswersFrames(true);
    compositor_->answerFrames(first_);
    compositor_->answerFrames(second_);
    EXPECT_TRUE(moves({"DP-1", "DP-2"}));
}

TEST_F(HostileCompositor, GetsNoPictureOfAnAbsurdSizeAndOneAgainOfASensible) {
    startOnTwo();
    compositor_->setConfiguresBySelf(false);
    const std::size_t memory = residentMemory(agent_->pid());
    for (const auto& [width, height] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
             {0, 0}, {16384, 16384}, {0xFFFFFFFF, 0xFFFFFFFF}}) {
        compositor_->configure(first_, width, height);
        ASSERT_TRUE(eventually([&] { return output("DP-1").is_null(); })) << width;
        // Another surface asks for another size.
        ASSERT_TRUE(eventually([&] {
            const auto seen = compositor_->surface(first_);
            return seen && seen->configured == 0;
        })) << width;
        compositor_->configure(first_, kWidth, kHeight);
        EXPECT_TRUE(shows(first_, {kWidth, kHeight})) << width;
    }
    EXPECT_TRUE(moves({"DP-1", "DP-2"}));
    constexpr std::size_t kKibibytesMore = 64 * 1024;
    EXPECT_LT(residentMemory(agent_->pid()), memory + kKibibytesMore);
    EXPECT_EQ(status().at("extension").at("restarts"), 0);
}

TEST_F(HostileCompositor, MayWithdrawOutputsInTheMiddleOfTheirFrames) {
    startOnTwo();
    for (int round = 0; round < 10; ++round) {
        const Id brief = compositor_->addOutput(small("DP-3"));
        ASSERT_TRUE(eventually([&] { return compositor_->surface(brief).has_value(); }));
        if (round % 2 == 0) {
            ASSERT_TRUE(shows(brief, {kWidth, kHeight}));
        }
        compositor_->close(brief);
        compositor_->removeOutput(brief);
        compositor_->sendDone(brief);
        compositor_->configure(brief, kWidth, kHeight);
    }
    EXPECT_TRUE(eventually([&] { return status().at("outputs").size() == 2; }));
    EXPECT_TRUE(moves({"DP-1", "DP-2"}));
    EXPECT_EQ(status().at("extension").at("restarts"), 0);
}

TEST_F(HostileCompositor, EndsTheAgentAndItsExtensionWithTheConnection) {
    startOnTwo();
    const pid_t orphan = extension();
    compositor_->disconnect();
    const Outcome outcome = agent_->wait(kPatience);
    EXPECT_EQ(outcome.status, kDisplayServerGone);
    EXPECT_THAT(outcome.errors, HasSubstr("the compositor closed the connection"));
    EXPECT_FALSE(isRunning(orphan));
}

TEST_F(HostileCompositor, EndsTheAgentWithAnError) {
    startOnTwo();
    compositor_->sendProtocolError(second_);
    const Outcome outcome = agent_->wait(kPatience);
    EXPECT_EQ(outcome.status, kDisplayServerGone);
    EXPECT_THAT(outcome.errors, HasSubstr("protocol error 1 of zwlr_layer_surface_v1"));
}

} // namespace
} // namespace vantor::e2e
