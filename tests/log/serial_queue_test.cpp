#include "log/serial_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

namespace vantor {
namespace {

TEST(SerialQueueTest, WorkRunsInTheOrderOfPosting) {
    SerialQueue queue;
    std::vector<int> order;
    for (int i = 0; i < 1000; ++i) {
        queue.async([&order, i] { order.push_back(i); });
    }
    queue.drain();
    ASSERT_EQ(order.size(), 1000U);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(order[static_cast<std::size_t>(i)], i);
    }
}

TEST(SerialQueueTest, PostingDoesNotWaitForTheWorkThatRuns) {
    std::promise<void> release;
    std::future<void> released = release.get_future();
    std::atomic<bool> second = false;
    {
        SerialQueue queue;
        queue.async([&] { released.wait(); });
        queue.async([&] { second = true; });
        EXPECT_FALSE(second);
        release.set_value();
    }
    EXPECT_TRUE(second) << "destruction runs what was posted";
}

TEST(SerialQueueTest, WorkOfManyThreadsNeverOverlaps) {
    SerialQueue queue;
    std::atomic<int> running = 0;
    std::atomic<int> overlaps = 0;
    int total = 0;
    std::vector<std::thread> posters;
    for (int i = 0; i < 8; ++i) {
        posters.emplace_back([&] {
            for (int j = 0; j < 200; ++j) {
                queue.async([&] {
                    overlaps += running.fetch_add(1);
                    ++total;
                    --running;
                });
            }
        });
    }
    for (std::thread& poster : posters) {
        poster.join();
    }
    queue.drain();
    EXPECT_EQ(total, 1600);
    EXPECT_EQ(overlaps, 0);
}

TEST(SerialQueueTest, DrainingAnIdleQueueReturns) {
    SerialQueue queue;
    queue.drain();
    bool ran = false;
    queue.async([&] { ran = true; });
    queue.drain();
    EXPECT_TRUE(ran);
}

} // namespace
} // namespace vantor
