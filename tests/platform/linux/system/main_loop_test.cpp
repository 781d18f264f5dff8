#include "platform/linux/main_loop.h"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace vantor {
namespace {

TEST(MainLoop, RunsPostedWorkInOrderAndEndsWithTheStatusGiven) {
    MainLoop loop;
    std::vector<int> order;
    loop.async([&] { order.push_back(1); });
    loop.async([&] {
        order.push_back(2);
        loop.async([&] { order.push_back(3); });
        loop.async([&] { loop.stop(7); });
    });
    EXPECT_EQ(loop.run(), 7);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(MainLoop, TakesWorkFromManyThreadsWithoutLosingAny) {
    MainLoop loop;
    constexpr int kThreads = 4;
    constexpr int kEach = 500;
    int count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kEach; ++i) {
                loop.async([&] {
                    EXPECT_TRUE(loop.isMainThread());
                    if (++count == kThreads * kEach) {
                        loop.stop(0);
                    }
                });
            }
        });
    }
    EXPECT_EQ(loop.run(), 0);
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, kThreads * kEach);
}

TEST(MainLoop, RunsLaterWorkInTheOrderOfItsTimesAndNotWhatWasCancelled) {
    MainLoop loop;
    std::vector<int> order;
    loop.asyncAfter(0.04, [&] {
        order.push_back(2);
        loop.stop(0);
    });
    loop.asyncAfter(0.01, [&] { order.push_back(1); });
    const auto cancelled = loop.asyncAfter(0.02, [&] { order.push_back(9); });
    cancelled->cancel();
    loop.run();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    cancelled->cancel();
}

TEST(MainLoop, ATimerRepeatsUntilItIsInvalidatedFromWithinItself) {
    MainLoop loop;
    int ticks = 0;
    std::unique_ptr<RepeatingTimer> timer;
    timer = loop.repeatingTimer(0.002, [&] {
        if (++ticks == 3) {
            timer.reset();
            loop.asyncAfter(0.02, [&] { loop.stop(0); });
        }
    });
    loop.run();
    EXPECT_EQ(ticks, 3);
}

TEST(MainLoop, AWatchMayDestroyItselfAndCanBeSuspended) {
    MainLoop loop;
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0);
    int calls = 0;
    std::unique_ptr<DescriptorWatch> watch;
    watch = loop.watch(ends[0], EPOLLIN, [&](std::uint32_t events) {
        EXPECT_NE(events & EPOLLIN, 0U);
        ++calls;
        watch.reset();
        loop.stop(0);
    });
    watch->setEvents(0);
    ASSERT_EQ(write(ends[1], "x", 1), 1);
    loop.asyncAfter(0.01, [&] {
        EXPECT_EQ(calls, 0);
        watch->setEvents(EPOLLIN);
    });
    loop.run();
    EXPECT_EQ(calls, 1);
    close(ends[0]);
    close(ends[1]);
}

TEST(MainLoop, UrgentWatchesAreCalledInTheirOrderBeforeWorkThatWasPostedEarlier) {
    for (int round = 0; round < 20; ++round) {
        MainLoop loop;
        std::string order;
        struct Watched {
            int ends[2];
            std::unique_ptr<DescriptorWatch> watch;
        };
        Watched both[2];
        for (Watched& each : both) {
            ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, each.ends), 0);
            each.watch = loop.watch(each.ends[0], EPOLLIN, [&](std::uint32_t) {
                char byte = 0;
                EXPECT_EQ(read(each.ends[0], &byte, 1), 1);
                order += byte;
            });
        }
        both[round % 2].watch->setUrgency(Urgency::urgent);
        both[1 - round % 2].watch->setUrgency(Urgency::mostUrgent);
        loop.async([&] {
            order += 'p';
            loop.stop(0);
        });
        ASSERT_EQ(write(both[round % 2].ends[1], "u", 1), 1);
        ASSERT_EQ(write(both[1 - round % 2].ends[1], "m", 1), 1);
        loop.run();
        EXPECT_EQ(order, "mup");
        for (Watched& each : both) {
            each.watch.reset();
            close(each.ends[0]);
            close(each.ends[1]);
        }
    }
}

TEST(MainLoop, AnAlarmRunsOnceForEachTimeItIsSetAndMayDestroyItself) {
    MainLoop loop;
    int calls = 0;
    std::unique_ptr<Alarm> alarm;
    alarm = loop.alarm([&] {
        if (++calls < 3) {
            alarm->set(0.001);
            return;
        }
        alarm.reset();
        loop.stop(0);
    });
    const auto cancelled = loop.alarm([&] { calls = 99; });
    cancelled->set(0.001);
    cancelled->cancel();
    alarm->set(5);
    alarm->set(0.001);
    loop.run();
    EXPECT_EQ(calls, 3);
}

TEST(MainLoop, EndsItsTurnsAfterWorkAndNotWhileItIsIdle) {
    MainLoop loop;
    int turns = 0;
    loop.setTurnEnded([&] { ++turns; });
    loop.asyncAfter(0.05, [&] { loop.stop(0); });
    loop.async([] {});
    loop.run();
    // One for the posted work, at most one each for the timer and the stop that it posts.
    EXPECT_GE(turns, 1);
    EXPECT_LE(turns, 3);
}

TEST(MainLoop, HearsASignal) {
    MainLoop loop;
    loop.onSignal(SIGUSR1, [&](int number) { loop.stop(number); });
    loop.async([] { kill(getpid(), SIGUSR1); });
    EXPECT_EQ(loop.run(), SIGUSR1);
}

} // namespace
} // namespace vantor
