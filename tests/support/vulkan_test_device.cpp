#include "tests/support/vulkan_test_device.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace vantor::tests {

VulkanTestDevice::~VulkanTestDevice() {
    if (device_ != VK_NULL_HANDLE) {
        vkDestroyCommandPool(device_, pool_, nullptr);
        vkDestroyDevice(device_, nullptr);
    }
    if (instance_ != VK_NULL_HANDLE) {
        vkDestroyInstance(instance_, nullptr);
    }
}

bool VulkanTestDevice::open() {
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
    if (vkCreateInstance(&instanceInfo, nullptr, &instance_) != VK_SUCCESS) {
        return false;
    }
    uint32_t count = 1;
    if (vkEnumeratePhysicalDevices(instance_, &count, &physical_) < VK_SUCCESS || count == 0) {
        return false;
    }
    vkGetPhysicalDeviceMemoryProperties(physical_, &memory_);
    VkPhysicalDeviceVulkan11Features features11{};
    features11.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_1_FEATURES;
    VkPhysicalDeviceVulkan12Features features12{};
    features12.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_2_FEATURES;
    features12.pNext = &features11;
    VkPhysicalDeviceVulkan13Features features13{};
    features13.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES;
    features13.pNext = &features12;
    VkPhysicalDeviceFeatures2 features{};
    features.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2;
    features.pNext = &features13;
    vkGetPhysicalDeviceFeatures2(physical_, &features);
    const float priority = 1.0F;
    VkDeviceQueueCreateInfo queueInfo{};
    queueInfo.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queueInfo.queueCount = 1;
    queueInfo.pQueuePriorities = &priority;
    VkDeviceCreateInfo deviceInfo{};
    deviceInfo.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    deviceInfo.pNext = &features;
    deviceInfo.queueCreateInfoCount = 1;
    deviceInfo.pQueueCreateInfos = &queueInfo;
    if (vkCreateDevice(physical_, &deviceInfo, nullptr, &device_) != VK_SUCCESS) {
        return false;
    }
    vkGetDeviceQueue(device_, 0, 0, &queue_);
    VkCommandPoolCreateInfo poolInfo{};
    poolInfo.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    return vkCreateCommandPool(device_, &poolInfo, nullptr, &pool_) == VK_SUCCESS;
}

uint32_t VulkanTestDevice::memoryType(uint32_t bits, VkMemoryPropertyFlags wanted) const {
    for (uint32_t i = 0; i < memory_.memoryTypeCount; ++i) {
        if ((bits & (1U << i)) != 0 && (memory_.memoryTypes[i].propertyFlags & wanted) == wanted) {
            return i;
        }
    }
    return 0;
}

VulkanTestDevice::Buffer VulkanTestDevice::makeBuffer(VkDeviceSize size, VkBufferUsageFlags usage) {
    Buffer result;
    VkBufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
    info.size = std::max<VkDeviceSize>(size, 16);
    info.usage = usage;
    vkCreateBuffer(device_, &info, nullptr, &result.buffer);
    VkMemoryRequirements needs{};
    vkGetBufferMemoryRequirements(device_, result.buffer, &needs);
    VkMemoryAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocation.allocationSize = needs.size;
    allocation.memoryTypeIndex =
        memoryType(needs.memoryTypeBits,
                   VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT);
    vkAllocateMemory(device_, &allocation, nullptr, &result.memory);
    vkBindBufferMemory(device_, result.buffer, result.memory, 0);
    void* data = nullptr;
    vkMapMemory(device_, result.memory, 0, VK_WHOLE_SIZE, 0, &data);
    result.data = static_cast<std::byte*>(data);
    return result;
}

void VulkanTestDevice::release(const Buffer& buffer) {
    vkDestroyBuffer(device_, buffer.buffer, nullptr);
    vkFreeMemory(device_, buffer.memory, nullptr);
}

VulkanTestDevice::Image VulkanTestDevice::makeImage(const ImageShape& shape) {
    Image result;
    VkImageCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    const bool cube =
        shape.view == VK_IMAGE_VIEW_TYPE_CUBE || shape.view == VK_IMAGE_VIEW_TYPE_CUBE_ARRAY;
    info.flags = cube ? VK_IMAGE_CREATE_CUBE_COMPATIBLE_BIT : 0;
    info.imageType = shape.type;
    info.format = shape.format;
    info.extent = {kSide, shape.height, shape.depth};
    info.mipLevels = shape.levels;
    info.arrayLayers = shape.layers;
    info.samples = shape.samples;
    info.usage = shape.usage;
    vkCreateImage(device_, &info, nullptr, &result.image);
    VkMemoryRequirements needs{};
    vkGetImageMemoryRequirements(device_, result.image, &needs);
    VkMemoryAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    allocation.allocationSize = needs.size;
    allocation.memoryTypeIndex = memoryType(needs.memoryTypeBits, 0);
    vkAllocateMemory(device_, &allocation, nullptr, &result.memory);
    vkBindImageMemory(device_, result.image, result.memory, 0);
    VkImageViewCreateInfo view{};
    view.sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO;
    view.image = result.image;
    view.viewType = shape.view;
    view.format = shape.format;
    const VkImageAspectFlags aspect = shape.format == VK_FORMAT_D32_SFLOAT
                                          ? VK_IMAGE_ASPECT_DEPTH_BIT
                                          : VK_IMAGE_ASPECT_COLOR_BIT;
    view.subresourceRange = {aspect, 0, VK_REMAINING_MIP_LEVELS, 0, VK_REMAINING_ARRAY_LAYERS};
    vkCreateImageView(device_, &view, nullptr, &result.view);
    return result;
}

void VulkanTestDevice::release(const Image& image) {
    vkDestroyImageView(device_, image.view, nullptr);
    vkDestroyImage(device_, image.image, nullptr);
    vkFreeMemory(device_, image.memory, nullptr);
}

VulkanTestDevice::Image VulkanTestDevice::makeTexture(const msl::TextureBinding& binding) {
    ImageShape shape;
    shape.usage = VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
    shape.levels = 3;
    if (binding.writable) {
        shape.usage |= VK_IMAGE_USAGE_STORAGE_BIT;
        shape.levels = 1;
    }
    shape.format =
        binding.depth                                               ? VK_FORMAT_D32_SFLOAT
        : binding.component == msl::TextureComponent::intComponent  ? VK_FORMAT_R32G32B32A32_SINT
        : binding.component == msl::TextureComponent::uintComponent ? VK_FORMAT_R32G32B32A32_UINT
                                                                    : VK_FORMAT_R32G32B32A32_SFLOAT;
    switch (binding.shape) {
    case msl::TextureShape::texture1d:
        shape.type = VK_IMAGE_TYPE_1D;
        shape.view = VK_IMAGE_VIEW_TYPE_1D;
        shape.height = 1;
        break;
    case msl::TextureShape::texture2d:
        break;
    case msl::TextureShape::texture3d:
        shape.type = VK_IMAGE_TYPE_3D;
        shape.view = VK_IMAGE_VIEW_TYPE_3D;
        shape.depth = kSide;
        break;
    case msl::TextureShape::textureCube:
        shape.view = VK_IMAGE_VIEW_TYPE_CUBE;
        shape.layers = 6;
        break;
    case msl::TextureShape::texture2dArray:
        shape.view = VK_IMAGE_VIEW_TYPE_2D_ARRAY;
        shape.layers = 3;
        break;
    case msl::TextureShape::textureCubeArray:
        shape.view = VK_IMAGE_VIEW_TYPE_CUBE_ARRAY;
        shape.layers = 12;
        break;
    case msl::TextureShape::texture1dArray:
        shape.type = VK_IMAGE_TYPE_1D;
        shape.view = VK_IMAGE_VIEW_TYPE_1D_ARRAY;
        shape.height = 1;
        shape.layers = 3;
        break;
    case msl::TextureShape::texture2dMultisampleArray:
        shape.view = VK_IMAGE_VIEW_TYPE_2D_ARRAY;
        shape.layers = 3;
        [[fallthrough]];
    case msl::TextureShape::texture2dMultisample: {
        shape.samples = VK_SAMPLE_COUNT_4_BIT;
        shape.levels = 1;
        if (binding.depth) {
            shape.usage |= VK_IMAGE_USAGE_DEPTH_STENCIL_ATTACHMENT_BIT;
        } else {
            shape.usage |= VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT;
        }
        const Image image = makeImage(shape);
        clear(image, binding.depth);
        return image;
    }
    case msl::TextureShape::textureBuffer:
        break; // a buffer, which no test draws with
    }
    const Image image = makeImage(shape);
    fill(image, shape, binding.component);
    return image;
}

void VulkanTestDevice::fill(const Image& image, const ImageShape& shape,
                            msl::TextureComponent component) {
    const bool depth = shape.format == VK_FORMAT_D32_SFLOAT;
    const VkImageAspectFlags aspect = depth ? VK_IMAGE_ASPECT_DEPTH_BIT : VK_IMAGE_ASPECT_COLOR_BIT;
    const Buffer staging = makeBuffer(size_t{kSide} * kSide * kSide * 4 * 16 * shape.levels,
                                      VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
    std::byte* next = staging.data;
    const auto put = [&](float number) {
        if (component == msl::TextureComponent::floatComponent) {
            std::memcpy(next, &number, sizeof(number));
        } else {
            const auto whole = static_cast<uint32_t>(number);
            std::memcpy(next, &whole, sizeof(whole));
        }
        next += sizeof(number);
    };
    std::vector<VkBufferImageCopy> copies;
    for (uint32_t level = 0; level < shape.levels; ++level) {
        const auto side = [&](uint32_t base) { return std::max(base >> level, 1U); };
        VkBufferImageCopy copy{};
        copy.bufferOffset = static_cast<VkDeviceSize>(next - staging.data);
        copy.imageSubresource = {aspect, level, 0, shape.layers};
        copy.imageExtent = {side(kSide), side(shape.height), side(shape.depth)};
        copies.push_back(copy);
        for (uint32_t z = 0; z < shape.layers * copy.imageExtent.depth; ++z) {
            for (uint32_t y = 0; y < copy.imageExtent.height; ++y) {
                for (uint32_t x = 0; x < copy.imageExtent.width; ++x) {
                    const auto number = static_cast<float>(x + kSide * y + kSide * kSide * z);
                    if (depth) {
                        put(number / 128);
                        continue;
                    }
                    put(static_cast<float>(x));
                    put(static_cast<float>(y));
                    put(number);
                    put(static_cast<float>(1 + level));
                }
            }
        }
    }
    VkCommandBuffer commands = begin();
    transition(commands, image.image, aspect, VK_IMAGE_LAYOUT_UNDEFINED,
               VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    vkCmdCopyBufferToImage(commands, staging.buffer, image.image,
                           VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                           static_cast<uint32_t>(copies.size()), copies.data());
    transition(commands, image.image, aspect, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
               VK_IMAGE_LAYOUT_GENERAL);
    finish(commands);
    release(staging);
}

void VulkanTestDevice::clear(const Image& image, bool depth) {
    const VkImageAspectFlags aspect = depth ? VK_IMAGE_ASPECT_DEPTH_BIT : VK_IMAGE_ASPECT_COLOR_BIT;
    const VkImageSubresourceRange all{aspect, 0, VK_REMAINING_MIP_LEVELS, 0,
                                      VK_REMAINING_ARRAY_LAYERS};
    VkCommandBuffer commands = begin();
    transition(commands, image.image, aspect, VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_GENERAL);
    if (depth) {
        const VkClearDepthStencilValue value{0.5F, 0};
        vkCmdClearDepthStencilImage(commands, image.image, VK_IMAGE_LAYOUT_GENERAL, &value, 1,
                                    &all);
    } else {
        const VkClearColorValue value{{1, 2, 3, 4}};
        vkCmdClearColorImage(commands, image.image, VK_IMAGE_LAYOUT_GENERAL, &value, 1, &all);
    }
    transition(commands, image.image, aspect, VK_IMAGE_LAYOUT_GENERAL, VK_IMAGE_LAYOUT_GENERAL);
    finish(commands);
}

VkSampler VulkanTestDevice::makeSampler(const msl::SamplerOptions& options) {
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
    static constexpr VkCompareOp kCompares[] = {VK_COMPARE_OP_NEVER,
                                                VK_COMPARE_OP_LESS,
                                                VK_COMPARE_OP_LESS_OR_EQUAL,
                                                VK_COMPARE_OP_GREATER,
                                                VK_COMPARE_OP_GREATER_OR_EQUAL,
                                                VK_COMPARE_OP_EQUAL,
                                                VK_COMPARE_OP_NOT_EQUAL,
                                                VK_COMPARE_OP_ALWAYS};
    static constexpr VkBorderColor kBorders[] = {VK_BORDER_COLOR_FLOAT_TRANSPARENT_BLACK,
                                                 VK_BORDER_COLOR_FLOAT_OPAQUE_BLACK,
                                                 VK_BORDER_COLOR_FLOAT_OPAQUE_WHITE};
    VkSamplerCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    info.magFilter =
        options.magFilter == msl::SamplerFilter::linear ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
    info.minFilter =
        options.minFilter == msl::SamplerFilter::linear ? VK_FILTER_LINEAR : VK_FILTER_NEAREST;
    info.mipmapMode = options.mipFilter == msl::SamplerMipFilter::linear
                          ? VK_SAMPLER_MIPMAP_MODE_LINEAR
                          : VK_SAMPLER_MIPMAP_MODE_NEAREST;
    info.addressModeU = address(options.sAddress);
    info.addressModeV = address(options.tAddress);
    info.addressModeW = address(options.rAddress);
    info.compareEnable = options.compare == msl::SamplerCompare::never ? VK_FALSE : VK_TRUE;
    info.compareOp = kCompares[static_cast<size_t>(options.compare)];
    info.borderColor = kBorders[static_cast<size_t>(options.border)];
    info.minLod = options.lodMin;
    info.maxLod = options.mipFilter == msl::SamplerMipFilter::none ? 0.0F : options.lodMax;
    info.unnormalizedCoordinates = options.normalizedCoordinates ? VK_FALSE : VK_TRUE;
    VkSampler sampler = VK_NULL_HANDLE;
    vkCreateSampler(device_, &info, nullptr, &sampler);
    return sampler;
}

VkCommandBuffer VulkanTestDevice::begin() {
    VkCommandBufferAllocateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    info.commandPool = pool_;
    info.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    vkAllocateCommandBuffers(device_, &info, &commands);
    VkCommandBufferBeginInfo beginInfo{};
    beginInfo.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    vkBeginCommandBuffer(commands, &beginInfo);
    return commands;
}

bool VulkanTestDevice::finish(VkCommandBuffer commands) {
    vkEndCommandBuffer(commands);
    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &commands;
    const bool good = vkQueueSubmit(queue_, 1, &submit, VK_NULL_HANDLE) == VK_SUCCESS &&
                      vkQueueWaitIdle(queue_) == VK_SUCCESS;
    vkFreeCommandBuffers(device_, pool_, 1, &commands);
    return good;
}

void VulkanTestDevice::transition(VkCommandBuffer commands, VkImage image,
                                  VkImageAspectFlags aspect, VkImageLayout from, VkImageLayout to) {
    VkImageMemoryBarrier barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER;
    barrier.srcAccessMask = VK_ACCESS_MEMORY_WRITE_BIT;
    barrier.dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT;
    barrier.oldLayout = from;
    barrier.newLayout = to;
    barrier.image = image;
    barrier.subresourceRange = {aspect, 0, VK_REMAINING_MIP_LEVELS, 0, VK_REMAINING_ARRAY_LAYERS};
    vkCmdPipelineBarrier(commands, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0, nullptr, 0, nullptr, 1,
                         &barrier);
}

} // namespace vantor::tests
