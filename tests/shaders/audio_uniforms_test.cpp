#include "shaders/audio_uniforms.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>

namespace vantor {
namespace {

TEST(AudioUniforms, DefaultsAreSilence) {
    const AudioUniforms audio;
    for (const float band : audio.bands) {
        EXPECT_EQ(band, 0.0F);
    }
    EXPECT_EQ(audio.levels, Float4{});
    EXPECT_EQ(audio.beat, 0.0F);
    EXPECT_EQ(audio.bassTime, 0.0F);
    EXPECT_EQ(audio.levelTime, 0.0F);
    EXPECT_EQ(audio.midTime, 0.0F);
    EXPECT_EQ(audio.beatAges, (Float4{9.0F, 9.0F, 9.0F, 9.0F}));
    EXPECT_EQ(audio.active, 0.0F);
}

TEST(AudioUniforms, SilentBytesAreZeroButForTheFourBeatAges) {
    const AudioUniforms audio;
    std::array<float, 48> floats{};
    static_assert(sizeof(floats) == sizeof(audio));
    std::memcpy(floats.data(), &audio, sizeof(audio));
    for (std::size_t i = 0; i < floats.size(); ++i) {
        EXPECT_EQ(floats[i], i >= 40 && i < 44 ? 9.0F : 0.0F) << i;
    }
}

TEST(AudioUniforms, HasThirtyTwoBands) { EXPECT_EQ(AudioUniforms::bandCount, 32); }

TEST(AudioUniforms, DeclarationForShadersIsTheAgreedText) {
    EXPECT_EQ(AudioUniforms::msl.size(), 227U);
    EXPECT_EQ(AudioUniforms::msl,
              "struct AudioUniforms {\n    float  bands[32];\n    float4 levels;      // x bass, y "
              "mid, z treble, w level\n    float  beat;\n    float  bassTime;\n    float  "
              "levelTime;\n    float  midTime;\n    float4 beatAges;\n    float  active;\n};");
}

} // namespace
} // namespace vantor
