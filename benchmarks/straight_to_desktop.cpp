// What the agent is measured against: a program that draws a shader without resources straight onto
// the desktop of a Wayland compositor, as often as the compositor asks for it, until SIGTERM. At
// SIGUSR1 it prints a line: how many frames it has shown.
// Usage: straight_to_desktop clear|keep SOURCE
// "clear" clears the picture before it draws, as wallpapers do, which drivers that draw with the
// CPU pay for though nothing of it is seen.

#include "agent/host/command_buffer.h"
#include "agent/host/swapchain.h"
#include "agent/output/wayland/wayland_background.h"
#include "msl/msl.h"
#include "platform/linux/gpu/vulkan_instance.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

namespace vantor {
namespace {

[[noreturn]] void fail(const std::string& sentence) {
    std::fprintf(stderr, "straight_to_desktop: %s\n", sentence.c_str());
    std::exit(1);
}

/// A full-screen triangle of "v_main" and "f_main", kept until the process ends.
VkPipeline makePipeline(const vulkan::Context& gpu, const std::string& source) {
    const msl::CompileResult compiled = msl::compile(source);
    if (!compiled.module) {
        fail("the shader does not compile");
    }
    VkShaderModuleCreateInfo moduleInfo{};
    moduleInfo.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    moduleInfo.codeSize = compiled.module->words.size() * sizeof(std::uint32_t);
    moduleInfo.pCode = compiled.module->words.data();
    VkPipelineLayoutCreateInfo layoutInfo{};
    layoutInfo.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    VkShaderModule module = VK_NULL_HANDLE;
    VkPipelineLayout layout = VK_NULL_HANDLE;
    if (vkCreateShaderModule(gpu.device(), &moduleInfo, nullptr, &module) != VK_SUCCESS ||
        vkCreatePipelineLayout(gpu.device(), &layoutInfo, nullptr, &layout) != VK_SUCCESS) {
        fail("no pipeline layout");
    }
    VkPipelineShaderStageCreateInfo stages[2]{};
    for (auto& stage : stages) {
        stage.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
        stage.module = module;
    }
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].pName = "v_main";
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].pName = "f_main";
    VkPipelineVertexInputStateCreateInfo input{};
    input.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo assembly{};
    assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    VkPipelineViewportStateCreateInfo viewport{};
    viewport.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewport.viewportCount = 1;
    viewport.scissorCount = 1;
    VkPipelineRasterizationStateCreateInfo raster{};
    raster.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    raster.lineWidth = 1.0F;
    VkPipelineMultisampleStateCreateInfo samples{};
    samples.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    samples.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState color{};
    color.colorWriteMask = VK_COLOR_COMPONENT_R_BIT | VK_COLOR_COMPONENT_G_BIT |
                           VK_COLOR_COMPONENT_B_BIT | VK_COLOR_COMPONENT_A_BIT;
    VkPipelineColorBlendStateCreateInfo blend{};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &color;
    constexpr VkDynamicState kDynamic[] = {VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
    VkPipelineDynamicStateCreateInfo dynamic{};
    dynamic.sType = VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO;
    dynamic.dynamicStateCount = 2;
    dynamic.pDynamicStates = kDynamic;
    constexpr VkFormat kFormat = VK_FORMAT_B8G8R8A8_UNORM;
    VkPipelineRenderingCreateInfo rendering{};
    rendering.sType = VK_STRUCTURE_TYPE_PIPELINE_RENDERING_CREATE_INFO;
    rendering.colorAttachmentCount = 1;
    rendering.pColorAttachmentFormats = &kFormat;
    VkGraphicsPipelineCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    info.pNext = &rendering;
    info.stageCount = 2;
    info.pStages = stages;
    info.pVertexInputState = &input;
    info.pInputAssemblyState = &assembly;
    info.pViewportState = &viewport;
    info.pRasterizationState = &raster;
    info.pMultisampleState = &samples;
    info.pColorBlendState = &blend;
    info.pDynamicState = &dynamic;
    info.layout = layout;
    VkPipeline pipeline = VK_NULL_HANDLE;
    if (vkCreateGraphicsPipelines(gpu.device(), VK_NULL_HANDLE, 1, &info, nullptr, &pipeline) !=
        VK_SUCCESS) {
        fail("no pipeline");
    }
    return pipeline;
}

class Painter {
  public:
    Painter(std::shared_ptr<vulkan::Context> gpu, VkPipeline pipeline, VkAttachmentLoadOp load,
            agent::Output& output)
        : gpu_(std::move(gpu)), pipeline_(pipeline), load_(load), output_(output),
          canvas_(agent::Swapchain::create(gpu_, output.makeSurface(vulkan::sharedInstance()),
                                           output.description().width,
                                           output.description().height)),
          commands_(agent::CommandBuffer::create(gpu_)) {
        if (!canvas_ || !commands_) {
            fail("no swapchain");
        }
    }

    void paint() {
        const auto target = commands_->isIdle() ? canvas_->begin() : std::nullopt;
        if (!target || !commands_->begin()) {
            output_.requestRefresh();
            return;
        }
        draw(*target);
        output_.willPresent();
        if (!commands_->submit(target->semaphores) || !canvas_->show()) {
            fail("the surface is lost");
        }
        ++frames_;
    }
    std::uint64_t frames() const { return frames_; }

  private:
    void draw(const agent::CanvasImage& target) {
        vulkan::DeviceImage& image = target.image;
        const VkCommandBuffer commands = commands_->handle();
        vulkan::transition(*gpu_, commands, image, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL,
                           vulkan::Contents::discarded);
        VkRenderingAttachmentInfo attachment{};
        attachment.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
        attachment.imageView = image.view();
        attachment.imageLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
        attachment.loadOp = load_;
        attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
        const VkRect2D area{{0, 0}, {image.width(), image.height()}};
        VkRenderingInfo info{};
        info.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
        info.renderArea = area;
        info.layerCount = 1;
        info.colorAttachmentCount = 1;
        info.pColorAttachments = &attachment;
        vkCmdBeginRendering(commands, &info);
        vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline_);
        const VkViewport viewport{0.0F,
                                  static_cast<float>(image.height()),
                                  static_cast<float>(image.width()),
                                  -static_cast<float>(image.height()),
                                  0.0F,
                                  1.0F};
        vkCmdSetViewport(commands, 0, 1, &viewport);
        vkCmdSetScissor(commands, 0, 1, &area);
        vkCmdDraw(commands, 3, 1, 0, 0);
        vkCmdEndRendering(commands);
        vulkan::transition(*gpu_, commands, image, target.layout);
    }

    std::shared_ptr<vulkan::Context> gpu_;
    VkPipeline pipeline_;
    VkAttachmentLoadOp load_;
    agent::Output& output_;
    std::unique_ptr<agent::Swapchain> canvas_;
    std::unique_ptr<agent::CommandBuffer> commands_;
    std::uint64_t frames_ = 0;
};

int run(VkAttachmentLoadOp load, const char* file) {
    std::ifstream stream(file);
    const std::string source{std::istreambuf_iterator<char>(stream), {}};
    MainLoop loop;
    // Before the driver starts threads, which would take signals that are not blocked yet.
    loop.onSignal(SIGTERM, [&loop](int) { loop.stop(0); });
    std::map<agent::Output*, std::unique_ptr<Painter>> painters;
    loop.onSignal(SIGUSR1, [&painters](int) {
        std::uint64_t frames = 0;
        for (const auto& [output, painter] : painters) {
            frames += painter->frames();
        }
        std::printf("%ju\n", std::uintmax_t{frames});
        std::fflush(stdout);
    });
    vulkan::enablePresentation();
    auto gpu = vulkan::Context::create();
    if (!gpu) {
        fail(gpu.error());
    }
    const VkPipeline pipeline = makePipeline(**gpu, source);
    auto backend = agent::makeWaylandBackground(
        loop, {.added =
                   [&](agent::Output& output) {
                       painters[&output] = std::make_unique<Painter>(*gpu, pipeline, load, output);
                       output.requestRefresh();
                   },
               .changed = [](agent::Output&) {},
               .removed = [&](agent::Output& output) { painters.erase(&output); },
               .refresh = [&](agent::Output& output) { painters.at(&output)->paint(); },
               .command = {},
               .ended = [&loop](const std::string&) { loop.stop(1); }});
    if (!backend) {
        fail(backend.error());
    }
    const int status = loop.run();
    painters.clear();
    return status;
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    return vantor::run(std::string_view(argv[1]) == "clear" ? VK_ATTACHMENT_LOAD_OP_CLEAR
                                                            : VK_ATTACHMENT_LOAD_OP_DONT_CARE,
                       argv[2]);
}
