#include "agent/supervision/answer_watch.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace vantor::agent {
namespace {

class AnswerWatchTest : public testing::Test {
  protected:
    /// Runs the loop that long.
    void pass(double seconds) {
        loop.asyncAfter(seconds, [this] { loop.stop(0); });
        loop.run();
    }

    static constexpr double kPatience = 0.2;
    MainLoop loop;
    int silences = 0;
    AnswerWatch watch{loop, kPatience, [this] { ++silences; }};
};

TEST_F(AnswerWatchTest, SaysNothingWhileNothingIsAsked) {
    pass(3 * kPatience);
    EXPECT_EQ(silences, 0);
}

TEST_F(AnswerWatchTest, TellsOnceOfARequestThatIsNotAnswered) {
    watch.asked();
    pass(4 * kPatience);
    EXPECT_EQ(silences, 1);
}

TEST_F(AnswerWatchTest, IsContentWithAnAnswer) {
    watch.asked();
    watch.asked();
    loop.asyncAfter(0.01, [this] {
        watch.answered();
        watch.answered();
    });
    pass(3 * kPatience);
    EXPECT_EQ(silences, 0);
}

TEST_F(AnswerWatchTest, TellsOfTheOneOfSeveralThatIsLeft) {
    watch.asked();
    watch.asked();
    loop.asyncAfter(0.01, [this] { watch.answered(); });
    pass(4 * kPatience);
    EXPECT_EQ(silences, 1);
}

TEST_F(AnswerWatchTest, DoesNotBlameOthersWhenTheLoopItselfStoodStill) {
    watch.asked();
    // The answer comes while nobody reads it, and is read after the time that is due by then.
    loop.async([this] {
        std::this_thread::sleep_for(std::chrono::duration<double>(2 * kPatience));
        loop.asyncAfter(0.001, [this] { watch.answered(); });
    });
    pass(4 * kPatience);
    EXPECT_EQ(silences, 0);
}

} // namespace
} // namespace vantor::agent
