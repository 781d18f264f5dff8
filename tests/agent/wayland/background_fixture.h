#pragma once
// A backend over a compositor that does what a test tells it to. What a frame shows does not matter
// to either, so the test commits the surface where others would present.

#include "agent/output/wayland/background_output.h"
#include "agent/output/wayland/wayland_background.h"
#include "tests/support/recorded_outputs.h"
#include "tests/support/scoped_variable.h"
#include "tests/support/wayland_compositor.h"

#include <gmock/gmock.h>

#include <optional>

namespace vantor::agent {

class BackgroundFixture : public testing::Test, protected tests::RecordedOutputs {
  protected:
    using Id = tests::WaylandCompositor::Id;

    void SetUp() override { offer({}); }
    void TearDown() override {
        backend.reset();
        EXPECT_THAT(compositor->violations(), testing::IsEmpty());
    }

    /// Another compositor instead of one that offers everything usual; frame callbacks are answered
    /// when the test says so.
    void offer(const tests::CompositorOffers& offers) {
        compositor.emplace(offers);
        compositor->setAnswersFrames(false);
        display_.emplace("WAYLAND_DISPLAY", compositor->socket().string());
    }
    /// Starts the backend, and waits for the outputs that the compositor has.
    void start(std::size_t outputs = 1) {
        auto made = makeWaylandBackground(loop, events());
        ASSERT_TRUE(made) << made.error();
        backend = std::move(made).value();
        ASSERT_TRUE(eventually([&] { return present.size() == outputs; }));
    }
    /// Has everything that the compositor sent until now taken in, and everything sent to it.
    void exchange() {
        // A change whose effect is awaited comes after all that was sent before.
        const std::size_t before = log.size();
        const Id marker = compositor->addOutput({.name = "marker"});
        ASSERT_TRUE(eventually([&] { return output("marker") != nullptr; }));
        compositor->removeOutput(marker);
        ASSERT_TRUE(eventually([&] { return output("marker") == nullptr; }));
        log.erase(std::remove_if(log.begin() + static_cast<long>(before), log.end(),
                                 [](const std::string& line) { return line.ends_with("marker"); }),
                  log.end());
    }
    static void show(Output& output) {
        output.willPresent();
        wl_surface_commit(static_cast<wayland::BackgroundOutput&>(output).surface());
    }
    std::size_t awaitedFrames(Id id) { return compositor->surface(id)->awaitedFrames; }
    /// Answers the frame callback of an output and waits for its refresh.
    bool refreshesOn(Id id, const std::string& connector) {
        const int before = refreshes[connector];
        compositor->answerFrames(id);
        return eventually([&] { return refreshes[connector] == before + 1; });
    }

    std::optional<tests::WaylandCompositor> compositor;
    std::unique_ptr<OutputBackend> backend;

  private:
    std::optional<ScopedVariable> display_;
};

} // namespace vantor::agent
