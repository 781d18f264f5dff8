#include "tests/support/vulkan_runner.h"

#include <algorithm>
#include <cstring>

#include <vulkan/vulkan.h>

namespace vantor::tests {
namespace {

constexpr uint32_t kSide = 4;
constexpr VkFormat kFormat = VK_FORMAT_R32G32B32A32_SFLOAT;
constexpr VkDeviceSize kPixelBytes = 16;

} // namespace

// The handles live as long as the process: the runner is shared by all its tests.
struct VulkanRunner::Device {
    VkInstance instance = VK_NULL_HANDLE;
    VkPhysicalDevice physical = VK_NULL_HANDLE;
    VkDevice device = VK_NULL_HANDLE;
    VkQueue queue = VK_NULL_HANDLE;
    VkCommandPool pool = VK_NULL_HANDLE;
    VkPhysicalDeviceMemoryProperties memory{};

    struct Buffer {
        VkBuffer buffer = VK_NULL_HANDLE;
        VkDeviceMemory memory = VK_NULL_HANDLE;
        std::byte* data = nullptr;
    };
    struct Image {
        VkImage image = VK_NULL_HANDLE;
        VkDeviceMemory memory = VK_NULL_HANDLE;
        VkImageView view = VK_NULL_HANDLE;
    };

    ~Device() {
        if (device != VK_NULL_HANDLE) {
            vkDestroyCommandPool(device, pool, nullptr);
            vkDestroyDevice(device, nullptr);
        }
        if (instance != VK_NULL_HANDLE) {
            vkDestroyInstance(instance, nullptr);
        }
    }

    bool open();
    uint32_t memoryType(uint32_t bits, VkMemoryPropertyFlags wanted) const;
    Buffer makeBuffer(VkDeviceSize size, VkBufferUsageFlags usage);
    void release(const Buffer& buffer);
    Image makeImage(VkImageUsageFlags usage);
    void release(const Image& image);
    VkSampler makeSampler(const msl::SamplerOptions& options);
    VkCommandBuffer begin();
    bool finish(VkCommandBuffer commands);
    void transition(VkCommandBuffer commands, VkImage image, VkImageLayout from, VkImageLayout to);
    void fillTexture(const Image& texture);
};

bool VulkanRunner::Device::open() {
    const VkApplicationInfo application{.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO,
                                        .pNext = nullptr,
                                        .pApplicationName = "msl tests",
                                        .applicationVersion = 0,
                                        .pEngineName = nullptr,
                                        .engineVersion = 0,
                                        .apiVersion = VK_API_VERSION_1_3};
    VkInstanceCreateInfo instanceInfo{};
    instanceInfo.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    instanceInfo.pApplicationInfo = &application;
    if (vkCreateInstance(&instanceInfo, nullptr, &instance) != VK_SUCCESS) {
        return false;
    }
    uint32_t count = 1;
    if (vkEnumeratePhysicalDevices(instance, &count, &physical) < VK_SUCCESS || count == 0) {
        return false;
    }
    vkGetPhysicalDeviceMemoryProperties(physical, &memory);
    const float priority = 1.0F;
    VkDeviceQueueCreateInfo queueInfo{};
    queueInfo.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queueInfo.queueCount = 1;
    queueInfo.pQueuePriorities = &priority;
    VkPhysicalDeviceVulkan13Features features13{};
    features13.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES;
    features13.dynamicRendering = VK_TRUE;
    VkPhysicalDeviceFeatures2 features{};
    features.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2;
    features.pNext = &features13;
    features.features.shaderInt64 = VK_TRUE;
    features.features.fragmentStoresAndAtomics = VK_TRUE;
    VkDeviceCreateInfo deviceInfo{};
    deviceInfo.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    deviceInfo.pNext = &features;
    deviceInfo.queueCreateInfoCount = 1;
    deviceInfo.pQueueCreateInfos = &queueInfo;
    if (vkCreateDevice(physical, &deviceInfo, nullptr, &device) != VK_SUCCESS) {
        return false;
    }
    vkGetDeviceQueue(device, 0, 0, &queue);
    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    return vkCreateCommandPool(device, &poolInfo, nullptr, &pool) == VK_SUCCESS;
}

uint32_t VulkanRunner::Device::memoryType(uint32_t bits, VkMemoryPropertyFlags wanted) const {
    for (uint32_t i = 0; i < memory.memoryTypeCount; ++i) {
        if ((bits & (1U << i)) != 0 && (memory.memoryTypes[i].propertyFlags & wanted) == wanted) {
            return i;
        }
    }
    return 0;
}

VulkanRunner::Device::Buffer VulkanRunner::Device::makeBuffer(VkDeviceSize size,
                                                              VkBufferUsageFlags usage) {
    Buffer result;
    VkBufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
    info.size = std::max<VkDeviceSize>(size, 16);
    info.usage = usage;
    vkCreateBuffer(device, &info, nullptr, &result.buffer);
    VkMemoryRequirements needs{};
    vkGetBufferMemoryRequirements(device, result.buffer, &needs);
    VkMemoryAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocation.allocationSize = needs.size;
    allocation.memoryTypeIndex =
        memoryType(needs.memoryTypeBits,
                   VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT);
    vkAllocateMemory(device, &allocation, nullptr, &result.memory);
    vkBindBufferMemory(device, result.buffer, result.memory, 0);
    void* data = nullptr;
    vkMapMemory(device, result.memory, 0, VK_WHOLE_SIZE, 0, &data);
    result.data = static_cast<std::byte*>(data);
    return result;
}

void VulkanRunner::Device::release(const Buffer& buffer) {
    vkDestroyBuffer(device, buffer.buffer, nullptr);
    vkFreeMemory(device, buffer.memory, nullptr);
}

VulkanRunner::Device::Image VulkanRunner::Device::makeImage(VkImageUsageFlags usage) {
    Image result;
    VkImageCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = kFormat;
    info.extent = {kSide, kSide, 1};
    info.mipLevels = info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.usage = usage;
    vkCreateImage(device, &info, nullptr, &result.image);
    VkMemoryRequirements needs{};
    vkGetImageMemoryRequirements(device, result.image, &needs);
    VkMemoryAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocation.allocationSize = needs.size;
    allocation.memoryTypeIndex = memoryType(needs.memoryTypeBits, 0);
    vkAllocateMemory(device, &allocation, nullptr, &result.memory);
    vkBindImageMemory(device, result.image, result.memory, 0);
    VkImageViewCreateInfo view{};
    view.sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO;
    view.image = result.image;
    view.viewType = VK_IMAGE_VIEW_TYPE_2D;
    view.format = kFormat;
    view.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    vkCreateImageView(device, &view, nullptr, &result.view);
    return result;
}

void VulkanRunner::Device::release(const Image& image) {
    vkDestroyImageView(device, image.view, nullptr);
    vkDestroyImage(device, image.image, nullptr);
    vkFreeMemory(device, image.memory, nullptr);
}

VkSampler VulkanRunner::Device::makeSampler(const msl::SamplerOptions& options) {
    const auto address = [](msl::SamplerAddress mode) {
        switch (mode) {
        case msl::SamplerAddress::repeat:
            return VK_SAMPLER_ADDRESS_MODE_REPEAT;
        case msl::SamplerAddress::mirroredRepeat:
            return VK_SAMPLER_ADDRESS_MODE_MIRRORED_REPEAT;
        case msl::SamplerAddress::clampToEdge:
            return VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_EDGE;
        default:
            return VK_SAMPLER_ADDRESS_MODE_CLAMP_TO_BORDER;
        }
    };
    VkSamplerCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    info.magFilter =
        options.magFilter == msl::SamplerFilter::linear ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
    info.minFilter =
        options.minFilter == msl::SamplerFilter::linear ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
    info.addressModeU = address(options.sAddress);
    info.addressModeV = address(options.tAddress);
    info.addressModeW = address(options.rAddress);
    info.unnormalizedCoordinates = options.normalizedCoordinates ? VK_FALSE : VK_TRUE;
    VkSampler sampler = VK_NULL_HANDLE;
    vkCreateSampler(device, &info, nullptr, &sampler);
    return sampler;
}

VkCommandBuffer VulkanRunner::Device::begin() {
    VkCommandBufferAllocateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    info.commandPool = pool;
    info.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    vkAllocateCommandBuffers(device, &info, &commands);
    VkCommandBufferBeginInfo beginInfo{};
    beginInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    vkBeginCommandBuffer(commands, &beginInfo);
    return commands;
}

bool VulkanRunner::Device::finish(VkCommandBuffer commands) {
    vkEndCommandBuffer(commands);
    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &commands;
    const bool good = vkQueueSubmit(queue, 1, &submit, VK_NULL_HANDLE) == VK_SUCCESS &&
                      vkQueueWaitIdle(queue) == VK_SUCCESS;
    vkFreeCommandBuffers(device, pool, 1, &commands);
    return good;
}

void VulkanRunner::Device::transition(VkCommandBuffer commands, VkImage image, VkImageLayout from,
                                      VkImageLayout to) {
    VkImageMemoryBarrier barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER;
    barrier.srcAccessMask = VK_ACCESS_MEMORY_WRITE_BIT;
    barrier.dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT;
    barrier.oldLayout = from;
    barrier.newLayout = to;
    barrier.image = image;
    barrier.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0, nullptr, 0, nullptr, 1,
                         &barrier);
}

void VulkanRunner::Device::fillTexture(const Image& texture) {
    const Buffer staging =
        makeBuffer(kSide * kSide * kPixelBytes, VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
    auto* texels = reinterpret_cast<float*>(staging.data);
    for (uint32_t y = 0; y < kSide; ++y) {
        for (uint32_t x = 0; x < kSide; ++x) {
            float* texel = texels + 4 * (y * kSide + x);
            texel[0] = static_cast<float>(x);
            texel[1] = static_cast<float>(y);
            texel[2] = static_cast<float>(x + kSide * y);
            texel[3] = 1.0F;
        }
    }
    VkCommandBuffer commands = begin();
    transition(commands, texture.image, VK_IMAGE_LAYOUT_UNDEFINED,
               VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    VkBufferImageCopy copy{};
    copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    copy.imageExtent = {kSide, kSide, 1};
    vkCmdCopyBufferToImage(commands, staging.buffer, texture.image,
                           VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 1, &copy);
    transition(commands, texture.image, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
               VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL);
    finish(commands);
    release(staging);
}

VulkanRunner::VulkanRunner(std::unique_ptr<Device> device) : device_(std::move(device)) {}
VulkanRunner::~VulkanRunner() = default;

VulkanRunner* VulkanRunner::shared() {
    static const std::unique_ptr<VulkanRunner> runner = [] {
        auto device = std::make_unique<Device>();
        return device->open() ? std::unique_ptr<VulkanRunner>(new VulkanRunner(std::move(device)))
                              : nullptr;
    }();
    return runner.get();
}

std::optional<std::array<float, 4>>
VulkanRunner::draw(const msl::Module& module, std::span<const std::vector<std::byte>> contents,
                   std::string& problem) {
    Device& gpu = *device_;
    const auto fragment = std::find_if(
        module.entryPoints.begin(), module.entryPoints.end(),
        [](const msl::EntryPoint& entry) { return entry.stage == msl::Stage::fragment; });
    if (fragment == module.entryPoints.end()) {
        problem = "there is no fragment function";
        return std::nullopt;
    }
    // The descriptor set of the fragment stage, as the entry point describes it.
    std::vector<VkDescriptorSetLayoutBinding> bindings;
    std::vector<Device::Buffer> buffers;
    std::vector<Device::Image> images;
    std::vector<VkSampler> samplers;
    std::vector<VkDescriptorBufferInfo> bufferInfos;
    std::vector<VkDescriptorImageInfo> imageInfos;
    struct Write {
        uint32_t binding;
        VkDescriptorType type;
        size_t index;
    };
    std::vector<Write> writes;
    const auto add = [&](uint32_t binding, VkDescriptorType type, size_t index) {
        bindings.push_back({binding, type, 1, VK_SHADER_STAGE_ALL_GRAPHICS, nullptr});
        writes.push_back({binding, type, index});
    };
    for (size_t i = 0; i < fragment->buffers.size(); ++i) {
        const size_t given = i < contents.size() ? contents[i].size() : 0;
        buffers.push_back(gpu.makeBuffer(std::max<size_t>(given, fragment->buffers[i].size),
                                         VK_BUFFER_USAGE_STORAGE_BUFFER_BIT));
        if (given > 0) {
            std::memcpy(buffers.back().data, contents[i].data(), given);
        }
        bufferInfos.push_back({buffers.back().buffer, 0, VK_WHOLE_SIZE});
        add(msl::kBufferBinding + fragment->buffers[i].index, VK_DESCRIPTOR_TYPE_STORAGE_BUFFER,
            bufferInfos.size() - 1);
    }
    for (const auto& texture : fragment->textures) {
        images.push_back(
            gpu.makeImage(VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT));
        gpu.fillTexture(images.back());
        imageInfos.push_back(
            {VK_NULL_HANDLE, images.back().view, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL});
        add(msl::kTextureBinding + texture.index, VK_DESCRIPTOR_TYPE_SAMPLED_IMAGE,
            imageInfos.size() - 1);
    }
    for (const auto& sampler : fragment->samplers) {
        samplers.push_back(gpu.makeSampler({}));
        imageInfos.push_back({samplers.back(), VK_NULL_HANDLE, VK_IMAGE_LAYOUT_UNDEFINED});
        add(msl::kSamplerBinding + sampler.index, VK_DESCRIPTOR_TYPE_SAMPLER,
            imageInfos.size() - 1);
    }
    for (const auto& sampler : fragment->constantSamplers) {
        samplers.push_back(gpu.makeSampler(sampler.options));
        imageInfos.push_back({samplers.back(), VK_NULL_HANDLE, VK_IMAGE_LAYOUT_UNDEFINED});
        add(sampler.binding, VK_DESCRIPTOR_TYPE_SAMPLER, imageInfos.size() - 1);
    }
    VkDescriptorSetLayoutCreateInfo setInfo{};
    setInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_LAYOUT_CREATE_INFO;
    std::array<VkDescriptorSetLayout, 2> layouts{};
    vkCreateDescriptorSetLayout(gpu.device, &setInfo, nullptr, &layouts[msl::kVertexDescriptorSet]);
    setInfo.bindingCount = static_cast<uint32_t>(bindings.size());
    setInfo.pBindings = bindings.data();
    vkCreateDescriptorSetLayout(gpu.device, &setInfo, nullptr,
                                &layouts[msl::kFragmentDescriptorSet]);
    VkPipelineLayoutCreateInfo layoutInfo{};
    layoutInfo.sType = VK_STRUCTURE_TYPE_PIPELINE_LAYOUT_CREATE_INFO;
    layoutInfo.setLayoutCount = 2;
    layoutInfo.pSetLayouts = layouts.data();
    VkPipelineLayout layout = VK_NULL_HANDLE;
    vkCreatePipelineLayout(gpu.device, &layoutInfo, nullptr, &layout);
    const std::array<VkDescriptorPoolSize, 3> sizes{{{VK_DESCRIPTOR_TYPE_STORAGE_BUFFER, 32},
                                                     {VK_DESCRIPTOR_TYPE_SAMPLED_IMAGE, 32},
                                                     {VK_DESCRIPTOR_TYPE_SAMPLER, 32}}};
    VkDescriptorPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_POOL_CREATE_INFO;
    poolInfo.maxSets = 2;
    poolInfo.poolSizeCount = static_cast<uint32_t>(sizes.size());
    poolInfo.pPoolSizes = sizes.data();
    VkDescriptorPool descriptorPool = VK_NULL_HANDLE;
    vkCreateDescriptorPool(gpu.device, &poolInfo, nullptr, &descriptorPool);
    VkDescriptorSetAllocateInfo allocate{};
    allocate.sType = VK_STRUCTURE_TYPE_DESCRIPTOR_SET_ALLOCATE_INFO;
    allocate.descriptorPool = descriptorPool;
    allocate.descriptorSetCount = 2;
    allocate.pSetLayouts = layouts.data();
    std::array<VkDescriptorSet, 2> sets{};
    vkAllocateDescriptorSets(gpu.device, &allocate, sets.data());
    for (const auto& write : writes) {
        VkWriteDescriptorSet update{};
        update.sType = VK_STRUCTURE_TYPE_WRITE_DESCRIPTOR_SET;
        update.dstSet = sets[msl::kFragmentDescriptorSet];
        update.dstBinding = write.binding;
        update.descriptorCount = 1;
        update.descriptorType = write.type;
        if (write.type == VK_DESCRIPTOR_TYPE_STORAGE_BUFFER) {
            update.pBufferInfo = &bufferInfos[write.index];
        } else {
            update.pImageInfo = &imageInfos[write.index];
        }
        vkUpdateDescriptorSets(gpu.device, 1, &update, 0, nullptr);
    }

    VkShaderModuleCreateInfo shaderInfo{};
    shaderInfo.sType = VK_STRUCTURE_TYPE_SHADER_MODULE_CREATE_INFO;
    shaderInfo.codeSize = module.words.size() * sizeof(uint32_t);
    shaderInfo.pCode = module.words.data();
    VkShaderModule shader = VK_NULL_HANDLE;
    vkCreateShaderModule(gpu.device, &shaderInfo, nullptr, &shader);
    std::array<VkPipelineShaderStageCreateInfo, 2> stages{};
    for (auto& stage : stages) {
        stage.sType = VK_STRUCTURE_TYPE_PIPELINE_SHADER_STAGE_CREATE_INFO;
        stage.module = shader;
    }
    stages[0].stage = VK_SHADER_STAGE_VERTEX_BIT;
    stages[0].pName = "v_main";
    stages[1].stage = VK_SHADER_STAGE_FRAGMENT_BIT;
    stages[1].pName = "f_main";
    VkPipelineVertexInputStateCreateInfo vertexInput{};
    vertexInput.sType = VK_STRUCTURE_TYPE_PIPELINE_VERTEX_INPUT_STATE_CREATE_INFO;
    VkPipelineInputAssemblyStateCreateInfo assembly{};
    assembly.sType = VK_STRUCTURE_TYPE_PIPELINE_INPUT_ASSEMBLY_STATE_CREATE_INFO;
    assembly.topology = VK_PRIMITIVE_TOPOLOGY_TRIANGLE_LIST;
    // Metal's y axis points up.
    const auto side = static_cast<float>(kSide);
    const VkViewport viewport{0, side, side, -side, 0, 1};
    const VkRect2D scissor{{0, 0}, {kSide, kSide}};
    VkPipelineViewportStateCreateInfo viewportState{};
    viewportState.sType = VK_STRUCTURE_TYPE_PIPELINE_VIEWPORT_STATE_CREATE_INFO;
    viewportState.viewportCount = viewportState.scissorCount = 1;
    viewportState.pViewports = &viewport;
    viewportState.pScissors = &scissor;
    VkPipelineRasterizationStateCreateInfo raster{};
    raster.sType = VK_STRUCTURE_TYPE_PIPELINE_RASTERIZATION_STATE_CREATE_INFO;
    raster.lineWidth = 1;
    VkPipelineMultisampleStateCreateInfo multisample{};
    multisample.sType = VK_STRUCTURE_TYPE_PIPELINE_MULTISAMPLE_STATE_CREATE_INFO;
    multisample.rasterizationSamples = VK_SAMPLE_COUNT_1_BIT;
    VkPipelineColorBlendAttachmentState attachment{};
    attachment.colorWriteMask = 0xF;
    VkPipelineColorBlendStateCreateInfo blend{};
    blend.sType = VK_STRUCTURE_TYPE_PIPELINE_COLOR_BLEND_STATE_CREATE_INFO;
    blend.attachmentCount = 1;
    blend.pAttachments = &attachment;
    VkPipelineRenderingCreateInfo rendering{};
    rendering.sType = VK_STRUCTURE_TYPE_PIPELINE_RENDERING_CREATE_INFO;
    rendering.colorAttachmentCount = 1;
    rendering.pColorAttachmentFormats = &kFormat;
    VkGraphicsPipelineCreateInfo pipelineInfo{};
    pipelineInfo.sType = VK_STRUCTURE_TYPE_GRAPHICS_PIPELINE_CREATE_INFO;
    pipelineInfo.pNext = &rendering;
    pipelineInfo.stageCount = 2;
    pipelineInfo.pStages = stages.data();
    pipelineInfo.pVertexInputState = &vertexInput;
    pipelineInfo.pInputAssemblyState = &assembly;
    pipelineInfo.pViewportState = &viewportState;
    pipelineInfo.pRasterizationState = &raster;
    pipelineInfo.pMultisampleState = &multisample;
    pipelineInfo.pColorBlendState = &blend;
    pipelineInfo.layout = layout;
    VkPipeline pipeline = VK_NULL_HANDLE;
    std::optional<std::array<float, 4>> result;
    if (vkCreateGraphicsPipelines(gpu.device, VK_NULL_HANDLE, 1, &pipelineInfo, nullptr,
                                  &pipeline) != VK_SUCCESS) {
        problem = "the pipeline is refused";
    } else {
        const auto target =
            gpu.makeImage(VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT);
        const auto readBack =
            gpu.makeBuffer(kSide * kSide * kPixelBytes, VK_BUFFER_USAGE_TRANSFER_DST_BIT);
        VkCommandBuffer commands = gpu.begin();
        gpu.transition(commands, target.image, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
        VkRenderingAttachmentInfo color{};
        color.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
        color.imageView = target.view;
        color.imageLayout = VK_IMAGE_LAYOUT_GENERAL;
        color.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
        color.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
        color.clearValue.color = {{-7.0F, -7.0F, -7.0F, -7.0F}};
        VkRenderingInfo pass{};
        pass.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
        pass.renderArea = scissor;
        pass.layerCount = 1;
        pass.colorAttachmentCount = 1;
        pass.pColorAttachments = &color;
        vkCmdBeginRendering(commands, &pass);
        vkCmdBindPipeline(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, pipeline);
        vkCmdBindDescriptorSets(commands, VK_PIPELINE_BIND_POINT_GRAPHICS, layout, 0, 2,
                                sets.data(), 0, nullptr);
        vkCmdDraw(commands, 3, 1, 0, 0);
        vkCmdEndRendering(commands);
        gpu.transition(commands, target.image, VK_IMAGE_LAYOUT_GENERAL, VK_IMAGE_LAYOUT_GENERAL);
        VkBufferImageCopy copy{};
        copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
        copy.imageExtent = {kSide, kSide, 1};
        vkCmdCopyImageToBuffer(commands, target.image, VK_IMAGE_LAYOUT_GENERAL, readBack.buffer, 1,
                               &copy);
        if (gpu.finish(commands)) {
            std::array<float, 4> pixel{};
            std::memcpy(pixel.data(), readBack.data, sizeof(pixel));
            result = pixel;
        } else {
            problem = "the drawing is refused";
        }
        gpu.release(readBack);
        gpu.release(target);
    }
    vkDestroyPipeline(gpu.device, pipeline, nullptr);
    vkDestroyShaderModule(gpu.device, shader, nullptr);
    vkDestroyDescriptorPool(gpu.device, descriptorPool, nullptr);
    vkDestroyPipelineLayout(gpu.device, layout, nullptr);
    for (const auto setLayout : layouts) {
        vkDestroyDescriptorSetLayout(gpu.device, setLayout, nullptr);
    }
    for (const auto sampler : samplers) {
        vkDestroySampler(gpu.device, sampler, nullptr);
    }
    for (const auto& image : images) {
        gpu.release(image);
    }
    for (const auto& buffer : buffers) {
        gpu.release(buffer);
    }
    return result;
}

} // namespace vantor::tests
