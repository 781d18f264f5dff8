#include "platform/linux/layers/linux_screens.h"

#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

namespace vantor {
namespace {

class SteppedClock : public MediaClock {
  public:
    double now() const override { return time; }
    double time = 100;
};

/// Display and rate.
using Rates = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

class LinuxScreensTest : public testing::Test {
  protected:
    LinuxScreensTest() { announce({1, 2}); }

    void announce(std::initializer_list<std::uint32_t> numbers) {
        std::vector<launch::ScreenRecord> records;
        for (const std::uint32_t number : numbers) {
            records.push_back({.displayID = number, .width = 1, .height = 1, .refreshRate = 60});
        }
        screens.setScreens(records);
    }

    std::unique_ptr<DisplayLink> link(std::size_t index = 0) {
        auto made = screens.screens().at(index)->displayLink([this] { ++ticks; });
        made->addToMainRunLoop();
        return made;
    }

    SteppedClock clock;
    LinuxScreens screens{clock};
    int ticks = 0;
    Rates told;
};

TEST_F(LinuxScreensTest, AScreensTicksReachItsLinksAndNoOthers) {
    const auto one = link(0);
    screens.tick(2);
    EXPECT_EQ(ticks, 0);
    screens.tick(1);
    EXPECT_EQ(ticks, 1);
    screens.tick(99);
    EXPECT_EQ(ticks, 1);
}

TEST_F(LinuxScreensTest, APausedInvalidatedOrUnaddedLinkIsSilent) {
    const auto one = link();
    one->setPaused(true);
    screens.tick(1);
    one->setPaused(false);
    one->invalidate();
    screens.tick(1);
    const auto unadded = screens.screens()[0]->displayLink([this] { ++ticks; });
    screens.tick(1);
    EXPECT_EQ(ticks, 0);
}

TEST_F(LinuxScreensTest, AFasterDisplayIsThinnedToThePreferredRate) {
    const auto one = link();
    one->setPreferredFrameRateRange({.minimum = 30, .maximum = 60, .preferred = 60});
    for (int i = 0; i < 144; ++i) {
        screens.tick(1);
        clock.time += 1.0 / 144;
    }
    EXPECT_NEAR(ticks, 60, 2);
}

TEST_F(LinuxScreensTest, ADisplayOfThePreferredRateKeepsEveryTickDespiteJitter) {
    const auto one = link();
    one->setPreferredFrameRateRange({.minimum = 30, .maximum = 60, .preferred = 60});
    const std::array<double, 4> jitter{0.0, 0.003, -0.002, 0.001};
    const double start = clock.time;
    for (int i = 0; i < 100; ++i) {
        clock.time = start + i / 60.0 + jitter[static_cast<std::size_t>(i) % jitter.size()];
        screens.tick(1);
    }
    EXPECT_EQ(ticks, 100);
}

TEST_F(LinuxScreensTest, LinksOfAScreenThatStaysGoOnAndThoseOfOneThatGoesAreSilent) {
    const auto stays = link(0);
    const auto goes = link(1);
    announce({1});
    screens.tick(1);
    screens.tick(2);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(screens.screens().size(), 1U);
    EXPECT_EQ(screens.screens()[0]->number(), 1U);
}

TEST_F(LinuxScreensTest, LinksOfAScreenThatComesBackTickAgain) {
    const auto one = link(1);
    announce({1});
    announce({1, 2});
    screens.tick(2);
    EXPECT_EQ(ticks, 1);
}

TEST_F(LinuxScreensTest, TheRateOfAScreensLinksIsToldWheneverItChanges) {
    screens.setLinksChanged(
        [this](std::uint32_t display, std::uint32_t rate) { told.emplace_back(display, rate); });
    auto one = link();
    one->setPreferredFrameRateRange({.minimum = 10, .maximum = 30, .preferred = 30});
    one->setPreferredFrameRateRange({.minimum = 20, .maximum = 30, .preferred = 30});
    auto other = link();
    other->setPreferredFrameRateRange({.minimum = 30, .maximum = 120, .preferred = 120});
    EXPECT_EQ(told, (Rates{{1, 60}, {1, 30}, {1, 60}}));
    told.clear();
    other->setPaused(true);
    one.reset();
    other->setPaused(false);
    other->invalidate();
    EXPECT_EQ(told, (Rates{{1, 30}, {1, 0}, {1, 60}, {1, 0}}));
}

TEST_F(LinuxScreensTest, TheRateIsToldToWhoComesLaterAndForAScreenThatComesBack) {
    const auto one = link(1);
    screens.setLinksChanged(
        [this](std::uint32_t display, std::uint32_t rate) { told.emplace_back(display, rate); });
    announce({1});
    announce({1, 2});
    EXPECT_EQ(told, (Rates{{2, 60}, {2, 60}}));
}

TEST_F(LinuxScreensTest, ALinkMayDropItselfAndOthersWhileItTicks) {
    std::unique_ptr<DisplayLink> second;
    std::unique_ptr<DisplayLink> first = screens.screens()[0]->displayLink([&] {
        ++ticks;
        first.reset();
        second.reset();
    });
    first->addToMainRunLoop();
    second = link();
    screens.tick(1);
    screens.tick(1);
    EXPECT_EQ(ticks, 1);
}

} // namespace
} // namespace vantor
