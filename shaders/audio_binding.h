#pragma once
// Binds the audio inputs of a draw. There is no audio source: what is bound is silence.

#include "platform/gpu.h"

#include <cstdint>
#include <memory>

namespace vantor::AudioBinding {

/// Size of the history texture in texels.
inline constexpr std::uint64_t historyWidth = 32;
inline constexpr std::uint64_t historyHeight = 64;

/// Binds silence at fragment buffer 1 and fragment texture 0. `device` is the encoder's; its
/// history texture is made at the first call and shared from then on, without a further
/// allocation. Where it cannot be made nothing is bound as texture, and the next call tries again.
/// Any thread.
void bindSilence(gpu::RenderCommandEncoder& encoder, gpu::Device& device);

/// A new history texture, all zero; null when the device cannot make it. Any thread.
std::shared_ptr<gpu::Texture> makeHistoryTexture(gpu::Device& device);

} // namespace vantor::AudioBinding
