#include "platform/linux/gpu/vulkan_device.h"

#include "platform/linux/gpu/vulkan_uploader.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <limits>

namespace vantor::vulkan {
namespace {

constexpr VkImageUsageFlags kDrawnUsage =
    VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;
constexpr VkImageUsageFlags kReadUsage =
    VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;

bool makeZeros(DeviceParts& parts) {
    Zeros& zeros = parts.zeros;
    zeros.buffer = Buffer::create(parts.context, kZeroBytes, VK_BUFFER_USAGE_STORAGE_BUFFER_BIT);
    zeros.image = DeviceImage::create(
        parts.context,
        {.format = VK_FORMAT_B8G8R8A8_UNORM, .width = 1, .height = 1, .usage = kReadUsage});
    VkSamplerCreateInfo sampler{};
    sampler.sType = VK_STRUCTURE_TYPE_SAMPLER_CREATE_INFO;
    if (!zeros.buffer || !zeros.image ||
        vkCreateSampler(parts.context->device(), &sampler, nullptr, &zeros.sampler) != VK_SUCCESS) {
        return false;
    }
    std::memset(zeros.buffer->bytes().data(), 0, zeros.buffer->bytes().size());
    const std::array<std::uint8_t, 4> texel{};
    return parts.uploader->upload(*zeros.image, {.width = 1, .height = 1}, texel, texel.size());
}

} // namespace

Result<std::shared_ptr<VulkanDevice>, std::string> VulkanDevice::create() {
    auto context = Context::create();
    if (!context) {
        return Failure{context.error()};
    }
    auto parts = std::make_shared<DeviceParts>();
    parts->context = *context;
    parts->uploader = Uploader::create(*context);
    if (!parts->uploader || !makeZeros(*parts)) {
        return Failure{std::string("the Vulkan device has no memory")};
    }
    parts->completion = std::make_unique<CompletionThread>(*context);
    return std::shared_ptr<VulkanDevice>(new VulkanDevice(std::move(parts)));
}

std::uint64_t VulkanDevice::registryID() const {
    std::uint64_t id = 0;
    std::memcpy(&id, parts_->context->deviceUUID().data(), sizeof(id));
    return id;
}

std::shared_ptr<gpu::CommandQueue> VulkanDevice::newCommandQueue() {
    return std::make_shared<VulkanQueue>(parts_);
}

Result<std::shared_ptr<gpu::Library>> VulkanDevice::newLibrary(std::string_view source) {
    return VulkanLibrary::compile(parts_->context, source);
}

Result<std::shared_ptr<gpu::RenderPipelineState>>
VulkanDevice::newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) {
    return VulkanPipeline::create(parts_->context, parts_->zeros, descriptor);
}

std::shared_ptr<gpu::Texture> VulkanDevice::newTexture(const gpu::TextureDescriptor& descriptor) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
    const VkFormat format = formatOf(descriptor.pixelFormat);
    if (format == VK_FORMAT_UNDEFINED || descriptor.width > kLargest ||
        descriptor.height > kLargest) {
        return nullptr;
    }
    auto image = DeviceImage::create(
        parts_->context,
        {.format = format,
         .width = static_cast<std::uint32_t>(descriptor.width),
         .height = static_cast<std::uint32_t>(descriptor.height),
         .usage = descriptor.usage == gpu::TextureUsage::renderTarget ? kDrawnUsage : kReadUsage});
    if (!image) {
        return nullptr;
    }
    return std::make_shared<VulkanTexture>(parts_->context, parts_->uploader, std::move(image),
                                           descriptor.pixelFormat);
}

std::shared_ptr<VulkanTexture> VulkanDevice::newSharedTexture(std::uint32_t width,
                                                              std::uint32_t height) {
    if (!parts_->context->canShareMemory()) {
        return nullptr;
    }
    auto image = DeviceImage::create(parts_->context, {.format = VK_FORMAT_B8G8R8A8_UNORM,
                                                       .width = width,
                                                       .height = height,
                                                       .usage = kDrawnUsage,
                                                       .sharing = Sharing::exported});
    if (!image) {
        return nullptr;
    }
    return std::make_shared<VulkanTexture>(parts_->context, parts_->uploader, std::move(image),
                                           gpu::PixelFormat::bgra8Unorm);
}

std::shared_ptr<gpu::Device> VulkanSystem::createSystemDefaultDevice() {
    if (!tried_) {
        tried_ = true;
        if (auto made = VulkanDevice::create()) {
            device_ = std::move(*made);
        } else {
            std::fprintf(stderr, "no GPU: %s\n", made.error().c_str());
        }
    }
    return device_;
}

} // namespace vantor::vulkan
