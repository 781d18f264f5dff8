// GLSL shaders on two roads: compiled by glslang, and translated to Metal Shading Language by
// SPIRV-Cross and compiled by us. Both draw, and must draw the same.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include <glslang/Public/ShaderLang.h>

#include "tests/msl/compile_helper.h"
#include "tests/msl/conformance/case_file.h"
#include "tests/msl/conformance/random_glsl.h"
#include "tests/support/foreign_compiler.h"
#include "tests/support/vulkan_runner.h"

namespace msl::tests {
namespace {

std::string glslOf(const ConformanceCase& item) {
    return "#version 450\n#extension GL_EXT_samplerless_texture_functions : require\n"
           "layout(std430, set = 1, binding = 0) readonly buffer Values {\n"
           "    float zero, one, two, half_; int i3; uint u5; vec2 v12; vec4 v1234; };\n"
           "layout(set = 1, binding = 32) uniform texture2D tex;\n"
           "layout(set = 1, binding = 64) uniform sampler smp;\n"
           "layout(location = 0) out vec4 color;\n" +
           item.declarations +
           "void main() {\n"
           "    vec2 p = gl_FragCoord.xy; vec4 q = vec4(p, p.yx * half_) - one;\n"
           "    int n = int(p.x) + int(p.y) * 4; uint m = uint(n) + u5;\n" +
           item.body + "}\n";
}

const char* const kVertex =
    "vertex float4 v_main(uint vid [[vertex_id]]) {\n"
    "    return float4(float2((vid << 1) & 2, vid & 2) * 2 - 1, 0, 1);\n}\n";

std::vector<std::byte> values() {
    const float numbers[] = {0, 1, 2, 0.5F, 0, 0, 1, 2, 1, 2, 3, 4};
    const uint32_t integers[] = {3, 5};
    std::vector<std::byte> bytes(sizeof(numbers));
    std::memcpy(bytes.data(), numbers, sizeof(numbers));
    std::memcpy(bytes.data() + 16, integers, sizeof(integers));
    return bytes;
}

class TwoRoads : public testing::TestWithParam<ConformanceCase> {};

class Glslang : public testing::Environment {
  public:
    void SetUp() override { glslang::InitializeProcess(); }
    void TearDown() override { glslang::FinalizeProcess(); }
};

const auto* const kGlslang = testing::AddGlobalTestEnvironment(new Glslang);

void expectTheSame(const ConformanceCase& item) {
    const auto theirs = vantor::foreign::compileGLSL(glslOf(item));
    ASSERT_FALSE(theirs.empty()) << glslOf(item);
    const std::string metal = vantor::foreign::toMetal(theirs);
    ASSERT_FALSE(metal.empty());
    const auto ours = compileAndValidate(metal);
    ASSERT_TRUE(ours.result.module) << ours.text << metal;
    ASSERT_EQ(ours.validator, "") << metal;
    const auto vertex = compile(kVertex);
    ASSERT_TRUE(vertex.module);
    auto* runner = vantor::tests::VulkanRunner::shared();
    ASSERT_NE(runner, nullptr) << "no Vulkan 1.3 device answers";
    const EntryPoint& entry = ours.result.module->entryPoints[0];
    std::string problem;
    const std::vector<std::vector<std::byte>> buffers{values()};
    const auto left =
        runner->drawAll({vertex.module->words, "v_main"},
                        {ours.result.module->words, "main0", entry}, buffers, problem, {});
    ASSERT_TRUE(left) << problem;
    const auto right = runner->drawAll({vertex.module->words, "v_main"}, {theirs, "main", entry},
                                       buffers, problem, {});
    ASSERT_TRUE(right) << problem;
    for (size_t i = 0; i < left->size(); ++i) {
        for (size_t j = 0; j < 4; ++j) {
            const float a = (*left)[i][j];
            const float b = (*right)[i][j];
            EXPECT_TRUE(a == b || (std::isnan(a) && std::isnan(b)) ||
                        std::fabs(a - b) <= 1e-4F * std::max(1.0F, std::fabs(b)))
                << "pixel " << i << " component " << j << ": ours " << a << ", theirs " << b << "\n"
                << metal;
        }
    }
}

TEST_P(TwoRoads, DrawTheSame) { expectTheSame(GetParam()); }

// MSL_RANDOM_PROGRAMS sets how many there are, and MSL_RANDOM_FIRST the first seed.
TEST(RandomPrograms, DrawTheSame) {
    const auto setting = [](const char* name, uint32_t otherwise) {
        const char* text = std::getenv(name);
        return text != nullptr ? static_cast<uint32_t>(std::strtoul(text, nullptr, 10)) : otherwise;
    };
    const uint32_t first = setting("MSL_RANDOM_FIRST", 1);
    for (uint32_t seed = first; seed < first + setting("MSL_RANDOM_PROGRAMS", 40); ++seed) {
        const auto program = randomGlsl(seed);
        ConformanceCase item;
        item.declarations = program.functions;
        item.body = program.body;
        SCOPED_TRACE("seed " + std::to_string(seed));
        expectTheSame(item);
    }
}

INSTANTIATE_TEST_SUITE_P(Glsl, TwoRoads, testing::ValuesIn(readCases(GLSL_CASE_FOLDER)),
                         [](const auto& test) { return test.param.file + "_" + test.param.name; });

} // namespace

} // namespace msl::tests
