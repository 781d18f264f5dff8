#pragma once
// The audio inputs of a shader: fragment buffer 1. Nothing here listens; what is bound is silence.

#include "shaders/float_vector.h"

#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

namespace vantor {

/// Fragment buffer 1, byte for byte: 180 bytes of fields, padded to the stride of 192 that their
/// 16-byte alignment asks for. The defaults are silence.
struct alignas(16) AudioUniforms {
    /// Number of spectrum bands.
    static constexpr int bandCount = 32;

    std::array<float, bandCount> bands{}; ///< Level of each band, lowest first.
    Float4 levels;                        ///< x bass, y mid, z treble, w overall level.
    float beat = 0.0F;
    float bassTime = 0.0F;                   ///< Time that runs with the bass.
    float levelTime = 0.0F;                  ///< Time that runs with the overall level.
    float midTime = 0.0F;                    ///< Time that runs with the mid range.
    Float4 beatAges{9.0F, 9.0F, 9.0F, 9.0F}; ///< Ages of the last four beats in seconds.
    float active = 0.0F;                     ///< 1 when audio is live, 0 when silent.
    std::array<float, 3> padding{};          ///< Makes the tail's bytes zero when bound raw.

    /// The block's declaration for inclusion in a shader's source, without a line feed at its end.
    static const std::string_view msl;

    bool operator==(const AudioUniforms&) const = default;
};

static_assert(std::is_trivially_copyable_v<AudioUniforms>);
static_assert(std::is_standard_layout_v<AudioUniforms>);
static_assert(sizeof(AudioUniforms) == 192);
static_assert(alignof(AudioUniforms) == 16);
static_assert(offsetof(AudioUniforms, bands) == 0);
static_assert(offsetof(AudioUniforms, levels) == 128);
static_assert(offsetof(AudioUniforms, beat) == 144);
static_assert(offsetof(AudioUniforms, bassTime) == 148);
static_assert(offsetof(AudioUniforms, levelTime) == 152);
static_assert(offsetof(AudioUniforms, midTime) == 156);
static_assert(offsetof(AudioUniforms, beatAges) == 160);
static_assert(offsetof(AudioUniforms, active) == 176);
static_assert(offsetof(AudioUniforms, padding) == 180);

} // namespace vantor
