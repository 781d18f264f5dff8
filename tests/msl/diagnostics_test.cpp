// What a person reads when a source is wrong, word for word.
#include <gtest/gtest.h>

#include <chrono>

#include "tests/msl/compile_helper.h"

namespace msl::tests {
namespace {

TEST(DiagnosticsTest, TextNamesThePlaceAndUnderlinesIt) {
    Options options;
    options.fileName = "bad.metal";
    const auto compiled =
        compileAndValidate("fragment float4 f_main() {\n    return unknwon;\n}\n", options);
    EXPECT_FALSE(compiled.result.module);
    EXPECT_EQ(compiled.text, "bad.metal:2:12: error: there is no variable named 'unknwon'\n"
                             "    return unknwon;\n"
                             "           ^~~~~~~\n");
}

TEST(DiagnosticsTest, MisspeltNamesAreSuggested) {
    const auto compiled = compileAndValidate(fragmentSource("return float4(flor(v.one));"));
    EXPECT_NE(compiled.text.find("error: there is no function named 'flor'"), std::string::npos);
    EXPECT_NE(compiled.text.find("note: did you mean 'floor'?"), std::string::npos);
}

TEST(DiagnosticsTest, TheMostSimilarMemberIsSuggested) {
    const auto compiled = compileAndValidate(
        fragmentSource("S s; return float4(s.uvs, 0, 1);", "struct S { float3 pos; float2 uv; };"));
    EXPECT_NE(compiled.text.find("note: did you mean 'uv'?"), std::string::npos) << compiled.text;
}

TEST(DiagnosticsTest, NamesOfOtherLanguagesAreTranslated) {
    const auto compiled =
        compileAndValidate(fragmentSource("vec3 a = v.one; return float4(lerp(a, a, 0.5), 1);"));
    EXPECT_NE(compiled.text.find("note: the language calls it 'float3'"), std::string::npos);
    const auto called = compileAndValidate(fragmentSource("return lerp(v.one, v.two, 0.5);"));
    EXPECT_NE(called.text.find("note: the language calls it 'mix'"), std::string::npos);
}

TEST(DiagnosticsTest, WhatIsMeantIsNotWarnedOf) {
    const auto compiled = compileAndValidate(
        fragmentSource("[[maybe_unused]] float a = 1; float b; (void)b; Guard g(1); int n = 3; "
                       "if ((n = 2)) {} for (int i = 0; i < 2; i++) {} return pick(v.i3);",
                       "struct Guard { float x; Guard(float y) : x(y) {} };\n"
                       "float pick(int i) { switch (i) { case 1: return 1; default: return 2; } }\n"
                       "float walk() { for (;;) { return 1; } }"));
    EXPECT_TRUE(compiled.result.diagnostics.empty()) << compiled.text;
}

TEST(DiagnosticsTest, AnErrorOfAMemberStandsAtTheMember) {
    const auto compiled =
        compileAndValidate("struct In {\n    float a;\n    bool b;\n};\n"
                           "fragment float4 f(In in [[stage_in]]) { return in.a; }");
    ASSERT_FALSE(compiled.result.diagnostics.empty());
    EXPECT_EQ(compiled.result.diagnostics.front().line, 3U) << compiled.text;
}

TEST(DiagnosticsTest, SeveralErrorsAreReportedAndNoMoreThanTwenty) {
    std::string body;
    for (int i = 0; i < 40; ++i) {
        body += "unknown" + std::to_string(i) + " = 1;\n";
    }
    const auto result = compile(fragmentSource(body + "return 0;"));
    size_t errors = 0;
    for (const auto& diagnostic : result.diagnostics) {
        errors += diagnostic.severity == Severity::error ? 1 : 0;
    }
    EXPECT_EQ(errors, 20U);
}

TEST(DiagnosticsTest, AWrongDeclarationDoesNotMakeItsUsesWrong) {
    const auto compiled =
        compileAndValidate(fragmentSource("float3 a = float2(1); return float4(a + a, a.x);"));
    EXPECT_EQ(compiled.result.diagnostics.size(), 1U) << compiled.text;
}

TEST(DiagnosticsTest, AnErrorInAMacroNamesTheMacro) {
    const auto compiled = compileAndValidate(
        fragmentSource("return float4(TWICE(v.one));", "#define TWICE(x) ((x) + missing)"));
    ASSERT_EQ(compiled.result.diagnostics.size(), 2U) << compiled.text;
    EXPECT_EQ(compiled.result.diagnostics[1].severity, Severity::note);
    EXPECT_EQ(compiled.result.diagnostics[1].message, "it stands in this macro");
    EXPECT_EQ(compiled.result.diagnostics[1].line, 3U);
}

struct Wrong {
    const char* name;
    const char* source;
    const char* first;
};

void PrintTo(const Wrong& item, std::ostream* stream) { *stream << item.name; }

const Wrong kWrong[] = {
    {"MissingSemicolon", "float f() {\n    float a = 1\n    return a; }",
     "2:16: error: expected ';' after the declaration"},
    {"UnknownType", "void f(flaot x) {}", "1:8: error: there is no type named 'flaot'"},
    {"WrongConversion", "void f() { float3 a = float2(1); }",
     "1:23: error: the value has the type 'float2', which does not convert to 'float3'"},
    {"WrongOperands", "void f(float2 a, float3 b) { a + b; }",
     "1:32: error: '+' does not apply to 'float2' and 'float3'"},
    {"WrongArguments", "float g(float2 x) { return x.x; } void f(float3 a) { g(a); }",
     "1:54: error: no function 'g' takes the arguments (float3)"},
    {"AmbiguousCall",
     "float g(float a, int b) { return a; } float g(int a, float b) { return b; } void f() { g(1, "
     "1); }",
     "1:88: error: the call of 'g' with the arguments (int, int) is ambiguous"},
    {"ConstantWritten", "void f() { const float a = 1; a = 2; }",
     "1:33: error: 'a' is constant and cannot be written"},
    {"UnknownMember", "struct S { float x; }; void f(S s) { s.y; }",
     "1:40: error: 'S' has no member 'y'"},
    {"UnknownComponent", "void f(float2 a) { a.z; }", "1:22: error: 'float2' has no component 'z'"},
    {"VectorCondition", "void f(bool2 b) { if (b) {} }",
     "1:23: error: a condition is a single number or bool, not 'bool2'; use 'all' or 'any'"},
    {"BreakOutsideLoop", "void f() { break; }",
     "1:12: error: there is no loop or 'switch' to break out of"},
    {"DoubleDeclaration", "void f() { int a; float a; }", "1:25: error: 'a' is declared twice"},
    {"DuplicateCase", "void f(int i) { switch (i) { case 1: case 1: break; } }",
     "1:38: error: this case stands twice in the 'switch'"},
    {"IndexOutside", "void f() { int a[3]; a[3]; }",
     "1:24: error: the index 3 is outside 'int[3]'"},
    {"Recursion", "float f(float x) { return f(x); } fragment float4 m() { return f(1); }",
     "1:27: error: the function 'f' calls itself, which shaders cannot do"},
    {"NeverDefined", "float g(float x); fragment float4 m() { return g(1); }",
     "1:48: error: the function 'g' is declared and called but never defined"},
    {"NoEntryPoint", "float f() { return 1; }",
     "0:0: error: the source has no vertex or fragment function"},
    {"KernelIsSkipped", "kernel void k() {}",
     "1:13: warning: the kernel 'k' is skipped: only vertex and fragment functions are compiled"},
    {"UnclosedBlock", "void f() { if (true) {", "1:22: error: this '{' is never closed"},
    {"UnclosedComment", "/* no end", "1:1: error: this comment is never closed"},
    {"ErrorDirective", "#error too old", "1:2: error: #error too old"},
    {"UnendedCondition", "#if 1\nfloat f();",
     "1:2: error: this condition is never ended by #endif"},
    {"MissingInclude", "#include \"none.h\"", "1:10: error: the file 'none.h' is not found"},
    {"Double", "void f() { double d = 1; }",
     "1:12: error: the language has no 'double'; 'float' is its widest floating-point type"},
    {"Goto", "void f() { goto end; }", "1:12: error: the language has no 'goto'"},
    {"Lambda", "void f() { auto g = [](float x) { return x; }; }",
     "1:21: error: the language has no lambda expressions; write a function, or a struct with "
     "'operator()'"},
    {"ParameterWithoutAttribute", "fragment float4 m(float x) { return x; }",
     "1:25: error: this parameter of an entry point has no attribute that says where its value "
     "comes from"},
    {"FloatModulo", "void f(float a) { a % 2; }",
     "1:21: error: '%' does not apply to 'float'; 'fmod' does"},
    {"LibraryArgumentCount", "void f() { metal::sin(1, 2); }",
     "1:12: error: 'sin' takes 1 argument, not 2"},
    {"OperatorWithoutResult", "struct S { float x; operator+(S o) { return o; } };",
     "1:21: error: the type of the operator's result is missing before it"},
    {"UnknownAttribute", "struct S { float4 p [[positon]]; };",
     "1:23: warning: there is no attribute '[[positon]]'"},
    {"TemplateWithoutName", "template <typename T> struct { T x; };",
     "1:23: error: a template needs a name"},
    {"UnusedVariable", "void f() { float a = 1; }", "1:18: warning: the variable 'a' is not used"},
    {"UnusedValue", "void f(float a) { a + 1; }",
     "1:21: warning: the value of this expression is not used"},
    {"AssigningCondition", "void f(int a) { if (a = 1) {} }",
     "1:23: warning: this condition assigns; '==' compares, and a second pair of parentheses says "
     "that it is meant so"},
    {"LostFraction", "void f(int a) { a = 1.5; }",
     "1:21: warning: this number loses its fraction when it becomes 'int'"},
    {"WayWithoutReturn", "float f(float x) { if (x > 0) return 1; }",
     "1:7: warning: the function 'f' may end without returning a value"},
    {"AssertionFails", "static_assert(sizeof(int) == 8, \"no\");",
     "1:1: error: the assertion does not hold"},
};

class WrongSource : public testing::TestWithParam<Wrong> {};

TEST_P(WrongSource, IsReportedWithPlaceAndReason) {
    EXPECT_EQ(firstDiagnostic(GetParam().source), GetParam().first);
}

INSTANTIATE_TEST_SUITE_P(Diagnostics, WrongSource, testing::ValuesIn(kWrong),
                         [](const auto& test) { return std::string(test.param.name); });

std::string repeated(std::string_view text, size_t times) {
    std::string result;
    for (size_t i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

struct Hostile {
    const char* name;
    std::string source;
    const char* part; // of the diagnostic
};

void PrintTo(const Hostile& item, std::ostream* stream) { *stream << item.name; }

std::vector<Hostile> hostileSources() {
    std::string bomb = "#define G 1 + 1 +\n";
    for (char c = 'A'; c < 'G'; ++c) {
        const char next = static_cast<char>(c + 1);
        bomb += std::string("#define ") + c + repeated(std::string(" ") + next, 8) + "\n";
    }
    std::string tree = "void f0() {}\n";
    for (int i = 1; i < 40; ++i) {
        const auto callee = "f" + std::to_string(i - 1) + "(); ";
        tree += "void f" + std::to_string(i) + "() { " + callee + callee + "}\n";
    }
    const std::string entry = "fragment float4 m() { return ";
    return {
        {"MacroBomb", bomb + entry + "A 0; }", "macro expansion makes more than"},
        {"Parentheses", entry + repeated("(", 100000) + "1" + repeated(")", 100000) + "; }",
         "nested more than"},
        {"Blocks", "void f() {" + repeated("if (true) {", 50000), "nested more than"},
        {"UnarySigns", entry + repeated("-", 100000) + "1; }", "nested more than"},
        {"LongSum", entry + "0" + repeated(" + 1", 100000) + "; }", "nested more than"},
        {"CallTree", tree + "fragment float4 m() { f39(); return 0; }", "expand to more than"},
        {"TemplateChain", "template <int N> int f() { return f<N + 1>(); } " + entry + "f<0>(); }",
         "templates need more than"},
        {"HugeArray", "void f() { float a[60000][60000]; }", "more than 1048576 bytes"},
        {"Conditions", repeated("#if 1\n", 5000), "conditions are nested more than"},
        {"ManyTokens", repeated("; ", 600000), "tokens after preprocessing"},
        {"Braces", "constant int a[1] = " + repeated("{", 100000), "nested more than"},
        {"ConstantCopies",
         "struct B { int a[16000]; }; constexpr int f(int n) { B b = {}; for (int i = 0; i < n; "
         "++i) "
         "{ B c = b; b = c; } return 1; } constant int x[f(60000)] = {1};",
         "must be an integer known when compiling"},
        {"ConstantLoops",
         "constexpr int f() { int n = 0; while (n < 20000) ++n; return 1; }\n" +
             repeated("static_assert(f() == 1, \"\");\n", 5000),
         "must be known when compiling"},
        {"Conditionals", entry + repeated("true ? 1 : ", 100000) + "0; }", "nested more than"},
    };
}

class HostileSource : public testing::TestWithParam<Hostile> {};

TEST_P(HostileSource, EndsInADiagnosticAtOnce) {
    const auto begin = std::chrono::steady_clock::now();
    const auto result = compile(GetParam().source);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    EXPECT_FALSE(result.module);
    ASSERT_FALSE(result.diagnostics.empty());
    EXPECT_NE(result.diagnostics.front().message.find(GetParam().part), std::string::npos)
        << result.diagnostics.front().message;
    // Far above what is measured, far below what unbounded work would take.
    EXPECT_LT(taken.count(), 5.0);
}

INSTANTIATE_TEST_SUITE_P(Bounds, HostileSource, testing::ValuesIn(hostileSources()),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
} // namespace msl::tests
