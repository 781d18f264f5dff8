#include <gtest/gtest.h>

#include "tests/msl/stages_test_support.h"

namespace msl::tests {
namespace {

std::string printed(std::string_view source) {
    Stages stages(source);
    const auto form = stages.form();
    const auto problems = ir::check(form);
    EXPECT_TRUE(problems.empty()) << problems.front();
    EXPECT_FALSE(stages.diagnostics.hasErrors());
    return ir::print(form);
}

TEST(LowerTest, CallsVanishAndConstantsFold) {
    const auto text = printed("float f(float x, float y) { return x * y + 1; }\n"
                              "fragment float4 m() { return f(2, 3); }");
    EXPECT_NE(text.find("store"), std::string::npos);
    EXPECT_NE(text.find("(7.000000 7.000000 7.000000 7.000000)"), std::string::npos) << text;
    EXPECT_EQ(text.find("fmul"), std::string::npos) << text;
}

TEST(LowerTest, ABranchKnownWhenCompilingIsNotBuilt) {
    const auto text = printed("fragment float4 m(float4 p [[position]]) { const bool on = false; "
                              "if (on) { return p; } return 1; }");
    EXPECT_EQ(text.find("merge"), std::string::npos) << text;
}

TEST(LowerTest, LocalsBecomeValuesAndMeetInPhis) {
    const auto text = printed("fragment float4 m(float4 p [[position]]) { float a = 1; if (p.x > "
                              "2) { a = p.y; } return a; }");
    EXPECT_NE(text.find("phi"), std::string::npos) << text;
    EXPECT_EQ(text.find("access"), std::string::npos) << text;
}

TEST(LowerTest, UniformsAreReadOnceHoweverOftenUsed) {
    const auto text = printed("struct U { float a; }; fragment float4 m(constant U& u "
                              "[[buffer(0)]]) { float s = 0; for (int i = 0; i < 3; i++) s += u.a "
                              "* u.a; return s + u.a; }");
    size_t loads = 0;
    for (size_t at = text.find("= load"); at != std::string::npos;
         at = text.find("= load", at + 1)) {
        ++loads;
    }
    EXPECT_EQ(loads, 1U) << text;
}

TEST(LowerTest, IdentitiesAreSimplified) {
    const auto text = printed("fragment float4 m(float4 p [[position]]) { return (p * 1.0 + 0.0) / "
                              "1.0 - 0.0; }");
    for (const char* op : {"fmul", "fadd", "fdiv", "fsub"}) {
        EXPECT_EQ(text.find(op), std::string::npos) << text;
    }
}

TEST(CheckTest, ABlockWithoutEndIsReported) {
    Stages stages("fragment float4 m() { return 1; }");
    auto form = stages.form();
    form.blocks[form.functions[0].layout.back()].terminator = ir::Terminator::none;
    const auto problems = ir::check(form);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_NE(problems[0].find("has no end"), std::string::npos);
}

} // namespace
} // namespace msl::tests
