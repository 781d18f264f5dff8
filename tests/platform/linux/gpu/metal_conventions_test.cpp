// What a shader in the Metal Shading Language may rely on, pixel by pixel.

#include "shaders/audio_binding.h"
#include "shaders/audio_uniforms.h"
#include "tests/platform/linux/gpu/drawing_test.h"

#include <cstring>

namespace vantor {
namespace {

using MetalConventionsTest = SharedDeviceTest;

TEST_F(MetalConventionsTest, ATargetHoldsBlueGreenRedAlphaUnblended) {
    draw(shader("return float4(1.0, 0.5, 0.25, 0.0);"));
    EXPECT_EQ((std::vector<int>{pixels[0], pixels[1], pixels[2], pixels[3]}),
              (std::vector<int>{64, 128, 255, 0}));
}

TEST_F(MetalConventionsTest, ColoursAreClampedAndRoundedToTheNearestStep) {
    draw(shader("return float4(-3.0, 7.0, 100.4 / 255.0, 100.6 / 255.0);"));
    EXPECT_EQ(at(1, 1), (Pixel{0, 255, 100, 101}));
}

TEST_F(MetalConventionsTest, OnlyDepthsFromZeroToOneAreInside) {
    const std::string whole = "float4(p * 2.0 - 1.0, 0.0, 1.0)";
    const auto covered = [&](const std::string& depth) {
        std::string source = shader("return float4(1.0);");
        source.replace(source.find(whole), whole.size(),
                       "float4(p * 2.0 - 1.0, " + depth + ", 1.0)");
        draw(source);
        return at(1, 1).red == 255;
    };
    EXPECT_TRUE(covered("0.0"));
    EXPECT_TRUE(covered("0.5"));
    EXPECT_TRUE(covered("1.0"));
    EXPECT_FALSE(covered("-0.25"));
    EXPECT_FALSE(covered("1.25"));
}

TEST_F(MetalConventionsTest, ATriangleCoversThePixelsWhoseCentresItHolds) {
    // The lower left half of clip space.
    std::string source = shader("return float4(1.0);");
    const std::string corner = "float2((vid << 1) & 2, vid & 2)";
    source.replace(source.find(corner), corner.size(), "float2(vid & 1, vid >> 1)");
    draw(
        source, [](gpu::RenderCommandEncoder&) {}, 8, 8);
    for (std::size_t y = 0; y < 8; ++y) {
        for (std::size_t x = 0; x < 8; ++x) {
            // Centres on the edge itself belong to either side.
            if (x != y) {
                EXPECT_EQ(at(x, y).red, x < y ? 255 : 0) << x << ", " << y;
            }
        }
    }
}

TEST_F(MetalConventionsTest, APositionHoldsTheReciprocalOfTheClipSpaceW) {
    std::string source = shader("return float4(in.position.z, in.position.w, 0.0, 1.0);");
    const std::string whole = "float4(p * 2.0 - 1.0, 0.0, 1.0)";
    source.replace(source.find(whole), whole.size(), "float4((p * 2.0 - 1.0) * 2.0, 1.2, 2.0)");
    draw(source);
    EXPECT_EQ(at(2, 1), (Pixel{153, 128, 0, 255}));
}

TEST_F(MetalConventionsTest, ReadsBeyondWhatIsBoundGiveZeroAndDoNoHarm) {
    draw(shader("uint far = uint(in.position.x) * 1000000u + 64u;\n"
                "    float4 t = history.read(uint2(far, far));\n"
                "    return float4(data[far] + 0.2, data[3], t.x + 0.4, 1.0);",
                ", constant float* data [[buffer(1)]], texture2d<float> history [[texture(0)]]"),
         [](gpu::RenderCommandEncoder& encoder) {
             encoder.setFragmentBytes(bytesOf({0, 0, 0, 1}), 1);
         });
    for (std::size_t x = 0; x < 4; ++x) {
        EXPECT_EQ(at(x, 0), (Pixel{51, 255, 102, 255})) << x;
    }
}

TEST_F(MetalConventionsTest, AShaderSeesSilenceInItsAudioInputs) {
    std::string source = shader(
        "float sum = 0.0;\n"
        "    for (int i = 0; i < 32; ++i) sum += audio.bands[i];\n"
        "    sum += audio.levels.w + audio.beat + audio.bassTime + audio.levelTime + "
        "audio.midTime;\n"
        "    for (uint y = 0; y < 64; ++y)\n"
        "        for (uint x = 0; x < 32; ++x) sum += history.read(uint2(x, y)).x;\n"
        "    float2 size = float2(history.get_width(), history.get_height());\n"
        "    bool nine = all(audio.beatAges == float4(9.0));\n"
        "    return float4(audio.active + sum + 0.2, nine ? 1.0 : 0.0, size / 255.0);",
        ", constant AudioUniforms& audio [[buffer(1)]], texture2d<float> history [[texture(0)]]");
    source.insert(source.find("struct VOut"), std::string(AudioUniforms::msl) + "\n");
    draw(source, [this](gpu::RenderCommandEncoder& encoder) {
        AudioBinding::bindSilence(encoder, *device);
    });
    EXPECT_EQ(at(0, 0), (Pixel{51, 255, 32, 64}));
}

/// A member after one float, and where its last scalar is found.
struct Member {
    std::string type;
    /// What of the member `m.x` is read.
    std::string read;
    std::size_t offset;
    enum class Scalar { floating, integer } scalar = Scalar::floating;
    std::string array{};
};
std::ostream& operator<<(std::ostream& out, const Member& member) {
    return out << member.type << member.array;
}

class BufferLayoutTest : public SharedDeviceTest, public testing::WithParamInterface<Member> {
  protected:
    /// The bytes of the scalar whose value is 0.6.
    static void put(std::vector<std::uint8_t>& bytes, const Member& member) {
        const auto write = [&](auto value) {
            std::memcpy(bytes.data() + member.offset, &value, sizeof(value));
        };
        if (member.scalar == Member::Scalar::integer) {
            write(std::uint32_t{153});
        } else {
            write(0.6F);
        }
    }
};

TEST_P(BufferLayoutTest, AMemberStandsWhereMetalPutsIt) {
    const Member& member = GetParam();
    const bool isInteger = member.scalar == Member::Scalar::integer;
    std::string source = shader("return float4(float(m." + member.read + ")" +
                                    (isInteger ? " / 255.0" : "") + ", m.last, 0.0, 1.0);",
                                ", constant M& m [[buffer(1)]]");
    source.insert(source.find("struct VOut"), "struct M { float first; " + member.type + " x" +
                                                  member.array + "; float last; };\n");
    // Nothing but that scalar is not zero.
    std::vector<std::uint8_t> bytes(256);
    put(bytes, member);
    draw(source, [&](gpu::RenderCommandEncoder& encoder) { encoder.setFragmentBytes(bytes, 1); });
    ASSERT_FALSE(HasFatalFailure());
    EXPECT_EQ(at(0, 0), (Pixel{153, 0, 0, 255}));
}

using Scalar = Member::Scalar;
INSTANTIATE_TEST_SUITE_P(
    EveryType, BufferLayoutTest,
    testing::Values(Member{"float", "x", 4}, Member{"float2", "x.y", 12},
                    Member{"float3", "x.z", 24}, Member{"float4", "x.w", 28},
                    Member{"packed_float3", "x[2]", 12}, Member{"packed_float2", "x[1]", 8},
                    Member{"float2x2", "x[1].y", 20}, Member{"float3x3", "x[2].z", 56},
                    Member{"float4x4", "x[3].w", 76}, Member{"float2x4", "x[1].w", 44},
                    Member{"float", "x[4]", 20, Scalar::floating, "[5]"},
                    Member{"float3", "x[1].z", 40, Scalar::floating, "[2]"},
                    Member{"int", "x", 4, Scalar::integer},
                    Member{"uint3", "x.z", 24, Scalar::integer}));

} // namespace
} // namespace vantor
