#include "render/shader_gpu.h"

#include "log/ls_log.h"
#include "platform/platform.h"
#include "render/checked_integer.h"
#include "render/shader_frame.h"

#include <vector>

namespace vantor {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

Result<std::shared_ptr<gpu::RenderPipelineState>> compile(gpu::Device& device,
                                                          std::string_view source) {
    auto library = device.newLibrary(source);
    if (!library) {
        return Failure{library.error()};
    }
    // An entry point that is missing stays unset, and the pipeline says so.
    return device.newRenderPipelineState({.vertexFunction = (*library)->newFunction("v_main"),
                                          .fragmentFunction = (*library)->newFunction("f_main"),
                                          .colorPixelFormat = gpu::PixelFormat::bgra8Unorm});
}

/// A texture's side; what is no size gives 0, which no device makes.
std::uint64_t side(double pixels, const char* what) {
    const std::int64_t whole = truncatedInteger(pixels, what);
    return whole > 0 ? static_cast<std::uint64_t>(whole) : 0;
}

} // namespace

ShaderGPU& ShaderGPU::shared() {
    static ShaderGPU& instance = *new ShaderGPU(platform().gpu(), platform().images());
    return instance;
}

ShaderGPU::ShaderGPU(gpu::System& system, Images& images)
    : images_(images), device_(system.createSystemDefaultDevice()),
      queue_(device_ ? device_->newCommandQueue() : nullptr) {}

std::shared_ptr<gpu::RenderPipelineState> ShaderGPU::pipeline(std::string_view id,
                                                              std::string_view source) {
    if (const auto known = pipelines_.find(id); known != pipelines_.end()) {
        return known->second;
    }
    if (!device_) {
        return nullptr;
    }
    auto compiled = compile(*device_, source);
    if (!compiled) {
        LSLog::write("shader " + std::string(id) +
                     " failed to compile: " + compiled.error().message);
        return nullptr;
    }
    return pipelines_.emplace(id, *std::move(compiled)).first->second;
}

bool ShaderGPU::renderPNG(std::string_view id, std::string_view source,
                          const ShaderUniforms& uniforms, const Size& size, float time,
                          const std::filesystem::path& to) {
    if (!device_ || !queue_) {
        return false;
    }
    const auto state = pipeline(id, source);
    if (!state) {
        return false;
    }
    const std::uint64_t width = side(size.width, "a picture's width");
    const std::uint64_t height = side(size.height, "a picture's height");
    const auto texture = device_->newTexture({.pixelFormat = gpu::PixelFormat::bgra8Unorm,
                                              .width = width,
                                              .height = height,
                                              .usage = gpu::TextureUsage::renderTarget,
                                              .storageMode = gpu::StorageMode::shared});
    if (!texture) {
        return false;
    }
    gpu::CommandBuffer* commands = queue_->commandBuffer();
    if (commands == nullptr) {
        return false;
    }
    encodeShaderFrame(*commands, *device_, state, *texture, uniforms, time);
    commands->commit();
    commands->waitUntilCompleted();

    const std::size_t bytesPerRow = checkedProduct(width, kBytesPerPixel, "a picture's row");
    std::vector<std::uint8_t> pixels(checkedProduct(bytesPerRow, height, "a picture"));
    texture->getBytes(pixels, bytesPerRow, {.width = width, .height = height});
    return images_.writePNG(
        to, {.bytes = pixels, .width = width, .height = height, .bytesPerRow = bytesPerRow});
}

} // namespace vantor
