#include "platform/linux/gpu/device_parts.h"

#include "tests/platform/linux/gpu/drawing_test.h"
#include "tests/support/losable_gpu.h"

#include <gmock/gmock.h>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class LostDeviceTest : public DrawingTest {
  protected:
    void SetUp() override {
        auto made = vulkan::VulkanDevice::create(
            {.pipelineCache = {},
             .report = [this](const std::string& sentence) { reports.push_back(sentence); },
             .recoveryInterval = std::chrono::milliseconds(0),
             .calls = LosableGPU::calls()});
        ASSERT_TRUE(made) << made.error();
        device = *std::move(made);
        queue = device->newCommandQueue();
        state = pipeline(shader("return float4(u.tint.x, history.read(uint2(1, 0)).x, 0.0, 1.0);",
                                ", texture2d<float> history [[texture(0)]]"));
        history = device->newTexture({.pixelFormat = gpu::PixelFormat::r32Float,
                                      .width = 2,
                                      .height = 1,
                                      .usage = gpu::TextureUsage::shaderRead});
        history->replaceRegion({.width = 2, .height = 1}, bytesOf({0.25F, 0.5F}), 8);
    }

    /// A new target's only pixel, drawn with the pipeline and the texture that were made first.
    Pixel pixel() {
        target = device->newTexture({.width = 1, .height = 1});
        gpu::CommandBuffer* const commands = target ? queue->commandBuffer() : nullptr;
        if (commands == nullptr) {
            return {-1, -1, -1, -1};
        }
        if (auto* const encoder = commands->renderCommandEncoder({.texture = target.get()})) {
            encoder->setRenderPipelineState(state);
            encoder->setFragmentBytes(bytesOf({0, 0, 0, 0, 1, 0, 0, 0}), 0);
            encoder->setFragmentTexture(history, 0);
            encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
            encoder->endEncoding();
        }
        commands->commit();
        commands->waitUntilCompleted();
        pixels.assign(4, 0x55);
        target->getBytes(pixels, 4, {.width = 1, .height = 1});
        return at(0, 0);
    }
    static constexpr Pixel kDrawn{255, 128, 0, 255};
    static constexpr Pixel kNoBuffer{-1, -1, -1, -1};
    static constexpr Pixel kUntouched{0x55, 0x55, 0x55, 0x55};

    LosableGPU gpu;
    std::vector<std::string> reports;
    std::shared_ptr<gpu::RenderPipelineState> state;
    std::shared_ptr<gpu::Texture> history;
};

TEST_F(LostDeviceTest, ALostDeviceIsReplacedUnderPipelinesAndTextures) {
    ASSERT_EQ(pixel(), kDrawn);
    const std::uint64_t identity = device->registryID();
    gpu.lose();
    EXPECT_EQ(pixel(), kUntouched);
    EXPECT_EQ(pixel(), kDrawn);
    EXPECT_EQ(pixel(), kDrawn);
    EXPECT_EQ(device->registryID(), identity);
    EXPECT_THAT(reports, ElementsAre(HasSubstr("is lost"), HasSubstr("takes over")));
}

TEST_F(LostDeviceTest, ADeviceCanBeLostAgain) {
    for (int i = 0; i < 3; ++i) {
        gpu.lose();
        EXPECT_EQ(pixel(), kUntouched);
        EXPECT_EQ(pixel(), kDrawn);
    }
    EXPECT_EQ(reports.size(), 6U);
}

TEST_F(LostDeviceTest, WithoutAReplacementNothingIsMadeUntilThereIsOne) {
    gpu.lose();
    gpu.setReplaceable(false);
    EXPECT_EQ(pixel(), kUntouched);
    EXPECT_EQ(pixel(), kNoBuffer);
    EXPECT_EQ(queue->commandBuffer(), nullptr);
    EXPECT_EQ(device->newTexture({.width = 1, .height = 1}), nullptr);
    EXPECT_EQ(device->newSharedTexture(1, 1), nullptr);
    auto library = device->newLibrary(shader("return float4(1.0);"));
    ASSERT_TRUE(library);
    EXPECT_FALSE(device->newRenderPipelineState(
        {.vertexFunction = library.value()->newFunction("v_main"),
         .fragmentFunction = library.value()->newFunction("f_main")}));
    EXPECT_THAT(reports, ElementsAre(HasSubstr("is lost"), HasSubstr("no GPU takes over")));
    gpu.setReplaceable(true);
    EXPECT_EQ(pixel(), kDrawn);
    EXPECT_THAT(reports.back(), HasSubstr("takes over"));
}

TEST_F(LostDeviceTest, APassIntoWhatWentWithTheDeviceIsSkipped) {
    const auto old = device->newTexture({.width = 1, .height = 1});
    gpu.lose();
    EXPECT_EQ(pixel(), kUntouched);
    gpu::CommandBuffer* const commands = queue->commandBuffer();
    ASSERT_NE(commands, nullptr);
    EXPECT_EQ(commands->renderCommandEncoder({.texture = old.get()}), nullptr);
    commands->commit();
    commands->waitUntilCompleted();
}

TEST_F(LostDeviceTest, OneThatIsLostOverAndOverIsNotReplacedOverAndOver) {
    auto made = vulkan::VulkanDevice::create(
        {.report = [this](const std::string& sentence) { reports.push_back(sentence); },
         .recoveryInterval = std::chrono::hours(1),
         .calls = LosableGPU::calls()});
    ASSERT_TRUE(made) << made.error();
    device = *std::move(made);
    queue = device->newCommandQueue();
    gpu.lose();
    EXPECT_EQ(pixel(), kUntouched);
    EXPECT_EQ(pixel(), kDrawn);
    gpu.lose();
    EXPECT_EQ(pixel(), kUntouched);
    EXPECT_EQ(pixel(), kNoBuffer);
}

} // namespace
} // namespace vantor
