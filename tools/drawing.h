#pragma once
// Pictures of shaders, drawn into files.

#include "platform/geometry.h"
#include "platform/result.h"
#include "render/shader_gpu.h"
#include "tools/shader_argument.h"

#include <filesystem>
#include <string>

namespace vantor {

struct Frame {
    ShaderUniforms look;
    Size size;
    /// Seconds.
    float time = 0;
};

/// Draws one frame into a PNG file, replacing what is there. The error is a sentence, or the
/// compiler's whole text.
Result<Done, std::string> drawPNG(ShaderGPU& gpu, const NamedShader& shader, const Frame& frame,
                                  const std::filesystem::path& file);

} // namespace vantor
