#include "agent/supervision/restart_policy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor::agent {
namespace {

/// An extension whose lives have the lengths that a test says.
class RestartPolicyTest : public testing::Test {
  protected:
    /// It was started when it was due, and died that many seconds later.
    RestartPolicy::Verdict diesAfter(double seconds) {
        now_ += seconds;
        const auto verdict = policy_.died(now_);
        now_ += verdict.delay;
        return verdict;
    }

  private:
    RestartPolicy policy_;
    double now_ = 1000;
};

TEST_F(RestartPolicyTest, DelaysDoubleUpToHalfAMinute) {
    std::vector<double> delays;
    for (int i = 0; i < 9; ++i) {
        delays.push_back(diesAfter(0.1).delay);
    }
    EXPECT_THAT(delays, testing::ElementsAre(0.25, 0.5, 1, 2, 4, 8, 16, 30, 30));
}

TEST_F(RestartPolicyTest, ALifeOfAMinuteMakesTheNextDelayTheFirstOne) {
    diesAfter(1);
    diesAfter(1);
    EXPECT_EQ(diesAfter(59).delay, 1);
    EXPECT_EQ(diesAfter(60).delay, 0.25);
    EXPECT_EQ(diesAfter(1).delay, 0.5);
}

TEST_F(RestartPolicyTest, TheFifthDeathInAMinuteSetsAsideOnce) {
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(diesAfter(2).setAside);
    }
    EXPECT_TRUE(diesAfter(2).setAside);
    EXPECT_FALSE(diesAfter(2).setAside);
}

TEST_F(RestartPolicyTest, AnotherFiveDeathsSetAsideAgainHoweverLongTheDelaysAre) {
    int setAside = 0;
    for (int i = 0; i < 20; ++i) {
        setAside += diesAfter(1).setAside ? 1 : 0;
    }
    EXPECT_EQ(setAside, 4);
}

TEST_F(RestartPolicyTest, DeathsThatAreFarApartSetNothingAside) {
    for (int i = 0; i < 50; ++i) {
        EXPECT_FALSE(diesAfter(16).setAside) << "four lives last more than a minute";
    }
}

TEST_F(RestartPolicyTest, ADeathBeforeTheStartWasDueIsADeathAtTheStart) {
    RestartPolicy policy;
    for (int i = 0; i < 4; ++i) {
        EXPECT_FALSE(policy.died(5).setAside);
    }
    EXPECT_TRUE(policy.died(5).setAside);
}

} // namespace
} // namespace vantor::agent
