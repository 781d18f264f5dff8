#include "render/shader_frame.h"

#include "shaders/audio_binding.h"

#include <span>

namespace vantor {
namespace {

constexpr std::uint32_t kUniformsIndex = 0;

std::span<const std::uint8_t> bytesOf(const ShaderUniforms& uniforms) {
    return {reinterpret_cast<const std::uint8_t*>(&uniforms), sizeof uniforms};
}

} // namespace

void encodeShaderFrame(gpu::CommandBuffer& commands, gpu::Device& device,
                       const std::shared_ptr<gpu::RenderPipelineState>& pipeline,
                       gpu::Texture& texture, const ShaderUniforms& look, float time) {
    ShaderUniforms uniforms = look;
    uniforms.resolution = {.x = static_cast<float>(texture.width()),
                           .y = static_cast<float>(texture.height())};
    uniforms.time = time;

    gpu::RenderCommandEncoder* encoder = commands.renderCommandEncoder(
        {.texture = &texture,
         .loadAction = gpu::LoadAction::clear,
         .storeAction = gpu::StoreAction::store,
         .clearColor = {.red = 0, .green = 0, .blue = 0, .alpha = 1}});
    if (encoder == nullptr) {
        return;
    }
    encoder->setRenderPipelineState(pipeline);
    encoder->setFragmentBytes(bytesOf(uniforms), kUniformsIndex);
    AudioBinding::bindSilence(*encoder, device);
    encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
    encoder->endEncoding();
}

} // namespace vantor
