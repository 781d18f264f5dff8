#pragma once
// The road through software that is not ours: a module of our compiler turned into GLSL by
// SPIRV-Cross, and that GLSL compiled to SPIR-V by glslang. Tests and benchmarks only.

#include "msl/msl.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vantor::foreign {

/// Vulkan GLSL of the module's fragment function "f_main"; empty where SPIRV-Cross fails.
std::string toGLSL(const msl::Module& module);

/// Metal Shading Language of a module's fragment function, which is "main0" there; empty where
/// SPIRV-Cross fails.
std::string toMetal(std::span<const std::uint32_t> words);

/// The module of a GLSL fragment shader for Vulkan 1.2, with the entry point "main"; empty, with
/// the reason on standard error, where it does not compile. The first call of a process pays for
/// glslang's own tables if glslang::InitializeProcess() was not called before.
std::vector<std::uint32_t> compileGLSL(const std::string& glsl);

} // namespace vantor::foreign
