#include "shaders/audio_binding.h"
#include "tests/support/fake_gpu.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace vantor {
namespace {

class AudioBindingTest : public testing::Test {
  protected:
    /// The pass of a frame that binds silence and nothing else.
    FakePass bind() {
        gpu::CommandBuffer* commands = queue->commandBuffer();
        gpu::RenderCommandEncoder* encoder =
            commands->renderCommandEncoder({.texture = target.get()});
        AudioBinding::bindSilence(*encoder, *device);
        encoder->endEncoding();
        commands->commit();
        return device->lastPass();
    }

    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
    std::shared_ptr<gpu::CommandQueue> queue = device->newCommandQueue();
    std::shared_ptr<gpu::Texture> target = device->newTexture({.width = 1, .height = 1});
};

TEST_F(AudioBindingTest, TheSilentBlockIsZeroButForTheBeatAges) {
    const FakePass pass = bind();
    ASSERT_EQ(pass.fragmentBytes.at(1).size(), 192U);
    for (std::size_t offset = 0; offset < 192; offset += 4) {
        const bool isBeatAge = offset >= 160 && offset < 176;
        EXPECT_EQ(pass.floatAt(1, offset), isBeatAge ? 9.0F : 0.0F) << "offset " << offset;
    }
}

TEST_F(AudioBindingTest, TwoCallsWithOneDeviceBindTheSameTexture) {
    const FakePass first = bind();
    const FakePass second = bind();
    ASSERT_NE(first.fragmentTextures.at(0), nullptr);
    EXPECT_EQ(first.fragmentTextures.at(0), second.fragmentTextures.at(0));
}

TEST_F(AudioBindingTest, EveryDeviceHasATextureOfItsOwn) {
    const FakePass first = bind();
    device = std::make_shared<FakeDevice>();
    queue = device->newCommandQueue();
    target = device->newTexture({.width = 1, .height = 1});
    EXPECT_NE(bind().fragmentTextures.at(0), first.fragmentTextures.at(0));
}

TEST_F(AudioBindingTest, ATextureThatCannotBeMadeIsBoundAsAbsentAndTriedAgain) {
    device->refusesTextures = true;
    EXPECT_EQ(bind().fragmentTextures.at(0), nullptr);
    device->refusesTextures = false;
    EXPECT_NE(bind().fragmentTextures.at(0), nullptr);
}

TEST_F(AudioBindingTest, TheHistoryTextureHoldsZeros) {
    const auto history = AudioBinding::makeHistoryTexture(*device);
    ASSERT_NE(history, nullptr);
    auto& texture = dynamic_cast<FakeTexture&>(*history);
    EXPECT_EQ(texture.width(), 32U);
    EXPECT_EQ(texture.height(), 64U);
    EXPECT_EQ(texture.pixelFormat(), gpu::PixelFormat::r32Float);
    EXPECT_EQ(texture.descriptor().usage, gpu::TextureUsage::shaderRead);
    EXPECT_EQ(texture.descriptor().storageMode, gpu::StorageMode::shared);
    EXPECT_TRUE(std::all_of(texture.texels().begin(), texture.texels().end(),
                            [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(AudioBindingTest, ADeviceWithoutTexturesHasNoHistory) {
    device->refusesTextures = true;
    EXPECT_EQ(AudioBinding::makeHistoryTexture(*device), nullptr);
}

} // namespace
} // namespace vantor
