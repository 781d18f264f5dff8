#include <gtest/gtest.h>

#include "tests/msl/stages_test_support.h"

namespace msl::tests {
namespace {

const ast::Expr* initOf(const std::vector<ast::Decl*>& declared) {
    return declared.back()->variables[0]->init;
}

TEST(ParserTest, BinaryOperatorsBindByPrecedence) {
    Stages stages("constant int x = 1 + 2 * 3;");
    const auto declared = stages.declarations();
    const auto* sum = initOf(declared);
    EXPECT_EQ(sum->op, TokenKind::plus);
    EXPECT_EQ(sum->b->op, TokenKind::star);
}

TEST(ParserTest, SubtractionGroupsFromTheLeft) {
    Stages stages("constant int x = 5 - 2 - 1;");
    const auto declared = stages.declarations();
    EXPECT_EQ(initOf(declared)->a->op, TokenKind::minus);
    EXPECT_EQ(initOf(declared)->b->intValue, 1U);
}

TEST(ParserTest, ATypeInParenthesesIsACastAndACallIsNot) {
    Stages stages("constant float a = (float)1; constant float b = (float(1));");
    const auto declared = stages.declarations();
    EXPECT_EQ(declared[0]->variables[0]->init->kind, ast::ExprKind::cast);
    EXPECT_EQ(declared[1]->variables[0]->init->kind, ast::ExprKind::construct);
}

TEST(ParserTest, TemplateArgumentsMayEndInTwoAngles) {
    Stages stages("fragment float4 f(array<vec<float, 2>, 3> a) { return 0; }");
    stages.declarations();
    EXPECT_FALSE(stages.diagnostics.hasErrors());
}

TEST(ParserTest, AttributesBelongToTheirDeclarator) {
    Stages stages("struct S { float4 p [[position]]; float c [[user(shade), flat]]; };");
    const auto declared = stages.declarations();
    const auto& members = declared[0]->members;
    EXPECT_EQ(members[0]->variables[0]->attributes[0].name->text, "position");
    EXPECT_EQ(members[1]->variables[0]->attributes[0].word->text, "shade");
    EXPECT_EQ(members[1]->variables[0]->attributes[1].name->text, "flat");
}

TEST(ParserTest, AFieldNamedLikeATypeDoesNotHideIt) {
    Stages stages("struct A { float x; }; struct B { float A; }; A f(A a) { return a; }");
    stages.declarations();
    EXPECT_FALSE(stages.diagnostics.hasErrors());
}

TEST(ParserTest, ParsingGoesOnAfterAnError) {
    Stages stages("float f( { } int a = ; float g() { return 1; }");
    const auto declared = stages.declarations();
    EXPECT_TRUE(stages.diagnostics.hasErrors());
    ASSERT_FALSE(declared.empty());
    EXPECT_EQ(declared.back()->name->text, "g");
}

} // namespace
} // namespace msl::tests
