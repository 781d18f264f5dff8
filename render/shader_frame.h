#pragma once
// One frame of a shader, recorded into a command buffer.

#include "platform/gpu.h"
#include "shaders/shader_uniforms.h"

#include <memory>

namespace vantor {

/// Clears `texture` to opaque black and draws the shader over all of it: `look` with the texture's
/// size as resolution and `time` at fragment buffer 0, silence as audio inputs, one triangle.
/// Without an encoder nothing is recorded. Allocates nothing once `device` has drawn before.
void encodeShaderFrame(gpu::CommandBuffer& commands, gpu::Device& device,
                       const std::shared_ptr<gpu::RenderPipelineState>& pipeline,
                       gpu::Texture& texture, const ShaderUniforms& look, float time);

} // namespace vantor
