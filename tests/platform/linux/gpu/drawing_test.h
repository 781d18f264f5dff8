#pragma once
// Draws pictures of a few pixels on a real device, whose values follow from the shader.

#include "platform/linux/gpu/vulkan_device.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <vector>

namespace vantor {

/// A unit with the full-screen triangle and this fragment function's body; `u` is fragment buffer
/// 0.
inline std::string shader(const std::string& body, const std::string& parameters = "") {
    return "#include <metal_stdlib>\n"
           "using namespace metal;\n"
           "struct Uniforms { float2 resolution; float time; float speed; float4 tint; };\n"
           "struct VOut { float4 position [[position]]; };\n"
           "vertex VOut v_main(uint vid [[vertex_id]]) {\n"
           "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
           "    VOut out;\n"
           "    out.position = float4(p * 2.0 - 1.0, 0.0, 1.0);\n"
           "    return out;\n"
           "}\n"
           "fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]" +
           parameters + ") {\n    " + body + "\n}\n";
}

struct Pixel {
    int red;
    int green;
    int blue;
    int alpha;
    bool operator==(const Pixel&) const = default;
};
inline std::ostream& operator<<(std::ostream& out, const Pixel& pixel) {
    return out << "(" << pixel.red << ", " << pixel.green << ", " << pixel.blue << ", "
               << pixel.alpha << ")";
}

class DrawingTest : public testing::Test {
  protected:
    std::shared_ptr<gpu::RenderPipelineState> pipeline(const std::string& source) {
        auto library = device->newLibrary(source);
        if (!library) {
            ADD_FAILURE() << library.error().message;
            return nullptr;
        }
        auto state = device->newRenderPipelineState(
            {.vertexFunction = library.value()->newFunction("v_main"),
             .fragmentFunction = library.value()->newFunction("f_main")});
        if (!state) {
            ADD_FAILURE() << state.error().message;
            return nullptr;
        }
        return std::move(*state);
    }

    /// Draws `source` into a target of that size after `bind` has bound what it wants.
    template <typename Bind>
    void draw(const std::string& source, Bind bind, std::uint64_t width = 4,
              std::uint64_t height = 4) {
        const auto state = pipeline(source);
        ASSERT_NE(state, nullptr);
        target = device->newTexture({.width = width, .height = height});
        ASSERT_NE(target, nullptr);
        gpu::CommandBuffer* const commands = queue->commandBuffer();
        ASSERT_NE(commands, nullptr);
        gpu::RenderCommandEncoder* const encoder =
            commands->renderCommandEncoder({.texture = target.get()});
        ASSERT_NE(encoder, nullptr);
        encoder->setRenderPipelineState(state);
        bind(*encoder);
        encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
        encoder->endEncoding();
        commands->commit();
        commands->waitUntilCompleted();
        pixels.assign(width * height * 4, 0x55);
        target->getBytes(pixels, width * 4, {.width = width, .height = height});
    }
    void draw(const std::string& source) {
        draw(source, [](gpu::RenderCommandEncoder&) {});
    }

    Pixel at(std::size_t x, std::size_t y) const {
        const std::uint8_t* p = pixels.data() + (y * target->width() + x) * 4;
        return {p[2], p[1], p[0], p[3]};
    }

    static std::span<const std::uint8_t> bytesOf(const std::vector<float>& values) {
        return {reinterpret_cast<const std::uint8_t*>(values.data()),
                values.size() * sizeof(float)};
    }

    std::shared_ptr<vulkan::VulkanDevice> device;
    std::shared_ptr<gpu::CommandQueue> queue;
    std::shared_ptr<gpu::Texture> target;
    std::vector<std::uint8_t> pixels;
};

/// On one device for all tests of a suite.
class SharedDeviceTest : public DrawingTest {
  protected:
    static void SetUpTestSuite() {
        auto made = vulkan::VulkanDevice::create();
        ASSERT_TRUE(made) << made.error();
        sharedDevice = std::move(*made);
        sharedQueue = sharedDevice->newCommandQueue();
    }
    static void TearDownTestSuite() {
        sharedQueue.reset();
        sharedDevice.reset();
    }

    SharedDeviceTest() {
        device = sharedDevice;
        queue = sharedQueue;
    }

  private:
    static inline std::shared_ptr<vulkan::VulkanDevice> sharedDevice;
    static inline std::shared_ptr<gpu::CommandQueue> sharedQueue;
};

} // namespace vantor
