#include "tests/support/fake_screens.h"

#include <utility>

namespace vantor {
namespace {

class Link : public DisplayLink {
  public:
    explicit Link(std::shared_ptr<FakeLinkState> state) : state_(std::move(state)) {}
    ~Link() override { invalidate(); }

    void setPreferredFrameRateRange(FrameRateRange range) override {
        fakeRequire(range.minimum <= range.preferred && range.preferred <= range.maximum,
                    "a preferred frame rate lies inside its range");
        state_->range = range;
    }
    void setPaused(bool paused) override {
        fakeRequire(!state_->invalidated, "an invalidated link is not used");
        state_->paused = paused;
        ++state_->pauseChanges;
    }
    void addToMainRunLoop() override {
        fakeRequire(!state_->onRunLoop, "a link is added once");
        state_->onRunLoop = true;
    }
    void invalidate() override {
        state_->invalidated = true;
        state_->tick = nullptr;
    }

  private:
    std::shared_ptr<FakeLinkState> state_;
};

} // namespace

std::unique_ptr<DisplayLink> FakeScreen::displayLink(std::function<void()> tick) {
    if (refusesLinks) {
        return nullptr;
    }
    auto state = std::make_shared<FakeLinkState>();
    state->tick = std::move(tick);
    links.push_back(state);
    return std::make_unique<Link>(std::move(state));
}

void FakeScreen::refresh() {
    // A tick may make and end links; by index, so that a refresh without such allocates nothing.
    const std::size_t count = links.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::shared_ptr<FakeLinkState> link = links[i];
        if (link->onRunLoop && !link->invalidated && !link->paused) {
            link->tick();
        }
    }
}

std::vector<Screen*> FakeScreens::screens() {
    mainThread_.require("screens are listed on the main thread");
    std::vector<Screen*> list;
    for (const auto& screen : screens_) {
        list.push_back(screen.get());
    }
    return list;
}

FakeScreen& FakeScreens::add(std::optional<std::uint32_t> number) {
    screens_.push_back(std::make_unique<FakeScreen>(number));
    return *screens_.back();
}

} // namespace vantor
