// The bounds that a source reaches by its length or its files rather than by its shape; those of
// nesting and of what macros, templates and calls expand to are in diagnostics_test.cpp.
#include <gtest/gtest.h>

#include <fstream>
#include <functional>

#include "msl/msl.h"
#include "msl/source/limits.h"
#include "tests/msl/compile_helper.h"
#include "tests/support/temporary_folder.h"

namespace msl::tests {
namespace {

const std::string kEntry = "fragment float4 m() { return ";

std::string many(int count, const std::function<std::string(int)>& line) {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += line(i);
    }
    return text;
}

// The error that ends the compilation, without its place.
std::string refusal(const std::string& source, const Options& options = {}) {
    const auto result = compile(source, options);
    EXPECT_FALSE(result.module);
    return result.diagnostics.empty() ? "" : result.diagnostics.front().message;
}

TEST(BoundsTest, ASourceIsNotLongerThanItsLimit) {
    EXPECT_EQ(refusal(std::string(kMaxSourceBytes + 1, ' ')),
              "a source of 4194305 bytes exceeds the limit of 4194304");
}

TEST(BoundsTest, FilesIncludeEachOtherOnlySoDeep) {
    const vantor::TemporaryFolder folder;
    std::ofstream(folder.path() / "self.h") << "#include \"self.h\"\n";
    EXPECT_EQ(refusal("#include \"self.h\"\n", {.includeFolders = {folder.path()}}),
              "files include each other more than 32 deep");
}

TEST(BoundsTest, IncludedFilesTogetherAreNotLongerThanASource) {
    const vantor::TemporaryFolder folder;
    std::ofstream(folder.path() / "long.h") << std::string(kMaxSourceBytes / 2, ' ');
    EXPECT_EQ(
        refusal("#include \"long.h\"\n#include \"long.h\"\n", {.includeFolders = {folder.path()}}),
        "the file 'long.h' cannot be read, or the sources together exceed 4194304 bytes");
}

TEST(BoundsTest, MacrosNestOnlySoDeep) {
    // Each one's argument is expanded before it is replaced.
    const std::string macros = many(300,
                                    [](int i) {
                                        return "#define A" + std::to_string(i) + "(x) A" +
                                               std::to_string(i + 1) + "(x) + 1\n";
                                    }) +
                               "#define A300(x) x\n";
    EXPECT_EQ(refusal(macros + kEntry + "A0(1); }"), "macros are nested more than 200 deep");
}

TEST(BoundsTest, TemplatesHaveOnlySoManyInstances) {
    const std::string sums = "template <int N> int f() { return N; }\n" + many(1100, [](int i) {
                                 const auto number = std::to_string(i);
                                 return "int g" + number + "() { return f<" + number + ">(); }\n";
                             });
    EXPECT_EQ(refusal(sums + kEntry + "g0(); }"),
              "templates need more than 1024 instances or are nested more than 32 deep");
}

TEST(BoundsTest, AnArrayHasOnlySoManyElements) {
    EXPECT_EQ(refusal("void f() { bool a[65537]; }"),
              "an array of length 65537 is not within 1 and 65536");
}

TEST(BoundsTest, AValueHasOnlySoManyParts) {
    EXPECT_EQ(refusal("struct S { float a[20000]; }; " + kEntry + "S{}.a[0]; }"),
              "a value of more than 16384 parts cannot be made");
    EXPECT_EQ(refusal("constant float a[20000] = {1};\n" + kEntry + "a[3]; }"),
              "a value of more than 16384 parts cannot be initialised");
}

TEST(BoundsTest, AConstantTakesOnlySoManySteps) {
    const std::string doubled = many(40, [](int i) {
        const auto name = "c" + std::to_string(i);
        return "const int c" + std::to_string(i + 1) + " = " + name + " - " + name + ";\n";
    });
    EXPECT_EQ(refusal("void f() { const int c0 = 1;\n" + doubled + "float a[c40 + 1]; }\n"),
              "the length of an array must be an integer known when compiling");
}

TEST(BoundsTest, OnlySoManyErrorsAreReported) {
    const auto result = compile(many(100, [](int i) {
        return "float f" + std::to_string(i) + "() { return missing" + std::to_string(i) + "; }\n";
    }));
    size_t errors = 0;
    for (const auto& said : result.diagnostics) {
        errors += said.severity == Severity::error ? 1 : 0;
    }
    EXPECT_EQ(errors, kMaxErrors);
    EXPECT_EQ(result.diagnostics.back().message, "no further errors are reported");
}

TEST(BoundsTest, ExpandedFunctionsNestOnlySoDeep) {
    const std::string chain = "float f0(float x) { return x; }\n" + many(700, [](int i) {
                                  return "float f" + std::to_string(i + 1) +
                                         "(float x) { return f" + std::to_string(i) + "(x); }\n";
                              });
    EXPECT_EQ(refusal(chain + kEntry + "f700(1); }"),
              "the functions are nested too deeply when expanded");
}

TEST(BoundsTest, OnlySoManyWaysMeetInOnePlace) {
    const std::string breaks = many(17000, [](int) { return "a++;if(a)break;"; });
    EXPECT_EQ(refusal("struct I { int a [[user(a)]] [[flat]]; };\n"
                      "fragment float4 m(I i [[stage_in]]) { int a = i.a; for (;;) {" +
                      breaks + "} return a; }"),
              "more than 16384 ways meet in one place");
    EXPECT_EQ(refusal("struct I { int a [[user(a)]] [[flat]]; };\n"
                      "fragment float4 m(I i [[stage_in]]) { switch (i.a) {" +
                      many(20000, [](int i) { return "case " + std::to_string(i) + ":"; }) +
                      "return 1; } return 0; }"),
              "more than 16384 ways meet in one place");
}

TEST(BoundsTest, WaysBringOnlySoManyValues) {
    const std::string declared =
        many(5000, [](int i) { return "float a" + std::to_string(i) + " = 0;"; });
    const std::string changed = many(5000, [](int i) {
        const auto name = "a" + std::to_string(i);
        return name + " += p.y; if (p.x > " + name + ") break;";
    });
    EXPECT_EQ(refusal("fragment float4 m(float4 p [[position]]) { " + declared + "for (;;) {" +
                      changed + "} return a0; }"),
              "the functions change more than 8388608 values where their ways meet");
}

} // namespace
} // namespace msl::tests
