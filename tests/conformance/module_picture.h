#pragma once
// A full-screen picture drawn by two SPIR-V modules through plain Vulkan, without the seam: the
// ground on which two compilers are compared.

#include "platform/linux/gpu/vulkan_context.h"
#include "shaders/shader_uniforms.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vantor::conformance {

struct StageModule {
    std::span<const std::uint32_t> words;
    std::string entryPoint;
};

/// BGRA rows, top row first; empty where Vulkan refuses. The fragment stage finds `uniforms` at set
/// 1, binding 0.
std::vector<std::uint8_t> draw(const std::shared_ptr<vulkan::Context>& context,
                               const StageModule& vertex, const StageModule& fragment,
                               const ShaderUniforms& uniforms, std::uint32_t width,
                               std::uint32_t height);

} // namespace vantor::conformance
