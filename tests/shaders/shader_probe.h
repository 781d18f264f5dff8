#pragma once
// Draws a shader's picture, or anything that its functions compute, on the machine's GPU and reads
// it back.

#include "platform/gpu.h"
#include "shaders/shader_uniforms.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

/// What a probe draws: `width` × `height` samples, the sample in column i and row j standing for
/// the pixel from + step × (i, j) of a picture of `uniforms.resolution`. Sampled sparsely, a large
/// picture costs what a small one does.
struct ProbeView {
    ShaderUniforms uniforms;
    std::uint32_t width = 160;
    std::uint32_t height = 90;
    Float2 from{.x = 0.5F, .y = 0.5F};
    Float2 step{.x = 1.0F, .y = 1.0F};
};

/// The whole of a picture of that size, every pixel of it.
ProbeView wholePicture(std::uint32_t width, std::uint32_t height, float time);
/// A picture of that size in `width` × `height` samples spread evenly.
ProbeView sparsePicture(Float2 resolution, float time);

class ShaderProbe {
  public:
    /// Draws what f_main returns.
    static ShaderProbe ofPicture(std::string_view source);
    /// Draws what the last of `functions`, `float probe(VOut in, constant Uniforms& u)`, returns.
    /// They stand after the source and may call all of its functions, and its f_main under the name
    /// `picture(in, u)`.
    static ShaderProbe ofNumbers(std::string_view source, std::string_view functions);

    /// Rows of RGBA bytes, as an 8-bit display shows them.
    std::vector<std::uint8_t> pixels(const ProbeView& view) const;
    /// Rows of numbers. Only of a probe made with ofNumbers.
    std::vector<float> numbers(const ProbeView& view) const;

  private:
    ShaderProbe(const std::string& source, gpu::PixelFormat format);
    std::vector<std::uint8_t> draw(const ProbeView& view) const;

    gpu::PixelFormat format_;
    std::shared_ptr<gpu::RenderPipelineState> pipeline_;
};

} // namespace vantor
