#include "platform/linux/gpu/vulkan_device.h"

#include "tests/platform/linux/gpu/drawing_test.h"
#include "tests/support/temporary_folder.h"

#include <array>
#include <cstring>

namespace vantor {
namespace {

using VulkanDeviceTest = SharedDeviceTest;

TEST_F(VulkanDeviceTest, FragmentPositionsStartAtTheUpperLeftWithPixelCentres) {
    draw(shader("return float4(in.position.x / 8.0, in.position.y / 8.0, 0.0, 1.0);"));
    // (0.5, 0.5) / 8 and (3.5, 3.5) / 8 in steps of 255.
    EXPECT_EQ(at(0, 0), (Pixel{16, 16, 0, 255}));
    EXPECT_EQ(at(3, 0), (Pixel{112, 16, 0, 255}));
    EXPECT_EQ(at(0, 3), (Pixel{16, 112, 0, 255}));
}

TEST_F(VulkanDeviceTest, ClipSpaceHasItsYAxisUpwards) {
    // Only the upper half of clip space is covered.
    std::string source = shader("return float4(1.0);");
    const std::string whole = "float4(p * 2.0 - 1.0, 0.0, 1.0)";
    source.replace(source.find(whole), whole.size(), "float4(p.x * 2.0 - 1.0, p.y, 0.0, 1.0)");
    draw(source);
    EXPECT_EQ(at(0, 0), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(at(0, 3), (Pixel{0, 0, 0, 255}));
}

TEST_F(VulkanDeviceTest, WindingDoesNotMatter) {
    std::string source = shader("return float4(0.0, 1.0, 0.0, 1.0);");
    const std::string corner = "float2((vid << 1) & 2, vid & 2)";
    source.replace(source.find(corner), corner.size(), "float2(vid & 2, (vid << 1) & 2)");
    draw(source);
    EXPECT_EQ(at(1, 1), (Pixel{0, 255, 0, 255}));
}

TEST_F(VulkanDeviceTest, InlineBytesReachTheirBufferIndexInMetalsLayout) {
    const std::vector<float> uniforms{4, 4, 0.25F, 0.5F, 1, 0.75F, 0, 1};
    std::vector<float> other(48, 0);
    other[31] = 0.125F;
    other[32] = 0.5F;
    std::string source = shader("return float4(u.time, u.tint.y, other.bands[31], other.levels.x);",
                                ", constant Other& other [[buffer(1)]]");
    source.insert(source.find("struct VOut"),
                  "struct Other { float bands[32]; float4 levels; };\n");
    draw(source, [&](gpu::RenderCommandEncoder& encoder) {
        encoder.setFragmentBytes(bytesOf(uniforms), 0);
        encoder.setFragmentBytes(bytesOf(other), 1);
    });
    EXPECT_EQ(at(2, 2), (Pixel{64, 191, 32, 128}));
}

TEST_F(VulkanDeviceTest, WhatIsNotBoundReadsAsZero) {
    draw(shader("float4 t = history.read(uint2(0, 0));\n"
                "    return float4(u.tint.x + 0.2, t.x + 0.4, t.y + 0.6, 1.0);",
                ", texture2d<float> history [[texture(0)]]"));
    EXPECT_EQ(at(0, 0), (Pixel{51, 102, 153, 255}));
}

TEST_F(VulkanDeviceTest, AFloatTextureIsReadTexelByTexel) {
    const auto texture = device->newTexture({.pixelFormat = gpu::PixelFormat::r32Float,
                                             .width = 2,
                                             .height = 2,
                                             .usage = gpu::TextureUsage::shaderRead});
    ASSERT_NE(texture, nullptr);
    const std::vector<float> texels{0.2F, 0.4F, 0.6F, 0.8F};
    texture->replaceRegion({.width = 2, .height = 2}, bytesOf(texels), 2 * sizeof(float));
    draw(shader("uint2 p = uint2(in.position.xy) / 2;\n"
                "    return float4(history.read(p).x, 0.0, 0.0, 1.0);",
                ", texture2d<float> history [[texture(0)]]"),
         [&](gpu::RenderCommandEncoder& encoder) { encoder.setFragmentTexture(texture, 0); });
    EXPECT_EQ(at(0, 0).red, 51);
    EXPECT_EQ(at(3, 0).red, 102);
    EXPECT_EQ(at(0, 3).red, 153);
    EXPECT_EQ(at(3, 3).red, 204);
}

TEST_F(VulkanDeviceTest, APassClearsToItsColour) {
    target = device->newTexture({.width = 2, .height = 2});
    gpu::CommandBuffer* const commands = queue->commandBuffer();
    ASSERT_NE(commands, nullptr);
    commands
        ->renderCommandEncoder({.texture = target.get(),
                                .clearColor = {.red = 1, .green = 0.5, .blue = 0, .alpha = 1}})
        ->endEncoding();
    commands->commit();
    commands->waitUntilCompleted();
    pixels.assign(16, 0);
    target->getBytes(pixels, 8, {.width = 2, .height = 2});
    EXPECT_EQ(at(1, 1), (Pixel{255, 128, 0, 255}));
}

TEST_F(VulkanDeviceTest, EachDrawKeepsItsOwnInlineBytes) {
    const auto state = pipeline(shader("return float4(u.tint.x, 0.0, 0.0, 1.0);"));
    std::vector<std::shared_ptr<gpu::Texture>> targets;
    for (int i = 0; i < 40; ++i) {
        targets.push_back(device->newTexture({.width = 1, .height = 1}));
        gpu::CommandBuffer* const commands = queue->commandBuffer();
        ASSERT_NE(commands, nullptr);
        auto* const encoder = commands->renderCommandEncoder({.texture = targets.back().get()});
        const std::vector<float> uniforms{0, 0, 0, 0, static_cast<float>(i) / 255.0F, 0, 0, 0};
        encoder->setRenderPipelineState(state);
        encoder->setFragmentBytes(bytesOf(uniforms), 0);
        encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
        encoder->endEncoding();
        commands->commit();
    }
    for (int i = 0; i < 40; ++i) {
        std::array<std::uint8_t, 4> texel{};
        targets[static_cast<std::size_t>(i)]->getBytes(texel, 4, {.width = 1, .height = 1});
        EXPECT_EQ(texel[2], i);
    }
}

TEST_F(VulkanDeviceTest, ASourceThatDoesNotCompileNamesPlaceAndReason) {
    auto library = device->newLibrary("fragment float4 f_main() { return colour; }");
    ASSERT_FALSE(library);
    EXPECT_EQ(library.error().message.find("program_source:1:"), 0U) << library.error().message;
    EXPECT_NE(library.error().message.find("error: "), std::string::npos);
}

TEST_F(VulkanDeviceTest, APipelineNeedsBothFunctionsInTheirStages) {
    auto library = device->newLibrary(shader("return float4(1.0);"));
    ASSERT_TRUE(library);
    const auto vertex = library.value()->newFunction("v_main");
    const auto fragment = library.value()->newFunction("f_main");
    EXPECT_EQ(library.value()->newFunction("main"), nullptr);
    EXPECT_FALSE(
        device->newRenderPipelineState({.vertexFunction = vertex, .fragmentFunction = {}}));
    EXPECT_FALSE(
        device->newRenderPipelineState({.vertexFunction = {}, .fragmentFunction = fragment}));
    EXPECT_FALSE(
        device->newRenderPipelineState({.vertexFunction = fragment, .fragmentFunction = vertex}));
    EXPECT_TRUE(
        device->newRenderPipelineState({.vertexFunction = vertex, .fragmentFunction = fragment}));
}

TEST_F(VulkanDeviceTest, TexturesThatCannotBeAreNull) {
    EXPECT_EQ(device->newTexture({.width = 0, .height = 4}), nullptr);
    EXPECT_EQ(device->newTexture({.width = 4, .height = 1ULL << 40}), nullptr);
    EXPECT_EQ(device->newTexture({.width = 1U << 30, .height = 1}), nullptr);
}

TEST_F(VulkanDeviceTest, TheSystemGivesTheSameDeviceEveryTime) {
    vulkan::VulkanSystem system;
    const auto one = system.createSystemDefaultDevice();
    ASSERT_NE(one, nullptr);
    EXPECT_EQ(system.createSystemDefaultDevice(), one);
    EXPECT_EQ(one->registryID(), device->registryID());
}

TEST_F(VulkanDeviceTest, ANewPipelineIsDrawnWithBeforeAnyoneAsks) {
    const vulkan::Context& context = *device->parts()->context;
    const std::uint64_t before = context.lastPoint();
    const auto state = pipeline(shader("return float4(u.time);"));
    EXPECT_EQ(context.lastPoint(), before + 1);
    EXPECT_TRUE(context.wait(before + 1));
}

TEST_F(VulkanDeviceTest, WhatWasCompiledIsKeptForTheNextRun) {
    const TemporaryFolder folder;
    const auto file = folder.path() / "pipelines.cache";
    {
        auto first = vulkan::VulkanDevice::create({.pipelineCache = file});
        ASSERT_TRUE(first) << first.error();
        device = *std::move(first);
        EXPECT_EQ(device->parts()->pipelineCache->loadedBytes(), 0U);
        pipeline(shader("return float4(u.tint);"));
        device.reset();
    }
    auto second = vulkan::VulkanDevice::create({.pipelineCache = file});
    ASSERT_TRUE(second) << second.error();
    EXPECT_GT(second.value()->parts()->pipelineCache->loadedBytes(), 0U);
}

} // namespace
} // namespace vantor
