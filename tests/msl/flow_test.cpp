#include "msl/optimize/flow.h"

#include <gtest/gtest.h>

#include "tests/msl/optimize_test_support.h"

namespace msl::tests {
namespace {

// A function's flow, and where in it blocks of a kind stand.
struct Shape {
    explicit Shape(std::string_view source)
        : form(loweredForm(source)), flow(form, form.functions[0], positions) {}

    const ir::Block& block(uint32_t at) const { return form.blocks[form.functions[0].layout[at]]; }
    uint32_t first(ir::Merge merge) const {
        uint32_t at = 0;
        while (block(at).merge != merge) {
            ++at;
        }
        return at;
    }

    ir::Module form;
    std::vector<uint32_t> positions;
    ir::Flow flow;
};

TEST(FlowTest, WhereBranchesMeetTheirTestDominates) {
    const Shape shape("fragment float4 m(float4 p [[position]]) { float a = 0; if (p.x > 2) { a = "
                      "p.x; } else { a = p.y; } return a; }");
    const uint32_t test = shape.first(ir::Merge::selection);
    const uint32_t left = shape.flow.positionOf(shape.block(test).target);
    const uint32_t right = shape.flow.positionOf(shape.block(test).otherTarget);
    const uint32_t after = shape.flow.positionOf(shape.block(test).mergeBlock);
    EXPECT_EQ(shape.flow.dominator(left), test);
    EXPECT_EQ(shape.flow.dominator(right), test);
    EXPECT_EQ(shape.flow.dominator(after), test);
    EXPECT_TRUE(shape.flow.dominates(test, after));
    EXPECT_FALSE(shape.flow.dominates(left, after));
    EXPECT_FALSE(shape.flow.dominates(left, right));
    EXPECT_TRUE(shape.flow.dominates(left, left));
    EXPECT_FALSE(shape.flow.dominates(after, test));
}

TEST(FlowTest, WhatFollowsATestThatEndsTheOtherWayIsDominatedByItsOwn) {
    const Shape shape("fragment float4 m(float4 p [[position]]) { float a = 0; if (p.x > 2) { "
                      "discard_fragment(); } else { a = p.y; } return a; }");
    const uint32_t test = shape.first(ir::Merge::selection);
    const uint32_t other = shape.flow.positionOf(shape.block(test).otherTarget);
    const uint32_t after = shape.flow.positionOf(shape.block(test).mergeBlock);
    EXPECT_EQ(shape.flow.dominates(other, after),
              shape.block(shape.flow.positionOf(shape.block(test).target)).terminator ==
                  ir::Terminator::discard);
}

TEST(FlowTest, LoopsContainEachOther) {
    const Shape shape("fragment float4 m(float4 p [[position]]) { float a = 0; for (int i = 0; i < "
                      "9; i++) { a += p.x; for (int j = 0; j < 9; j++) { a *= p.y; } } return a; "
                      "}");
    const uint32_t outer = shape.first(ir::Merge::loop);
    uint32_t inner = outer + 1;
    while (shape.block(inner).merge != ir::Merge::loop) {
        ++inner;
    }
    const uint32_t innerLoop = shape.flow.loopOf(inner);
    EXPECT_EQ(shape.flow.loop(innerLoop).header, inner);
    EXPECT_EQ(shape.flow.loop(innerLoop).outer, shape.flow.loopOf(outer));
    EXPECT_EQ(shape.flow.loopOf(0), ir::kNoLoop);
    EXPECT_EQ(shape.flow.loopOf(shape.flow.positionOf(shape.block(outer).mergeBlock)), ir::kNoLoop);
    EXPECT_FALSE(shape.flow.isInside(outer, innerLoop));
    EXPECT_TRUE(shape.flow.isInside(inner, shape.flow.loopOf(outer)));
}

TEST(FlowTest, ABlockThatNoWayLeadsToHangsOnItsConstruct) {
    const Shape shape("fragment float4 m(float4 p [[position]]) { for (;;) { if (p.x > 2) { return "
                      "p; } else { return p.yxzw; } } }");
    const uint32_t loop = shape.first(ir::Merge::loop);
    const uint32_t continues = shape.flow.positionOf(shape.block(loop).continueBlock);
    EXPECT_TRUE(shape.flow.dominates(loop, continues));
}

} // namespace
} // namespace msl::tests
