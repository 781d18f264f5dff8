#include "platform/gpu.h"
#include "tests/platform/contract/contract_subject.h"

#include <algorithm>
#include <vector>

namespace vantor {
namespace {

/// Fills the target with what fragment buffer 0 holds.
constexpr std::string_view kSource = R"(#include <metal_stdlib>
using namespace metal;
struct VOut { float4 position [[position]]; };
vertex VOut v_main(uint vid [[vertex_id]]) {
    float2 p = float2((vid << 1) & 2, vid & 2);
    VOut out;
    out.position = float4(p * 2.0 - 1.0, 0.0, 1.0);
    return out;
}
fragment float4 f_main(VOut in [[stage_in]], constant float4& color [[buffer(0)]]) {
    return color;
}
)";

class GPUContract : public Contract {
  protected:
    void SetUp() override {
        device = platform.gpu().createSystemDefaultDevice();
        ASSERT_NE(device, nullptr);
        queue = device->newCommandQueue();
        ASSERT_NE(queue, nullptr);
        target = device->newTexture({.width = kSide, .height = kSide});
        ASSERT_NE(target, nullptr);
    }
    /// A program does not end while its GPU works: what was begun before is done after this pass.
    void TearDown() override {
        if (target) {
            clear(0);
        }
    }
    void clear(double red) {
        gpu::CommandBuffer* commands = queue->commandBuffer();
        ASSERT_NE(commands, nullptr);
        auto* encoder = commands->renderCommandEncoder(
            {.texture = target.get(),
             .clearColor = {.red = red, .green = 0, .blue = 1, .alpha = 1}});
        ASSERT_NE(encoder, nullptr);
        encoder->endEncoding();
        commands->commit();
        commands->waitUntilCompleted();
    }
    std::vector<std::uint8_t> texels() const {
        std::vector<std::uint8_t> bytes(kSide * kSide * 4);
        target->getBytes(bytes, kSide * 4, {.width = kSide, .height = kSide});
        return bytes;
    }
    /// Every texel has these bytes.
    static std::vector<std::uint8_t> filled(std::uint8_t blue, std::uint8_t green,
                                            std::uint8_t red) {
        std::vector<std::uint8_t> bytes;
        for (std::size_t i = 0; i < kSide * kSide; ++i) {
            bytes.insert(bytes.end(), {blue, green, red, 255});
        }
        return bytes;
    }

    static constexpr std::uint64_t kSide = 4;
    std::shared_ptr<gpu::Device> device;
    std::shared_ptr<gpu::CommandQueue> queue;
    std::shared_ptr<gpu::Texture> target;
};
VANTOR_CONTRACT(GPUContract);

TEST_P(GPUContract, TheDefaultDeviceIsTheSameForEveryCall) {
    EXPECT_EQ(platform.gpu().createSystemDefaultDevice(), device);
    EXPECT_EQ(platform.gpu().createSystemDefaultDevice()->registryID(), device->registryID());
}

TEST_P(GPUContract, ATextureGivesBackWhatWasCopiedIn) {
    const auto texture = device->newTexture({.pixelFormat = gpu::PixelFormat::r32Float,
                                             .width = kSide,
                                             .height = 2,
                                             .usage = gpu::TextureUsage::shaderRead});
    ASSERT_NE(texture, nullptr);
    EXPECT_EQ(texture->width(), kSide);
    EXPECT_EQ(texture->height(), 2U);
    EXPECT_EQ(texture->pixelFormat(), gpu::PixelFormat::r32Float);
    std::vector<std::uint8_t> in(kSide * 2 * 4);
    std::ranges::generate(in, [value = std::uint8_t{0}]() mutable { return value += 3; });
    texture->replaceRegion({.width = kSide, .height = 2}, in, kSide * 4);
    std::vector<std::uint8_t> out(in.size());
    texture->getBytes(out, kSide * 4, {.width = kSide, .height = 2});
    EXPECT_EQ(out, in);
}

TEST_P(GPUContract, ATextureWithoutTexelsOrTooLargeIsNotMade) {
    EXPECT_EQ(device->newTexture({.width = 0, .height = 4}), nullptr);
    EXPECT_EQ(device->newTexture({.width = 4, .height = 0}), nullptr);
    EXPECT_EQ(device->newTexture({.width = std::uint64_t{1} << 32, .height = 4}), nullptr);
}

TEST_P(GPUContract, APassClearsItsTarget) {
    for (const bool red : {false, true, false}) {
        clear(red ? 1 : 0);
        EXPECT_EQ(texels(), filled(255, 0, red ? 255 : 0));
    }
}

TEST_P(GPUContract, ASourceWithAMistakeIsAnErrorThatSaysWhere) {
    const auto library = device->newLibrary("#error broken\n");
    ASSERT_FALSE(library);
    EXPECT_NE(library.error().message.find("program_source:1:"), std::string::npos)
        << library.error().message;
}

TEST_P(GPUContract, AnEntryPointThatTheSourceDoesNotHaveIsNothing) {
    auto library = device->newLibrary(kSource);
    ASSERT_TRUE(library) << library.error().message;
    EXPECT_NE(library.value()->newFunction("v_main"), nullptr);
    EXPECT_EQ(library.value()->newFunction("f_other"), nullptr);
}

TEST_P(GPUContract, APipelineHasBothFunctions) {
    auto library = device->newLibrary(kSource);
    ASSERT_TRUE(library) << library.error().message;
    const auto vertex = library.value()->newFunction("v_main");
    const auto fragment = library.value()->newFunction("f_main");
    EXPECT_FALSE(
        device->newRenderPipelineState({.vertexFunction = vertex, .fragmentFunction = nullptr}));
    EXPECT_FALSE(
        device->newRenderPipelineState({.vertexFunction = nullptr, .fragmentFunction = fragment}));
    EXPECT_TRUE(
        device->newRenderPipelineState({.vertexFunction = vertex, .fragmentFunction = fragment}));
}

TEST_P(GPUContract, ATriangleOverTheTargetDrawsWhatTheShaderSays) {
    if (!GetParam().draws) {
        GTEST_SKIP() << "this GPU records";
    }
    auto library = device->newLibrary(kSource);
    ASSERT_TRUE(library) << library.error().message;
    auto pipeline = device->newRenderPipelineState(
        {.vertexFunction = library.value()->newFunction("v_main"),
         .fragmentFunction = library.value()->newFunction("f_main")});
    ASSERT_TRUE(pipeline) << pipeline.error().message;
    gpu::CommandBuffer* commands = queue->commandBuffer();
    ASSERT_NE(commands, nullptr);
    auto* encoder = commands->renderCommandEncoder({.texture = target.get()});
    ASSERT_NE(encoder, nullptr);
    encoder->setRenderPipelineState(pipeline.value());
    const float color[] = {1, 0, 1, 1};
    encoder->setFragmentBytes({reinterpret_cast<const std::uint8_t*>(color), sizeof color}, 0);
    encoder->setFragmentTexture(nullptr, 0);
    encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
    encoder->endEncoding();
    commands->commit();
    commands->waitUntilCompleted();
    EXPECT_EQ(texels(), filled(255, 0, 255));
}

} // namespace
} // namespace vantor
