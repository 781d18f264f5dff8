// The background on a real compositor, drawn through Vulkan.

#include "agent/output/wayland/wayland_background.h"
#include "platform/linux/gpu/vulkan_instance.h"
#include "tests/e2e/sway.h"
#include "tests/support/pattern_painter.h"
#include "tests/support/recorded_outputs.h"
#include "tests/support/scoped_variable.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace vantor::e2e {
namespace {

using agent::Visibility;
using testing::UnorderedElementsAre;

/// No two neighbours have one colour, so a picture that is scaled on its way differs.
std::array<std::uint8_t, 3> checkered(std::uint32_t x, std::uint32_t y) {
    return (x + y) % 2 == 0 ? std::array<std::uint8_t, 3>{255, 0, 64}
                            : std::array<std::uint8_t, 3>{0, 128, 255};
}

/// Whether the picture is the pattern, to the last pixel.
bool shows(const Picture& picture, const tests::Pattern& pattern) {
    for (unsigned y = 0; y < picture.height(); ++y) {
        for (unsigned x = 0; x < picture.width(); ++x) {
            const auto [red, green, blue] = pattern(x, y);
            const Pixel pixel = picture.at(x, y);
            if (pixel.red != red || pixel.green != green || pixel.blue != blue) {
                return false;
            }
        }
    }
    return true;
}

class SwayBackground : public testing::Test, protected tests::RecordedOutputs {
  protected:
    static void SetUpTestSuite() { vulkan::enablePresentation(); }
    SwayBackground() {
        onRemoved = [this](agent::Output& output) { painters_.erase(&output); };
    }

    /// Starts sway and the backend, and waits for the outputs. They are small, for what is drawn
    /// here is drawn by the CPU.
    void start(unsigned outputs = 2, const std::string& configuration = {}) {
        const std::string small = "output * mode 480x270@60Hz\n";
        connect(std::make_unique<Sway>(outputs, small + configuration), outputs);
    }
    /// Starts the backend on that sway, and waits for the outputs.
    void connect(std::unique_ptr<Sway> sway, unsigned outputs) {
        sway_ = std::move(sway);
        variables_.emplace("WAYLAND_DISPLAY", sway_->socket().string());
        auto made = agent::makeWaylandBackground(loop, events());
        ASSERT_TRUE(made) << made.error();
        backend_ = std::move(made).value();
        ASSERT_TRUE(eventually([&] { return present.size() == outputs; }));
    }
    void TearDown() override {
        painters_.clear();
        backend_.reset();
    }

    /// From now on every output shows the pattern, again and again.
    void paintAlways() {
        auto gpu = vulkan::Context::create();
        ASSERT_TRUE(gpu) << gpu.error();
        onRefresh = [this, context = gpu.value()](agent::Output& output) {
            auto& painter = painters_[&output];
            if (!painter) {
                painter = tests::PatternPainter::create(context, output, checkered);
                ASSERT_NE(painter, nullptr) << "nothing can be shown on the output";
            }
            if (!painter->paint()) {
                output.requestRefresh();
            }
        };
        onAdded = [](agent::Output& output) { output.requestRefresh(); };
        for (agent::Output* const output : present) {
            output->requestRefresh();
        }
    }
    /// Waits for refreshes that are yet to come.
    bool refreshesOn(const std::string& connector, int count = 3) {
        const int before = refreshes[connector];
        return eventually([&] { return refreshes[connector] >= before + count; });
    }
    bool becomes(const std::string& connector, Visibility visibility) {
        return eventually([&] { return this->visibility(connector) == visibility; });
    }
    bool isPainted(const std::string& connector) {
        return eventually([&] { return shows(sway_->screenshot(connector), checkered); });
    }

    std::unique_ptr<Sway> sway_;
    std::optional<ScopedVariable> variables_;
    std::unique_ptr<agent::OutputBackend> backend_;
    std::map<agent::Output*, std::unique_ptr<tests::PatternPainter>> painters_;
};

TEST_F(SwayBackground, AnnouncesEveryOutputByItsConnector) {
    start();
    EXPECT_THAT(log, UnorderedElementsAre("added HEADLESS-1", "added HEADLESS-2"));
    EXPECT_EQ(size("HEADLESS-1"), "480x270@1");
    EXPECT_EQ(output("HEADLESS-1")->description().refreshRate, 60);
    EXPECT_EQ(visibility("HEADLESS-2"), Visibility::visible);
}

TEST_F(SwayBackground, CoversEveryPixelOfEveryOutput) {
    start();
    paintAlways();
    EXPECT_TRUE(isPainted("HEADLESS-1"));
    EXPECT_TRUE(isPainted("HEADLESS-2"));
}

TEST_F(SwayBackground, HasOnePixelForEachOfTheDisplayAtAFractionalScale) {
    start(1, "output HEADLESS-1 mode 960x540@60Hz scale 1.5");
    EXPECT_EQ(size("HEADLESS-1"), "960x540@1.5");
    paintAlways();
    EXPECT_TRUE(isPainted("HEADLESS-1"));
}

TEST_F(SwayBackground, FollowsItsOutputThroughModesScalesAndTurns) {
    start(1);
    paintAlways();
    struct Change {
        std::string command;
        std::string size;
    };
    for (const Change& change : {
             Change{"mode 960x540@60Hz", "960x540@1"},
             Change{"scale 1.25", "960x540@1.25"},
             Change{"transform 90", "540x960@1.25"},
             Change{"transform normal scale 2", "960x540@2"},
         }) {
        SCOPED_TRACE(change.command);
        sway_->command("output HEADLESS-1 " + change.command);
        EXPECT_TRUE(eventually([&] { return size("HEADLESS-1") == change.size; }))
            << size("HEADLESS-1");
        EXPECT_TRUE(isPainted("HEADLESS-1"));
    }
    EXPECT_EQ(std::ranges::count(log, "removed HEADLESS-1"), 0);
}

TEST_F(SwayBackground, ComesWithAnOutput) {
    start(1);
    paintAlways();
    sway_->command("create_output");
    ASSERT_TRUE(eventually([&] { return output("HEADLESS-2") != nullptr; }));
    EXPECT_TRUE(isPainted("HEADLESS-2"));
}

TEST_F(SwayBackground, GoesWithAnOutputWhileOthersStay) {
    const Sway screen(1);
    connect(Sway::inside(screen, 2), 2);
    paintAlways();
    ASSERT_TRUE(refreshesOn("WL-2"));
    screen.closeWindow("WL-2");
    ASSERT_TRUE(eventually([&] { return output("WL-2") == nullptr; }));
    EXPECT_EQ(std::ranges::count(log, "removed WL-2"), 1);
    EXPECT_NE(output("WL-1"), nullptr);
    EXPECT_TRUE(isPainted("WL-1"));
}

TEST_F(SwayBackground, RestsBelowAWindowThatFillsItsOutput) {
    start(2, "for_window [app_id=foot] fullscreen enable");
    paintAlways();
    ASSERT_TRUE(refreshesOn("HEADLESS-1"));
    sway_->command("focus output HEADLESS-1");
    // Not the user's shell: that of a user who may not log in ends at once.
    sway_->command("exec foot sleep 100");
    ASSERT_TRUE(becomes("HEADLESS-1", Visibility::covered));
    const int before = refreshes["HEADLESS-1"];
    EXPECT_TRUE(refreshesOn("HEADLESS-2", 20));
    EXPECT_EQ(refreshes["HEADLESS-1"], before);

    // The focus elsewhere uncovers nothing, another workspace on the same output does.
    sway_->command("focus output HEADLESS-2");
    EXPECT_TRUE(refreshesOn("HEADLESS-2", 20));
    EXPECT_EQ(refreshes["HEADLESS-1"], before);
    sway_->command("focus output HEADLESS-1");
    sway_->command("workspace other");
    EXPECT_TRUE(becomes("HEADLESS-1", Visibility::visible));
    EXPECT_TRUE(refreshesOn("HEADLESS-1"));
    sway_->command("workspace back_and_forth");
    EXPECT_TRUE(becomes("HEADLESS-1", Visibility::covered));
    sway_->command("[app_id=foot] kill");
    EXPECT_TRUE(becomes("HEADLESS-1", Visibility::visible));
    EXPECT_TRUE(isPainted("HEADLESS-1"));
}

TEST_F(SwayBackground, EndsWithItsCompositor) {
    start();
    paintAlways();
    ASSERT_TRUE(refreshesOn("HEADLESS-1"));
    sway_->end();
    ASSERT_TRUE(eventually([&] { return ended.has_value(); }));
    EXPECT_EQ(*ended, "the compositor closed the connection");
    EXPECT_TRUE(present.empty());
}

} // namespace
} // namespace vantor::e2e
