#include "tests/support/foreign_compiler.h"

#include <glslang/Public/ShaderLang.h>
#include <glslang/SPIRV/GlslangToSpv.h>
#include <spirv_cross_c.h>

#include <cstddef>
#include <iostream>

namespace vantor::foreign {
namespace {

// Limits wide enough for any shader here; glslang only compares against them.
TBuiltInResource wideLimits() {
    TBuiltInResource limits{};
    auto* numbers = reinterpret_cast<int*>(&limits);
    for (std::size_t i = 0; i < offsetof(TBuiltInResource, limits) / sizeof(int); ++i) {
        numbers[i] = 4096;
    }
    limits.minProgramTexelOffset = -8;
    limits.limits = {true, true, true, true, true, true, true, true, true};
    return limits;
}

} // namespace

std::string toMetal(std::span<const std::uint32_t> words) {
    spvc_context context = nullptr;
    spvc_parsed_ir parsed = nullptr;
    spvc_compiler compiler = nullptr;
    spvc_compiler_options options = nullptr;
    const char* text = nullptr;
    std::string result;
    if (spvc_context_create(&context) != SPVC_SUCCESS) {
        return result;
    }
    if (spvc_context_parse_spirv(context, words.data(), words.size(), &parsed) == SPVC_SUCCESS &&
        spvc_context_create_compiler(context, SPVC_BACKEND_MSL, parsed,
                                     SPVC_CAPTURE_MODE_TAKE_OWNERSHIP, &compiler) == SPVC_SUCCESS &&
        spvc_compiler_create_compiler_options(compiler, &options) == SPVC_SUCCESS) {
        spvc_compiler_options_set_uint(options, SPVC_COMPILER_OPTION_MSL_VERSION,
                                       SPVC_MAKE_MSL_VERSION(2, 3, 0));
        spvc_compiler_install_compiler_options(compiler, options);
        if (spvc_compiler_compile(compiler, &text) == SPVC_SUCCESS) {
            result = text;
        }
    }
    spvc_context_destroy(context);
    return result;
}

std::string toGLSL(const msl::Module& module) {
    spvc_context context = nullptr;
    spvc_parsed_ir parsed = nullptr;
    spvc_compiler compiler = nullptr;
    spvc_compiler_options options = nullptr;
    const char* text = nullptr;
    std::string result;
    if (spvc_context_create(&context) != SPVC_SUCCESS) {
        return result;
    }
    if (spvc_context_parse_spirv(context, module.words.data(), module.words.size(), &parsed) ==
            SPVC_SUCCESS &&
        spvc_context_create_compiler(context, SPVC_BACKEND_GLSL, parsed,
                                     SPVC_CAPTURE_MODE_TAKE_OWNERSHIP, &compiler) == SPVC_SUCCESS &&
        spvc_compiler_set_entry_point(compiler, "f_main", SpvExecutionModelFragment) ==
            SPVC_SUCCESS &&
        spvc_compiler_create_compiler_options(compiler, &options) == SPVC_SUCCESS) {
        spvc_compiler_options_set_uint(options, SPVC_COMPILER_OPTION_GLSL_VERSION, 450);
        spvc_compiler_options_set_bool(options, SPVC_COMPILER_OPTION_GLSL_VULKAN_SEMANTICS, 1);
        // GLSL's own min, max and clamp, rather than ones that test for NaN.
        spvc_compiler_options_set_bool(options, SPVC_COMPILER_OPTION_RELAX_NAN_CHECKS, 1);
        spvc_compiler_install_compiler_options(compiler, options);
        if (spvc_compiler_compile(compiler, &text) == SPVC_SUCCESS) {
            result = text;
        }
    }
    spvc_context_destroy(context);
    return result;
}

std::vector<std::uint32_t> compileGLSL(const std::string& glsl) {
    static const TBuiltInResource limits = wideLimits();
    glslang::TShader shader(EShLangFragment);
    const char* text = glsl.c_str();
    shader.setStrings(&text, 1);
    shader.setEnvInput(glslang::EShSourceGlsl, EShLangFragment, glslang::EShClientVulkan, 100);
    shader.setEnvClient(glslang::EShClientVulkan, glslang::EShTargetVulkan_1_2);
    shader.setEnvTarget(glslang::EShTargetSpv, glslang::EShTargetSpv_1_5);
    const auto messages = static_cast<EShMessages>(EShMsgSpvRules | EShMsgVulkanRules);
    if (!shader.parse(&limits, 450, false, messages)) {
        std::cerr << shader.getInfoLog();
        return {};
    }
    glslang::TProgram program;
    program.addShader(&shader);
    if (!program.link(messages)) {
        std::cerr << program.getInfoLog();
        return {};
    }
    std::vector<std::uint32_t> words;
    glslang::GlslangToSpv(*program.getIntermediate(EShLangFragment), words);
    return words;
}

} // namespace vantor::foreign
