#include "platform/media_clock.h"
#include "platform/notifications.h"
#include "tests/platform/contract/contract_subject.h"

#include <thread>
#include <vector>

namespace vantor {
namespace {

class QueueContract : public Contract {};
VANTOR_CONTRACT(QueueContract);

TEST_P(QueueContract, PostedWorkRunsOnTheMainThreadInTheOrderOfPosting) {
    std::vector<int> order;
    for (int i = 0; i < 5; ++i) {
        platform.mainQueue().async([this, &order, i] {
            EXPECT_TRUE(platform.mainQueue().isMainThread());
            order.push_back(i);
        });
    }
    EXPECT_TRUE(order.empty());
    ASSERT_TRUE(runUntil([&] { return order.size() == 5; }));
    EXPECT_EQ(order, (std::vector{0, 1, 2, 3, 4}));
}

TEST_P(QueueContract, WorkPostedByAnotherThreadRunsOnTheMainOne) {
    bool ran = false;
    std::thread([&] {
        EXPECT_FALSE(platform.mainQueue().isMainThread());
        platform.mainQueue().async([&] { ran = platform.mainQueue().isMainThread(); });
    }).join();
    EXPECT_TRUE(runUntil([&] { return ran; }));
}

TEST_P(QueueContract, DelayedWorkRunsUnlessItIsCancelled) {
    bool kept = false;
    bool cancelled = false;
    platform.mainQueue().asyncAfter(0.05, [&] { kept = true; });
    platform.mainQueue().asyncAfter(0.02, [&] { cancelled = true; })->cancel();
    ASSERT_TRUE(runUntil([&] { return kept; }));
    EXPECT_FALSE(cancelled);
}

TEST_P(QueueContract, WorkThatRanCanStillBeCancelled) {
    int runs = 0;
    const auto item = platform.mainQueue().asyncAfter(0, [&] { ++runs; });
    ASSERT_TRUE(runUntil([&] { return runs > 0; }));
    item->cancel();
    EXPECT_EQ(runs, 1);
}

TEST_P(QueueContract, ATimerFiresAgainAndAgainUntilItIsInvalidated) {
    int fired = 0;
    const auto timer = platform.mainQueue().repeatingTimer(0.01, [&] { ++fired; });
    EXPECT_EQ(fired, 0);
    ASSERT_TRUE(runUntil([&] { return fired >= 3; }));
    timer->invalidate();
    const int before = fired;
    bool later = false;
    platform.mainQueue().asyncAfter(0.05, [&] { later = true; });
    ASSERT_TRUE(runUntil([&] { return later; }));
    EXPECT_EQ(fired, before);
}

TEST_P(QueueContract, ATimerThatIsDestroyedFiresNoMore) {
    int fired = 0;
    platform.mainQueue().repeatingTimer(0.01, [&] { ++fired; }).reset();
    bool later = false;
    platform.mainQueue().asyncAfter(0.05, [&] { later = true; });
    ASSERT_TRUE(runUntil([&] { return later; }));
    EXPECT_EQ(fired, 0);
}

TEST_P(QueueContract, TheMediaClockDoesNotRunBackwards) {
    const double before = platform.mediaClock().now();
    bool later = false;
    platform.mainQueue().asyncAfter(0.02, [&] { later = true; });
    ASSERT_TRUE(runUntil([&] { return later; }));
    EXPECT_GT(platform.mediaClock().now(), before);
}

TEST_P(QueueContract, EveryObserverOfANotificationHearsItAndNoOtherOne) {
    if (!GetParam().notifies) {
        GTEST_SKIP() << "nobody hears this platform";
    }
    // Observers live as long as the process.
    static int first;
    static int second;
    static int other;
    first = second = other = 0;
    Notifications& notifications = platform.notifications();
    notifications.observeDarwin("com.nimbara.contract.posted", [] { ++first; });
    notifications.observeDarwin("com.nimbara.contract.posted", [] { ++second; });
    notifications.observeDarwin("com.nimbara.contract.other", [] { ++other; });
    ASSERT_TRUE(notifications.postDarwin("com.nimbara.contract.posted"));
    EXPECT_TRUE(runUntil([] { return first > 0 && second > 0; }));
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(other, 0);
}

} // namespace
} // namespace vantor
