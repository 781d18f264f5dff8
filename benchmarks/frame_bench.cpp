// What one frame costs the main thread: a surface's whole tick, from the clock to the frame that
// its layer shows (nobody is attached to take it further), against recording and submitting the
// same draw by hand. Times are the main thread's CPU time; the GPU's work is waited for outside of
// them.

#include "benchmarks/counted_allocations.h"
#include "bridge/remote_context.h"
#include "platform/gpu.h"
#include "platform/layers.h"
#include "platform/linux/gpu/vulkan_device.h"
#include "platform/linux/main_loop.h"
#include "platform/platform.h"
#include "render/shader_surface.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>
#include <ctime>
#include <thread>

namespace vantor {
namespace {

constexpr std::uint32_t kSide = 64;
constexpr int kWarmUp = 20;
constexpr int kFrames = 500;

constexpr const char* kTrivial =
    "#include <metal_stdlib>\nusing namespace metal;\n"
    "struct Uniforms { float2 resolution; float time; float speed; float4 tint; };\n"
    "struct VOut { float4 position [[position]]; };\n"
    "vertex VOut v_main(uint vid [[vertex_id]]) {\n"
    "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
    "    VOut out;\n    out.position = float4(p * 2.0 - 1.0, 0.0, 1.0);\n    return out;\n}\n"
    "fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {\n"
    "    return float4(u.tint.rgb, 1.0);\n}\n";

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Long enough for the GPU to finish so small a picture.
void letTheGPUFinish() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

void ours(benchmark::State& state) {
    Platform& installed = platform();
    auto& loop = static_cast<MainLoop&>(installed.mainQueue());
    ShaderGPU& gpu = ShaderGPU::shared();
    const LayerRef root = installed.layers().makeLayer();
    const auto context = PrivateBridge::makeRemoteContext(installed, std::nullopt);
    context->object()->perform("setLayer:", root);
    const auto surface = ShaderSurface::create(installed, gpu,
                                               {.entryID = "trivial",
                                                .source = kTrivial,
                                                .look = {},
                                                .in = root,
                                                .size = {.width = kSide, .height = kSide},
                                                .scale = 1,
                                                .displayID = std::nullopt,
                                                .startTime = 0});
    if (!surface) {
        state.SkipWithError("no surface can be made");
        return;
    }
    const auto frame = [&] {
        surface->tick();
        letTheGPUFinish();
        loop.turn();
    };
    for (int i = 0; i < kWarmUp; ++i) {
        frame();
    }
    bench::startCounting();
    for (auto _ : state) {
        const double before = threadSeconds();
        frame();
        state.SetIterationTime(threadSeconds() - before);
    }
    const std::uint64_t allocations = bench::stopCounting();
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(allocations), benchmark::Counter::kAvgIterations);
    surface->stop();
}

/// The same draw with nothing around it: one command buffer, recorded and submitted.
void bare(benchmark::State& state) {
    auto device = std::static_pointer_cast<vulkan::VulkanDevice>(ShaderGPU::shared().device());
    auto library = device->newLibrary(kTrivial);
    auto made = device->newRenderPipelineState(
        {.vertexFunction = library.value()->newFunction("v_main"),
         .fragmentFunction = library.value()->newFunction("f_main")});
    const auto parts = device->parts();
    const auto objects = static_cast<vulkan::VulkanPipeline&>(*made.value()).objectsFor(*parts);
    const vulkan::PipelineObjects& pipeline = *objects;
    const auto texture = device->newSharedTexture(kSide, kSide);
    vulkan::DeviceImage& image = texture->image();
    vulkan::Context& context = *parts->context;
    const auto uniforms =
        vulkan::Buffer::create(parts->context, 4096, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT);
    const ShaderUniforms look;

    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    poolInfo.queueFamilyIndex = context.queueFamily();
    VkCommandPool pool = VK_NULL_HANDLE;
    vkCreateCommandPool(context.device(), &poolInfo, nullptr, &pool);
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = pool;
    allocation.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    vkAllocateCommandBuffers(context.device(), &allocation, &commands);

    const auto frame = [&] {
        vkResetCommandPool(context.device(), pool, 0);
        VkCommandBufferBeginInfo begin{};
        begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
        vkBeginCommandBuffer(commands, &begin);
        vulkan::transition(context, commands, image, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL,
                           vulkan::Contents::discarded);
        VkRenderingAttachmentInfo attachment{};
        attachment.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
        attachment.imageView = image.view();
        attachment.imageLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
        attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
        attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
        VkRenderingInfo rendering{};
        rendering.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
        rendering.renderArea = {{0, 0}, {kSide, kSide}};
        rendering.layerCount = 1;
        rendering.colorAttachmentCount = 1;
        rendering.pColorAttachments = &attachment;
        vkCmdBeginRendering(commands, &rendering);
        const VkViewport viewport{0, kSide, kSide, -static_cast<float>(kSide), 0, 1};
        vkCmdSetViewport(commands, 0, 1, &viewport);
        vkCmdSetScissor(commands, 0, 1, &rendering.renderArea);
        vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline.handle());
        std::memcpy(uniforms->bytes().data(), &look, sizeof(look));
        const VkDescriptorBufferInfo buffer{uniforms->handle(), 0, sizeof(look)};
        VkWriteDescriptorSet write{};
        write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        write.descriptorCount = 1;
        write.descriptorType = VK_DESCRIPTOR_TYPE_STORAGE_BUFFER;
        write.pBufferInfo = &buffer;
        context.pushDescriptorSet()(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline.layout(),
                                    msl::kFragmentDescriptorSet, 1, &write);
        vkCmdDraw(commands, 3, 1, 0, 0);
        vkCmdEndRendering(commands);
        vulkan::transition(context, commands, image, VK_IMAGE_LAYOUT_GENERAL,
                           vulkan::Contents::kept, vulkan::Ownership::releasedOutside);
        vkEndCommandBuffer(commands);
        const std::uint64_t point = context.submit(commands);
        letTheGPUFinish();
        return point;
    };
    std::uint64_t point = 0;
    for (int i = 0; i < kWarmUp; ++i) {
        context.wait(point = frame());
    }
    for (auto _ : state) {
        const double before = threadSeconds();
        point = frame();
        state.SetIterationTime(threadSeconds() - before);
        context.wait(point);
    }
    vkDestroyCommandPool(context.device(), pool, nullptr);
}

BENCHMARK(ours)->Name("frame/trivial/ours")->UseManualTime()->Iterations(kFrames);
BENCHMARK(bare)->Name("frame/trivial/bare")->UseManualTime()->Iterations(kFrames);

} // namespace
} // namespace vantor
