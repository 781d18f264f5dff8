#include "platform/linux/gpu/pipeline_needs.h"

namespace vantor::vulkan {
namespace {

/// What is bound where nothing was given is one picture of zeros, which stands for 2d textures of
/// floats and for no others.
bool isBindable(const msl::TextureBinding& texture) {
    return texture.shape == msl::TextureShape::texture2d && !texture.depth && !texture.writable &&
           texture.component == msl::TextureComponent::floatComponent;
}

} // namespace

std::optional<std::string> unmetNeed(const DeviceAbilities& abilities, const msl::Module& module,
                                     const msl::EntryPoint& entry) {
    if (module.usesInt64 && !abilities.int64) {
        return "the device has no 64-bit integers";
    }
    if (module.usesSubgroups && !abilities.subgroups) {
        return "the device has no functions across SIMD groups";
    }
    if (!entry.arguments.empty()) {
        return "function '" + entry.name +
               "' takes an argument buffer, which no wallpaper is given";
    }
    for (const msl::BufferBinding& buffer : entry.buffers) {
        if (buffer.writable) {
            return "function '" + entry.name + "' writes to buffer " +
                   std::to_string(buffer.index) + "; what a wallpaper is given is for reading";
        }
    }
    for (const msl::TextureBinding& texture : entry.textures) {
        if (!isBindable(texture)) {
            return "function '" + entry.name + "' takes texture " + std::to_string(texture.index) +
                   ", which is none that is sampled in two dimensions and gives floats; no other "
                   "is given to a wallpaper";
        }
    }
    return std::nullopt;
}

} // namespace vantor::vulkan
