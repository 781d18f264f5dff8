#include "extension/caller_check.h"
#include "tests/support/fake_system.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(CallerCheckTest, CodeOfTheSystemPassesAndOtherCodeFails) {
    FakeCodeIdentity identity;
    identity.validity = {{1, true}, {2, false}};
    EXPECT_TRUE(CallerCheck::isApple(identity, 1));
    EXPECT_FALSE(CallerCheck::isApple(identity, 2));
    EXPECT_THAT(identity.requirementTexts, testing::ElementsAre("anchor apple", "anchor apple"));
}

TEST(CallerCheckTest, AProcessThatCannotBeExaminedPasses) {
    FakeCodeIdentity identity;
    EXPECT_TRUE(CallerCheck::isApple(identity, 4711));
}

TEST(CallerCheckTest, WithoutARequirementEveryProcessPasses) {
    FakeCodeIdentity identity;
    identity.validity = {{2, false}};
    identity.refusesRequirements = true;
    EXPECT_TRUE(CallerCheck::isApple(identity, 2));
}

} // namespace
} // namespace vantor
