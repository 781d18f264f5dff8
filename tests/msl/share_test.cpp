#include "msl/optimize/share.h"

#include <gtest/gtest.h>

#include "tests/msl/optimize_test_support.h"

namespace msl::tests {
namespace {

std::string shared(std::string_view source) {
    return afterPass(source, [](ir::Module& module, const ir::Function& function,
                                const ir::Flow& flow, const ir::Freedom& freedom) {
        ir::shareEqualValues(module, function, flow, freedom);
    });
}

TEST(ShareTest, EqualExpressionsAreComputedOnce) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { return sin(p.x * p.y) + "
                               "sin(p.y * p.x); }";
    const auto before = lowered(source);
    EXPECT_EQ(count(before, " = fmul "), 2U) << before;
    EXPECT_EQ(count(before, " = extended#13 "), 2U) << before;
    const auto after = shared(source);
    EXPECT_EQ(count(after, " = fmul "), 1U) << after;
    EXPECT_EQ(count(after, " = extended#13 "), 1U) << after;
}

TEST(ShareTest, ABranchUsesWhatStandsBeforeIt) {
    const std::string source =
        "fragment float4 m(float4 p [[position]]) { float a = p.x * p.y; if (p.x > 2) { a += p.x * "
        "p.y; } return a; }";
    EXPECT_EQ(count(lowered(source), " = fmul "), 2U);
    EXPECT_EQ(count(shared(source), " = fmul "), 1U);
}

TEST(ShareTest, WhatStandsInOneBranchIsNotThereForAnother) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float a = 0; if (p.x > "
                               "2) { a = p.x * p.y; } else { a = p.x * p.y + 1; } return a; }";
    EXPECT_EQ(count(shared(source), " = fmul "), 2U);
}

TEST(ShareTest, APhiOfOneValueIsThatValue) {
    const std::string source =
        "fragment float4 m(float4 p [[position]]) { float a = p.x * p.y, b = 0; if (p.x > 2) { b = "
        "p.x * p.y; } else { b = p.y * p.x; } return a + b; }";
    EXPECT_EQ(count(lowered(source), " = phi "), 1U);
    EXPECT_EQ(count(shared(source), " = phi "), 0U);
}

TEST(ShareTest, EqualPhisAreOne) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float a = 0, b = 0; if "
                               "(p.x > 2) { a = p.x * p.y; b = p.y * p.x; } return a + b; }";
    EXPECT_EQ(count(lowered(source), " = phi "), 2U);
    EXPECT_EQ(count(shared(source), " = phi "), 1U);
}

TEST(ShareTest, MemoryIsReadAgainBehindAStore) {
    const std::string source = "fragment float4 m(float4 p [[position]], device float* d "
                               "[[buffer(0)]]) { float a = d[0]; d[0] = p.x; return a + d[0]; }";
    const auto before = lowered(source);
    EXPECT_EQ(count(shared(source), " = load "), count(before, " = load ")) << before;
}

TEST(ShareTest, DerivativesAreTakenWhereTheyStand) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float a = dfdx(p.x); if "
                               "(p.x > 2) { a += dfdx(p.x); } return a; }";
    EXPECT_EQ(count(shared(source), " = dpdx "), 2U);
}

} // namespace
} // namespace msl::tests
