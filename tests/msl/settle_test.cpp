#include "msl/optimize/settle.h"

#include <gtest/gtest.h>

#include "tests/msl/optimize_test_support.h"

namespace msl::tests {
namespace {

std::string settled(std::string_view source) {
    return afterPass(source, [](ir::Module& module, const ir::Function& function,
                                const ir::Flow& flow, const ir::Freedom& freedom) {
        ir::Settler(module, freedom, ir::usedValues(module)).run(function, flow);
    });
}

// The block that a loop is entered from, and the one that is its body.
struct LoopBlocks {
    std::string before;
    std::string body;
};

LoopBlocks loopOf(const std::string& text) {
    // "bN:" before the one that holds "loop merge", and the one behind the loop's test.
    const std::string header = blockOf(text, "  loop merge");
    const size_t at = text.find("\n" + header + ":");
    const size_t label = text.rfind("\nb", at - 1) + 1;
    const size_t test = text.find("  branch %", at) + 10;
    const size_t target = text.find(" b", test) + 1;
    return {text.substr(label, text.find(':', label) - label),
            text.substr(target, text.find(' ', target) - target)};
}

TEST(SettleTest, AUniformIsReadInTheBranchThatUsesIt) {
    const std::string source = "struct U { float4 a; }; fragment float4 m(float4 p [[position]], "
                               "constant U& u [[buffer(0)]]) { float4 c = p; if (p.x > 2) { c += "
                               "sin(u.a); } return c; }";
    const auto before = lowered(source);
    EXPECT_NE(blockOf(before, " = access "), blockOf(before, " = extended#13 ")) << before;
    const auto after = settled(source);
    EXPECT_EQ(blockOf(after, " = access "), blockOf(after, " = extended#13 ")) << after;
}

TEST(SettleTest, WhatTwoBranchesUseStaysBeforeThem) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float a = sin(p.x), b = "
                               "0; if (p.x > 2) { b = a "
                               "* 2; } else { b = a * 3; } return b; }";
    const auto after = settled(source);
    EXPECT_EQ(blockOf(after, " = extended#13 "), blockOf(after, " = fgt ")) << after;
}

TEST(SettleTest, WhatALoopDoesNotChangeIsComputedBeforeIt) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float s = 0; for (int i "
                               "= 0; i < 9; i++) { s += sin(p.x) * s; } return s; }";
    const auto before = lowered(source);
    EXPECT_EQ(blockOf(before, " = extended#13 "), loopOf(before).body) << before;
    const auto after = settled(source);
    EXPECT_EQ(blockOf(after, " = extended#13 "), loopOf(after).before) << after;
    EXPECT_EQ(blockOf(after, " = fmul "), loopOf(after).body) << after;
}

TEST(SettleTest, WhatALoopUsesIsNotMovedIntoIt) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float a = sin(p.x), s = "
                               "0; for (int i = 0; i < 9; i++) { s += a; } return s; }";
    const auto after = settled(source);
    EXPECT_EQ(blockOf(after, " = extended#13 "), loopOf(after).before) << after;
}

TEST(SettleTest, ADivisionStaysBehindItsTest) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { int d = int(p.x), s = "
                               "0; for (int i = 0; i < 9; "
                               "i++) { if (d != 0) { s += 8 / d; } } return s; }";
    const auto before = lowered(source);
    const auto after = settled(source);
    EXPECT_EQ(blockOf(after, " = sdiv "), blockOf(before, " = sdiv ")) << after;
}

TEST(SettleTest, ADerivativeStaysInUniformControlFlow) {
    const std::string source =
        "fragment float4 m(float4 p [[position]]) { float d = dfdx(p.y), a = "
        "0; if (p.x > 2) { a = d; } return a; }";
    const auto after = settled(source);
    EXPECT_EQ(blockOf(after, " = dpdx "), blockOf(after, " = fgt ")) << after;
}

TEST(SettleTest, WhatNothingUsesGoes) {
    const std::string source =
        "fragment float4 m(float4 p [[position]]) { float a = sin(p.x); return p; }";
    EXPECT_EQ(count(lowered(source), " = extended#13 "), 1U);
    EXPECT_EQ(count(settled(source), " = extended#13 "), 0U);
}

TEST(SettleTest, ALoopVariableThatNothingUsesGoes) {
    const std::string source = "fragment float4 m(float4 p [[position]]) { float a = 0, s = 0; for "
                               "(int i = 0; i < 9; i++) { a += sin(p.x + i); s += p.y; } return s; "
                               "}";
    EXPECT_EQ(count(settled(source), " = extended#13 "), 0U);
}

TEST(SettleTest, StoresKeepTheirOrder) {
    const std::string source =
        "fragment float4 m(float4 p [[position]], device float* d "
        "[[buffer(0)]]) { float a = d[0]; d[0] = p.x; float b = d[0]; d[0] = "
        "p.y; return a + b; }";
    const auto after = settled(source);
    std::string order;
    for (size_t at = 0; at < after.size(); ++at) {
        order += after.compare(at, 7, " = load") == 0    ? "l"
                 : after.compare(at, 8, "  store ") == 0 ? "s"
                                                         : "";
    }
    EXPECT_NE(order.find("lslss"), std::string::npos) << order << "\n" << after;
}

} // namespace
} // namespace msl::tests
