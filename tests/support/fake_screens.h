#pragma once
// Screens whose refreshes tests make happen.

#include "platform/screens.h"
#include "tests/support/fake_contract.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantor {

/// What a display link was told; outlives the link.
struct FakeLinkState {
    std::function<void()> tick;
    FrameRateRange range;
    bool paused = false;
    int pauseChanges = 0;
    bool onRunLoop = false;
    bool invalidated = false;
};

class FakeScreen : public Screen {
  public:
    explicit FakeScreen(std::optional<std::uint32_t> number) : number_(number) {}

    std::optional<std::uint32_t> number() const override { return number_; }
    std::unique_ptr<DisplayLink> displayLink(std::function<void()> tick) override;

    /// One refresh: every link that is on the run loop, valid and not paused ticks.
    void refresh();

    /// No link is made while set.
    bool refusesLinks = false;
    /// In the order of their making.
    std::vector<std::shared_ptr<FakeLinkState>> links;

  private:
    std::optional<std::uint32_t> number_;
};

class FakeScreens : public Screens {
  public:
    std::vector<Screen*> screens() override;

    FakeScreen& add(std::optional<std::uint32_t> number);
    FakeScreen& at(std::size_t index) { return *screens_.at(index); }

  private:
    MainThreadCheck mainThread_;
    std::vector<std::unique_ptr<FakeScreen>> screens_;
};

} // namespace vantor
