#include <gtest/gtest.h>

#include "tests/msl/stages_test_support.h"

namespace msl::tests {
namespace {

struct Case {
    const char* name;
    const char* source;
    const char* expected;
};

const Case kCases[] = {
    {"ObjectMacrosRescan", "#define A B\n#define B 3\nA", "3"},
    {"AMacroDoesNotExpandItself", "#define A A + B\n#define B A\nA", "A + A"},
    {"ArgumentsExpandBeforeSubstitution", "#define X 1\n#define F(a) a\nF(X + X)", "1 + 1"},
    {"HashMakesAString", "#define S(x) #x\nS(a  +  \"b\")", "\"a + \\\"b\\\"\""},
    {"HashHashPastes", "#define J(a, b) a##b\nJ(x, 1) J(, y)", "x1 y"},
    {"PastedArgumentsAreNotExpanded", "#define X 1\n#define J(a) a##2\nJ(X)", "X2"},
    {"VariadicArgumentsKeepTheirCommas", "#define V(f, ...) f(__VA_ARGS__)\nV(g, 1, 2)",
     "g ( 1 , 2 )"},
    {"AFunctionMacroWithoutParenthesesStands", "#define F(a) a\nF + F (2)", "F + 2"},
    {"ParenthesesProtectCommas", "#define F(a, b) b\nF((1, 2), 3)", "3"},
    {"UndefForgets", "#define A 1\n#undef A\nA", "A"},
    {"ElifTakesTheFirstTrue", "#if 0\na\n#elif 1\nb\n#elif 1\nc\n#else\nd\n#endif", "b"},
    {"NestedSectionsAreSkipped", "#if 0\n#if 1\na\n#else\nb\n#endif\n#else\nc\n#endif", "c"},
    {"ExpressionsHavePrecedence", "#if 1 + 2 * 3 == 7 && (4 >> 1) == 2 && -1 < 0\ny\n#endif", "y"},
    {"DefinedIsNotExpanded", "#define A 0\n#if defined(A) && !defined B\ny\n#endif", "y"},
    {"UnknownNamesAreZero", "#if UNKNOWN\na\n#else\nb\n#endif", "b"},
    {"LineIsTheUsesLine", "\n\n__LINE__", "3"},
    {"BuiltInHeadersAreEmpty", "#include <metal_stdlib>\n#include <simd/simd.h>\nx", "x"},
    {"VersionIsThree", "#if __METAL_VERSION__ >= 300\ny\n#endif", "y"},
    {"PragmasVanish", "#pragma mark - x\ny", "y"},
};

class Expansion : public testing::TestWithParam<Case> {};

TEST_P(Expansion, GivesTheseTokens) {
    Stages stages(GetParam().source);
    EXPECT_EQ(stages.spelled(), GetParam().expected);
    EXPECT_FALSE(stages.diagnostics.hasErrors());
}

INSTANTIATE_TEST_SUITE_P(Preprocessor, Expansion, testing::ValuesIn(kCases),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace msl::tests
