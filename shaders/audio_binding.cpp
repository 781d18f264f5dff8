#include "shaders/audio_binding.h"

#include "shaders/audio_uniforms.h"

#include <array>
#include <map>
#include <mutex>
#include <span>

namespace vantor::AudioBinding {
namespace {

constexpr std::uint32_t kUniformsIndex = 1;
constexpr std::uint32_t kHistoryIndex = 0;
constexpr AudioUniforms kSilence;

struct SilentHistories {
    /// Guards byDevice.
    std::mutex lock;
    std::map<std::uint64_t, std::shared_ptr<gpu::Texture>> byDevice;
};

std::shared_ptr<gpu::Texture> silentHistory(gpu::Device& device) {
    // Never destroyed: its textures must not outlive the platform's own end of the process.
    static SilentHistories& cache = *new SilentHistories;
    const std::uint64_t id = device.registryID();
    const std::lock_guard guard(cache.lock);
    if (const auto known = cache.byDevice.find(id); known != cache.byDevice.end()) {
        return known->second;
    }
    auto made = makeHistoryTexture(device);
    if (made) {
        cache.byDevice.emplace(id, made);
    }
    return made;
}

} // namespace

void bindSilence(gpu::RenderCommandEncoder& encoder, gpu::Device& device) {
    encoder.setFragmentBytes({reinterpret_cast<const std::uint8_t*>(&kSilence), sizeof kSilence},
                             kUniformsIndex);
    encoder.setFragmentTexture(silentHistory(device), kHistoryIndex);
}

std::shared_ptr<gpu::Texture> makeHistoryTexture(gpu::Device& device) {
    auto texture = device.newTexture({.pixelFormat = gpu::PixelFormat::r32Float,
                                      .width = historyWidth,
                                      .height = historyHeight,
                                      .usage = gpu::TextureUsage::shaderRead,
                                      .storageMode = gpu::StorageMode::shared});
    if (texture) {
        const std::array<float, historyWidth * historyHeight> zeros{};
        texture->replaceRegion({.width = historyWidth, .height = historyHeight},
                               {reinterpret_cast<const std::uint8_t*>(zeros.data()), sizeof zeros},
                               historyWidth * sizeof(float));
    }
    return texture;
}

} // namespace vantor::AudioBinding
