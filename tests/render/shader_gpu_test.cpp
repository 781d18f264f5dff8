#include "render/shader_gpu.h"
#include "tests/support/fake_platform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class ShaderGPUTest : public FakePlatformTest {
  protected:
    FakeDevice& device() { return *platform.gpu().device; }
    std::filesystem::path picture() { return platform.bundle().home / "picture.png"; }
    bool render(const Size& size = {.width = 4, .height = 2}, float time = 12) {
        return shaderGPU.renderPNG("plasma", kFakeShader, uniforms, size, time, picture());
    }

    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    ShaderUniforms uniforms;
};

TEST_F(ShaderGPUTest, APipelineJoinsTheTwoEntryPointsForTheLayersFormat) {
    const auto pipeline = shaderGPU.pipeline("plasma", kFakeShader);
    ASSERT_NE(pipeline, nullptr);
    const auto& made = dynamic_cast<const FakePipeline&>(*pipeline);
    EXPECT_EQ(made.vertexName, "v_main");
    EXPECT_EQ(made.fragmentName, "f_main");
    EXPECT_EQ(made.colorPixelFormat, gpu::PixelFormat::bgra8Unorm);
    EXPECT_THAT(log(), ElementsAre());
}

TEST_F(ShaderGPUTest, AKeyStandsForItsFirstSource) {
    const auto first = shaderGPU.pipeline("plasma", kFakeShader);
    EXPECT_EQ(shaderGPU.pipeline("plasma", "#error"), first);
    EXPECT_THAT(device().compiledSources, ElementsAre(kFakeShader));
    EXPECT_NE(shaderGPU.pipeline("aurora", kFakeShader), first);
}

TEST_F(ShaderGPUTest, ASourceThatDoesNotCompileIsLoggedAndTriedAgain) {
    EXPECT_EQ(shaderGPU.pipeline("plasma", "#error"), nullptr);
    EXPECT_EQ(shaderGPU.pipeline("plasma", "#error"), nullptr);
    EXPECT_EQ(logged("shader plasma failed to compile: program_source:1:2: error: the source asks "
                     "for it"),
              2U);
    EXPECT_NE(shaderGPU.pipeline("plasma", kFakeShader), nullptr) << "a failure is not kept";
}

TEST_F(ShaderGPUTest, ASourceWithoutAnEntryPointFailsAndIsLogged) {
    EXPECT_EQ(shaderGPU.pipeline("no-vertex", "fragment f_main"), nullptr);
    EXPECT_EQ(shaderGPU.pipeline("no-fragment", "vertex v_main"), nullptr);
    EXPECT_THAT(log(), ElementsAre(StartsWith("shader no-vertex failed to compile: "),
                                   StartsWith("shader no-fragment failed to compile: ")));
}

TEST_F(ShaderGPUTest, WithoutADeviceThereIsNothingAndNothingIsLogged) {
    platform.gpu().device = nullptr;
    ShaderGPU without(platform.gpu(), platform.images());
    EXPECT_EQ(without.device(), nullptr);
    EXPECT_EQ(without.queue(), nullptr);
    EXPECT_EQ(without.pipeline("plasma", kFakeShader), nullptr);
    EXPECT_FALSE(without.renderPNG("plasma", kFakeShader, uniforms, {.width = 1, .height = 1}, 0,
                                   picture()));
    EXPECT_THAT(log(), ElementsAre());
}

TEST_F(ShaderGPUTest, APictureIsDrawnWithOneTriangleOverOpaqueBlack) {
    ASSERT_TRUE(render());
    const FakePass& pass = device().lastPass();
    EXPECT_EQ(pass.loadAction, gpu::LoadAction::clear);
    EXPECT_EQ(pass.storeAction, gpu::StoreAction::store);
    EXPECT_EQ(pass.clearColor, (Color{.red = 0, .green = 0, .blue = 0, .alpha = 1}));
    EXPECT_EQ(pass.pipeline, shaderGPU.pipeline("plasma", kFakeShader));
    ASSERT_EQ(pass.draws.size(), 1U);
    EXPECT_EQ(pass.draws[0].type, gpu::PrimitiveType::triangle);
    EXPECT_EQ(pass.draws[0].vertexStart, 0U);
    EXPECT_EQ(pass.draws[0].vertexCount, 3U);
    EXPECT_EQ(pass.fragmentBytes.at(1).size(), 192U);
    EXPECT_NE(pass.fragmentTextures.at(0), nullptr);
    EXPECT_TRUE(device().submissions.back().waitedFor);
}

TEST_F(ShaderGPUTest, APicturesSizeIsTruncatedAndTheShaderSeesIt) {
    uniforms = ShaderUniforms({.x = 7, .y = 8}, 99);
    uniforms.speed = 0.5F;
    uniforms.custom7.w = 3;
    ASSERT_TRUE(render({.width = 640.9, .height = 360.2}, 12.5F));

    const auto& descriptor = device().madeTextures.front();
    EXPECT_EQ(descriptor.width, 640U);
    EXPECT_EQ(descriptor.height, 360U);
    EXPECT_EQ(descriptor.pixelFormat, gpu::PixelFormat::bgra8Unorm);
    EXPECT_EQ(descriptor.usage, gpu::TextureUsage::renderTarget);
    EXPECT_EQ(descriptor.storageMode, gpu::StorageMode::shared);
    ASSERT_EQ(platform.images().written.size(), 1U);
    EXPECT_EQ(platform.images().written[0].width, 640U);
    EXPECT_EQ(platform.images().written[0].height, 360U);

    ShaderUniforms expected = uniforms;
    expected.resolution = {.x = 640, .y = 360};
    expected.time = 12.5F;
    const auto& bytes = device().lastPass().fragmentBytes.at(0);
    ASSERT_EQ(bytes.size(), 240U);
    EXPECT_EQ(std::memcmp(bytes.data(), &expected, sizeof expected), 0);
    EXPECT_EQ(uniforms.time, 99) << "the caller's block is untouched";
}

TEST_F(ShaderGPUTest, ThePictureHoldsWhatWasDrawn) {
    device().shade = [](const FakePass&, FakeTexture& texture) { texture.texels()[4] = 200; };
    ASSERT_TRUE(render({.width = 2, .height = 2}));
    const auto& written = platform.images().written.at(0);
    EXPECT_EQ(written.file, picture());
    EXPECT_THAT(written.bytes,
                ElementsAre(0, 0, 0, 255, 200, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255));
}

TEST_F(ShaderGPUTest, WithoutAnEncoderThePictureIsStillWritten) {
    device().refusesEncoders = true;
    EXPECT_TRUE(render());
    EXPECT_TRUE(device().submissions.back().passes.empty());
    EXPECT_TRUE(device().submissions.back().waitedFor);
    EXPECT_EQ(platform.images().written.size(), 1U);
}

TEST_F(ShaderGPUTest, AnyOtherStepThatFailsGivesNoPictureAndNoLine) {
    platform.gpu().device->refusesQueues = true;
    ShaderGPU withoutQueue(platform.gpu(), platform.images());
    EXPECT_FALSE(withoutQueue.renderPNG("plasma", kFakeShader, uniforms, {.width = 1, .height = 1},
                                        0, picture()));
    device().refusesTextures = true;
    EXPECT_FALSE(render());
    device().refusesTextures = false;
    device().refusesCommandBuffers = true;
    EXPECT_FALSE(render());
    device().refusesCommandBuffers = false;
    for (const Size size : {Size{.width = 0, .height = 2}, Size{.width = 2, .height = 0.9},
                            Size{.width = -4, .height = 2}, Size{.width = 1e6, .height = 2}}) {
        EXPECT_FALSE(render(size));
    }
    EXPECT_TRUE(platform.images().written.empty());
    platform.images().refusesWriting = true;
    EXPECT_FALSE(render());
    EXPECT_THAT(log(), ElementsAre());
}

TEST_F(ShaderGPUTest, APictureIsReplacedButNoFolderIsMade) {
    ASSERT_TRUE(render({.width = 4, .height = 2}));
    ASSERT_TRUE(render({.width = 6, .height = 3}));
    EXPECT_EQ(platform.images().read(picture())->width(), 6U);
    const auto missing = platform.bundle().home / "missing" / "picture.png";
    EXPECT_FALSE(shaderGPU.renderPNG("plasma", kFakeShader, uniforms, {.width = 1, .height = 1}, 0,
                                     missing));
    EXPECT_FALSE(std::filesystem::exists(missing.parent_path()));
}

using ShaderGPUDeathTest = ShaderGPUTest;

TEST_F(ShaderGPUDeathTest, APictureWithoutAFiniteSizeStopsTheProcess) {
    EXPECT_DEATH(render({.width = std::numeric_limits<double>::quiet_NaN(), .height = 1}),
                 "picture's width");
    EXPECT_DEATH(render({.width = 1, .height = std::numeric_limits<double>::infinity()}),
                 "picture's height");
}

} // namespace
} // namespace vantor
