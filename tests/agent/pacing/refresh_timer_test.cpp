#include "agent/output/pacing/refresh_timer.h"
#include "agent/output/pacing/turn_end.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>

namespace vantor::agent {
namespace {

using Clock = std::chrono::steady_clock;

class RefreshTimerTest : public testing::Test {
  protected:
    /// Runs the loop until `due` was called that often.
    void runUntil(int calls) {
        stopAt_ = calls;
        loop_.run();
    }
    void runFor(double seconds) {
        loop_.asyncAfter(seconds, [this] { loop_.stop(0); });
        loop_.run();
    }

    MainLoop loop_;
    int calls_ = 0;
    int stopAt_ = 0;
    RefreshTimer timer_{loop_, 100, [this] {
                            if (++calls_ == stopAt_) {
                                loop_.stop(0);
                            }
                        }};
};

TEST_F(RefreshTimerTest, CallsNothingUnasked) {
    runFor(0.05);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RefreshTimerTest, CallsOnceHoweverOftenItIsAskedMeanwhile) {
    timer_.request();
    timer_.request();
    timer_.request();
    runFor(0.05);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RefreshTimerTest, CallsNothingAfterItIsCalledOff) {
    timer_.request();
    timer_.cancel();
    runFor(0.05);
    EXPECT_EQ(calls_, 0);
}

TEST_F(RefreshTimerTest, CanBeAskedAgainAfterItIsCalledOff) {
    timer_.request();
    timer_.cancel();
    timer_.request();
    runUntil(1);
    EXPECT_EQ(calls_, 1);
}

TEST_F(RefreshTimerTest, FramesAskedOneAfterTheOtherAreNoFasterThanTheRate) {
    const auto start = Clock::now();
    for (int i = 1; i <= 6; ++i) {
        timer_.request();
        runUntil(i);
    }
    // The first comes at the next point of the grid, the others an interval later each.
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(50));
}

TEST_F(RefreshTimerTest, RateThatNoDisplayHasIsTakenForTheUsualOne) {
    for (const double rate : {0.0, -60.0, 1e9, std::numeric_limits<double>::quiet_NaN()}) {
        timer_.setRate(rate);
        const int before = calls_;
        timer_.request();
        runUntil(before + 1);
        EXPECT_EQ(calls_, before + 1) << rate;
    }
}

TEST(TurnEndTest, WorkRunsAfterWhateverElseRan) {
    MainLoop loop;
    std::string order;
    const TurnEnd first(loop, [&] { order += 'a'; });
    const TurnEnd second(loop, [&] { order += 'b'; });
    loop.async([&] { order += '1'; });
    loop.turn();
    loop.turn();
    loop.turn();
    EXPECT_EQ(order.front(), '1');
    EXPECT_EQ(order.size(), 3);
}

TEST(TurnEndTest, WorkMayDestroyItsOwner) {
    MainLoop loop;
    int runs = 0;
    std::optional<TurnEnd> turnEnd;
    turnEnd.emplace(loop, [&] {
        ++runs;
        turnEnd.reset();
        ++runs;
    });
    for (int i = 0; i < 4; ++i) {
        loop.async([] {});
        loop.turn();
    }
    EXPECT_EQ(runs, 2);
}

} // namespace
} // namespace vantor::agent
