#pragma once
// The GPU context that all wallpapers share: the device, its queue, and every compiled pipeline.
// Main thread only.

#include "platform/gpu.h"
#include "platform/images.h"
#include "shaders/shader_uniforms.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace vantor {

class ShaderGPU {
  public:
    /// The one of the process, on the installed platform; made on first use, never destroyed.
    static ShaderGPU& shared();

    /// `images` must outlive this.
    ShaderGPU(gpu::System& system, Images& images);
    ShaderGPU(const ShaderGPU&) = delete;
    ShaderGPU& operator=(const ShaderGPU&) = delete;

    /// Null on a system without a GPU; there is then no queue either.
    const std::shared_ptr<gpu::Device>& device() const { return device_; }
    const std::shared_ptr<gpu::CommandQueue>& queue() const { return queue_; }

    /// The pipeline of that key, compiled from `source` on the first successful call and kept for
    /// good; a key that is known stands for its first source. Null without a device, or, with a
    /// line in the log each time, for a source that does not compile.
    std::shared_ptr<gpu::RenderPipelineState> pipeline(std::string_view id,
                                                       std::string_view source);

    /// Draws one frame and writes it as a PNG file, replacing what is there; true when it was
    /// written. Waits for the GPU. `size` is in pixels, truncated towards zero: it must be finite
    /// and in the range of 64-bit integers. Resolution and time of `uniforms` are overwritten.
    bool renderPNG(std::string_view id, std::string_view source, const ShaderUniforms& uniforms,
                   const Size& size, float time, const std::filesystem::path& to);

  private:
    Images& images_;
    const std::shared_ptr<gpu::Device> device_;
    const std::shared_ptr<gpu::CommandQueue> queue_;
    std::map<std::string, std::shared_ptr<gpu::RenderPipelineState>, std::less<>> pipelines_;
};

} // namespace vantor
