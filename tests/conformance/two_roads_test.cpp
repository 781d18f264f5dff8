// Every wallpaper and sample, compiled by us and by software that is not ours: the same picture,
// and nothing that the SPIR-V validator complains about.

#include "msl/msl.h"
#include "platform/linux/gpu/vulkan_context.h"
#include "shaders/shader_catalog.h"
#include "tests/conformance/module_picture.h"
#include "tests/support/foreign_compiler.h"

#include <glslang/Public/ShaderLang.h>
#include <gtest/gtest.h>
#include <spirv-tools/libspirv.hpp>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace vantor::conformance {
namespace {

constexpr std::uint32_t kWidth = 160;
constexpr std::uint32_t kHeight = 90;

struct Named {
    std::string name;
    std::string_view source;
};

std::vector<Named> everySource() {
    std::vector<Named> sources;
    for (const auto& entry : ShaderCatalog::all) {
        std::string name(entry.id);
        std::replace_if(
            name.begin(), name.end(), [](char c) { return c == '.' || c == '-'; }, '_');
        sources.push_back({std::move(name), entry.source.value()});
    }
    sources.insert(sources.end(), {{"matrixRain", BuiltIn::matrixRain},
                                   {"rings", BuiltIn::rings},
                                   {"interference", BuiltIn::interference},
                                   {"spiral", BuiltIn::spiral},
                                   {"tunnel", BuiltIn::tunnel},
                                   {"cells", BuiltIn::cells}});
    return sources;
}

class TwoRoads : public testing::TestWithParam<Named> {
  protected:
    static void SetUpTestSuite() {
        glslang::InitializeProcess();
        auto made = vulkan::Context::create();
        ASSERT_TRUE(made) << made.error();
        context = std::move(*made);
    }
    static void TearDownTestSuite() {
        context.reset();
        glslang::FinalizeProcess();
    }

    static std::shared_ptr<vulkan::Context> context;
};

std::shared_ptr<vulkan::Context> TwoRoads::context;

TEST_P(TwoRoads, TheModuleIsValidForVulkan) {
    const auto result = msl::compile(GetParam().source);
    ASSERT_TRUE(result.module);
    std::string complaint;
    spvtools::SpirvTools tools(SPV_ENV_VULKAN_1_2);
    tools.SetMessageConsumer([&](spv_message_level_t, const char*, const spv_position_t&,
                                 const char* message) { complaint = message; });
    EXPECT_TRUE(tools.Validate(result.module->words)) << complaint;
}

TEST_P(TwoRoads, OurModuleAndGlslangsDrawTheSamePicture) {
    const auto result = msl::compile(GetParam().source);
    ASSERT_TRUE(result.module);
    const std::string glsl = foreign::toGLSL(*result.module);
    ASSERT_FALSE(glsl.empty());
    const auto foreignWords = foreign::compileGLSL(glsl);
    ASSERT_FALSE(foreignWords.empty());

    const ShaderUniforms uniforms({static_cast<float>(kWidth), static_cast<float>(kHeight)}, 12.0F);
    const StageModule vertex{result.module->words, "v_main"};
    const auto ours =
        draw(context, vertex, {result.module->words, "f_main"}, uniforms, kWidth, kHeight);
    const auto theirs = draw(context, vertex, {foreignWords, "main"}, uniforms, kWidth, kHeight);
    ASSERT_FALSE(ours.empty());
    ASSERT_EQ(ours.size(), theirs.size());
    // An empty picture would agree with anything.
    bool drawn = false;
    for (std::size_t i = 0; i < ours.size(); i += 4) {
        drawn = drawn || ours[i + 1] > 32;
    }
    ASSERT_TRUE(drawn);
    int worst = 0;
    for (std::size_t i = 0; i < ours.size(); ++i) {
        worst = std::max(worst, std::abs(int{ours[i]} - int{theirs[i]}));
    }
    EXPECT_LE(worst, 1);
}

INSTANTIATE_TEST_SUITE_P(Sources, TwoRoads, testing::ValuesIn(everySource()),
                         [](const auto& entry) { return entry.param.name; });

} // namespace
} // namespace vantor::conformance
