#include <gtest/gtest.h>

#include "tests/msl/compile_helper.h"
#include "tests/msl/stages_test_support.h"

namespace msl::tests {
namespace {

// static_assert asks semantic analysis itself: types, conversions and constant evaluation.
const char* const kTrue[] = {
    "sizeof(float3) == 16 && alignof(float3) == 16 && sizeof(packed_float3) == 12",
    "sizeof(struct_t) == 32",
    "sizeof(decltype(1 + 1.0h)) == 2",
    "sizeof(decltype(short(1) + short(1))) == 4",
    "sizeof(decltype(1.0 * float3(1))) == 16",
    "sizeof(decltype(half2(1) * 2.0)) == 4",
    "7 / 2 == 3 && -7 / 2 == -3 && -7 % 3 == -1",
    "(1u << 31) > 0 && (1 << 4 | 1) == 17",
    "int(2.9f) == 2 && uchar(257) == 1 && (char)200 == -56",
    "(true ? 1 : 2) == 1 && !false && ~0 == -1",
    "kTwo * kTwo == 4 && second == 1 && Kind::b != Kind::a",
    "1.5f + 1.5f == 3.0f",
};

class Assertion : public testing::TestWithParam<const char*> {};

TEST_P(Assertion, Holds) {
    const std::string source = "struct struct_t { float a; float3 b; }; enum { first, second };"
                               "enum class Kind { a, b }; constant int kTwo = 2;\n"
                               "static_assert(" +
                               std::string(GetParam()) + ", \"\");";
    Stages stages(source);
    stages.unit();
    const auto found = stages.diagnostics.take();
    EXPECT_TRUE(found.empty()) << found.front().message;
}

INSTANTIATE_TEST_SUITE_P(Sema, Assertion, testing::ValuesIn(kTrue));

TEST(SemaTest, AnEntryPointIsFoundWithItsStage) {
    Stages stages("vertex float4 a() { return 0; } [[fragment]] float4 b() { return 0; } float c() "
                  "{ return 0; }");
    const auto unit = stages.unit();
    ASSERT_EQ(unit.entryPoints.size(), 2U);
    EXPECT_EQ(unit.entryPoints[0]->stage, ast::FunctionStage::vertex);
    EXPECT_EQ(unit.entryPoints[1]->stage, ast::FunctionStage::fragment);
}

TEST(SemaTest, ALoopKnowsTheOuterVariablesThatItWrites) {
    Stages stages("fragment float4 m() { float a = 0, b = 0; for (int i = 0; i < 3; i++) { a += b; "
                  "float c = 1; c += 1; } return a; }");
    const auto unit = stages.unit();
    const auto items = unit.entryPoints[0]->body->items;
    const tree::Stmt* loop = nullptr;
    for (const auto* item : items) {
        loop = item->kind == tree::StmtKind::loop ? item : loop;
    }
    ASSERT_NE(loop, nullptr);
    std::string written;
    for (const auto* variable : loop->assigned) {
        written += std::string(variable->name->text) + " ";
    }
    EXPECT_EQ(written, "i a c ");
}

TEST(SemaTest, AConstantDoesNotStandInItsOwnValue) {
    EXPECT_EQ(firstDiagnostic("constant int a = a;\nfragment float4 m() { return a; }"),
              "1:18: error: 'a' stands in its own value");
    EXPECT_EQ(firstDiagnostic("template <int N> struct F { static constexpr constant int v = "
                              "F<N>::v; };\nfragment float4 m() { return F<1>::v; }"),
              "1:63: error: 'v' stands in its own value");
}

} // namespace
} // namespace msl::tests
