#include "tests/conformance/module_picture.h"

#include "platform/linux/gpu/vulkan_resources.h"
#include "platform/linux/gpu/vulkan_uploader.h"

#include <cstring>

namespace vantor::conformance {
namespace {

VkShaderModule makeModule(VkDevice device, std::span<const std::uint32_t> words) {
    VkShaderModuleCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    info.codeSize = words.size_bytes();
    info.pCode = words.data();
    VkShaderModule module = VK_NULL_HANDLE;
    vkCreateShaderModule(device, &info, nullptr, &module);
    return module;
}

/// The few objects that one picture needs, destroyed together.
struct Objects {
    explicit Objects(VkDevice owner) : device(owner) {}
    ~Objects() {
        vkDestroyPipeline(device, pipeline, nullptr);
        vkDestroyPipelineLayout(device, layout, nullptr);
        vkDestroyDescriptorSetLayout(device, emptySet, nullptr);
        vkDestroyDescriptorSetLayout(device, uniformSet, nullptr);
        vkDestroyShaderModule(device, vertex, nullptr);
        vkDestroyShaderModule(device, fragment, nullptr);
        vkDestroyCommandPool(device, pool, nullptr);
    }
    Objects(const Objects&) = delete;
    Objects& operator=(const Objects&) = delete;

    VkDevice device;
    VkShaderModule vertex = VK_NULL_HANDLE;
    VkShaderModule fragment = VK_NULL_HANDLE;
    VkDescriptorSetLayout emptySet = VK_NULL_HANDLE;
    VkDescriptorSetLayout uniformSet = VK_NULL_HANDLE;
    VkPipelineLayout layout = VK_NULL_HANDLE;
    VkPipeline pipeline = VK_NULL_HANDLE;
    VkCommandPool pool = VK_NULL_HANDLE;
};

void makeLayout(Objects& objects) {
    VkDescriptorSetLayoutCreateInfo set{};
    set.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    vkCreateDescriptorSetLayout(objects.device, &set, nullptr, &objects.emptySet);
    const VkDescriptorSetLayoutBinding binding{0, VK_DESCRIPTOR_TYPE_STORAGE_BUFFER, 1,
                                               VK_SHADER_STAGE_FRAGMENT_BIT, nullptr};
    set.flags = VK_DESCRIPTOR_SET_LAYOUT_CREATE_PUSH_DESCRIPTOR_BIT_KHR;
    set.bindingCount = 1;
    set.pBindings = &binding;
    vkCreateDescriptorSetLayout(objects.device, &set, nullptr, &objects.uniformSet);
    const VkDescriptorSetLayout sets[] = {objects.emptySet, objects.uniformSet};
    VkPipelineLayoutCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    info.setLayoutCount = 2;
    info.pSetLayouts = sets;
    vkCreatePipelineLayout(objects.device, &info, nullptr, &objects.layout);
}

bool makePipeline(Objects& objects, const StageModule& vertex, const StageModule& fragment) {
    VkPipelineShaderStageCreateInfo stages[2]{};
    stages[0].sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].module = objects.vertex;
    stages[0].pName = vertex.entryPoint.c_str();
    stages[1] = stages[0];
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].module = objects.fragment;
    stages[1].pName = fragment.entryPoint.c_str();
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
    VkPipelineColorBlendAttachmentState attachment{};
    attachment.colorWriteMask = 0xF;
    VkPipelineColorBlendStateCreateInfo blend{};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &attachment;
    const VkDynamicState dynamics[] = {VK_DYNAMIC_STATE_VIEWPORT, VK_DYNAMIC_STATE_SCISSOR};
    VkPipelineDynamicStateCreateInfo dynamic{};
    dynamic.sType = VK_STRUCTURE_TYPE_PIPELINE_DYNAMIC_STATE_CREATE_INFO;
    dynamic.dynamicStateCount = 2;
    dynamic.pDynamicStates = dynamics;
    const VkFormat format = VK_FORMAT_B8G8R8A8_UNORM;
    VkPipelineRenderingCreateInfo rendering{};
    rendering.sType = VK_STRUCTURE_TYPE_PIPELINE_RENDERING_CREATE_INFO;
    rendering.colorAttachmentCount = 1;
    rendering.pColorAttachmentFormats = &format;
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
    info.layout = objects.layout;
    return vkCreateGraphicsPipelines(objects.device, VK_NULL_HANDLE, 1, &info, nullptr,
                                     &objects.pipeline) == VK_SUCCESS;
}

} // namespace

std::vector<std::uint8_t> draw(const std::shared_ptr<vulkan::Context>& context,
                               const StageModule& vertex, const StageModule& fragment,
                               const ShaderUniforms& uniforms, std::uint32_t width,
                               std::uint32_t height) {
    Objects objects(context->device());
    objects.vertex = makeModule(objects.device, vertex.words);
    objects.fragment = makeModule(objects.device, fragment.words);
    makeLayout(objects);
    const auto image = vulkan::DeviceImage::create(
        context, {.width = width,
                  .height = height,
                  .usage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT});
    const auto buffer =
        vulkan::Buffer::create(context, sizeof(uniforms), VK_BUFFER_USAGE_STORAGE_BUFFER_BIT);
    const auto reader = vulkan::Uploader::create(context);
    if (!image || !buffer || !reader || !makePipeline(objects, vertex, fragment)) {
        return {};
    }
    std::memcpy(buffer->bytes().data(), &uniforms, sizeof(uniforms));

    VkCommandPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    pool.queueFamilyIndex = context->queueFamily();
    vkCreateCommandPool(objects.device, &pool, nullptr, &objects.pool);
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = objects.pool;
    allocation.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    vkAllocateCommandBuffers(objects.device, &allocation, &commands);
    VkCommandBufferBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    vkBeginCommandBuffer(commands, &begin);
    vulkan::transition(*context, commands, *image, VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL);
    VkRenderingAttachmentInfo attachment{};
    attachment.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
    attachment.imageView = image->view();
    attachment.imageLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
    attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    VkRenderingInfo rendering{};
    rendering.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
    rendering.renderArea = {{0, 0}, {width, height}};
    rendering.layerCount = 1;
    rendering.colorAttachmentCount = 1;
    rendering.pColorAttachments = &attachment;
    vkCmdBeginRendering(commands, &rendering);
    const VkViewport viewport{
        0, static_cast<float>(height), static_cast<float>(width), -static_cast<float>(height), 0,
        1};
    vkCmdSetViewport(commands, 0, 1, &viewport);
    vkCmdSetScissor(commands, 0, 1, &rendering.renderArea);
    vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, objects.pipeline);
    const VkDescriptorBufferInfo bound{buffer->handle(), 0, VK_WHOLE_SIZE};
    VkWriteDescriptorSet write{};
    write.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
    write.descriptorCount = 1;
    write.descriptorType = VK_DESCRIPTOR_TYPE_STORAGE_BUFFER;
    write.pBufferInfo = &bound;
    context->pushDescriptorSet()(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, objects.layout, 1, 1,
                                 &write);
    vkCmdDraw(commands, 3, 1, 0, 0);
    vkCmdEndRendering(commands);
    vkEndCommandBuffer(commands);
    const std::uint64_t point = context->submit(commands);
    std::vector<std::uint8_t> pixels(std::size_t{width} * height * 4);
    if (point == 0 || !context->wait(point) ||
        !reader->download(*image, {.width = width, .height = height}, pixels,
                          std::size_t{width} * 4)) {
        return {};
    }
    return pixels;
}

} // namespace vantor::conformance
