#include "platform/linux/gpu/vulkan_device.h"

#include <cstdio>
#include <cstring>
#include <limits>

namespace vantor::vulkan {
namespace {

constexpr VkImageUsageFlags kDrawnUsage =
    VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;
constexpr VkImageUsageFlags kReadUsage =
    VK_IMAGE_USAGE_SAMPLED_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;

/// The end of a pipeline's first draw: what the driver compiled for it is written to the cache's
/// file, here and not on the main thread.
class WarmUpEnd : public Awaiting {
  public:
    WarmUpEnd(std::shared_ptr<PipelineCache> cache, std::shared_ptr<gpu::Texture> target)
        : cache_(std::move(cache)), target_(std::move(target)) {}
    std::uint64_t finished(double) override {
        cache_->store();
        return 0;
    }

  private:
    std::shared_ptr<PipelineCache> cache_;
    /// Drawn into until then.
    std::shared_ptr<gpu::Texture> target_;
};

} // namespace

Result<std::shared_ptr<VulkanDevice>, std::string> VulkanDevice::create(DeviceOptions options) {
    auto life = DeviceLife::create(std::move(options));
    if (!life) {
        return Failure{life.error()};
    }
    return std::shared_ptr<VulkanDevice>(new VulkanDevice(*std::move(life)));
}

VulkanDevice::VulkanDevice(std::shared_ptr<DeviceLife> life)
    : life_(std::move(life)), warmUps_(life_) {
    const DeviceUUID& device = life_->current()->context->deviceUUID();
    std::memcpy(&registryID_, device.data(), sizeof(registryID_));
}

std::shared_ptr<gpu::CommandQueue> VulkanDevice::newCommandQueue() {
    return std::make_shared<VulkanQueue>(life_);
}

Result<std::shared_ptr<gpu::Library>> VulkanDevice::newLibrary(std::string_view source) {
    return VulkanLibrary::compile(source);
}

Result<std::shared_ptr<gpu::RenderPipelineState>>
VulkanDevice::newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) {
    const std::shared_ptr<DeviceParts>& parts = life_->current();
    if (!parts) {
        return Failure{Error{.domain = kErrorDomain, .code = 1, .message = "the GPU is lost"}};
    }
    auto pipeline = VulkanPipeline::create(*parts, descriptor);
    if (pipeline) {
        warmUp(*parts, *pipeline, descriptor.colorPixelFormat);
    }
    return pipeline;
}

void VulkanDevice::warmUp(const DeviceParts& parts,
                          const std::shared_ptr<gpu::RenderPipelineState>& pipeline,
                          gpu::PixelFormat format) {
    const auto target = newTexture({.pixelFormat = format, .width = 1, .height = 1});
    gpu::CommandBuffer* const commands = target ? warmUps_.commandBuffer() : nullptr;
    if (commands == nullptr) {
        return;
    }
    if (auto* const encoder = commands->renderCommandEncoder({.texture = target.get()})) {
        encoder->setRenderPipelineState(pipeline);
        encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
        encoder->endEncoding();
    }
    commands->commit();
    parts.completion->notify(parts.context->lastPoint(),
                             std::make_shared<WarmUpEnd>(parts.pipelineCache, target));
}

std::shared_ptr<gpu::Texture> VulkanDevice::newTexture(const gpu::TextureDescriptor& descriptor) {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint32_t>::max();
    const VkFormat format = formatOf(descriptor.pixelFormat);
    if (format == VK_FORMAT_UNDEFINED || descriptor.width > kLargest ||
        descriptor.height > kLargest) {
        return nullptr;
    }
    const std::shared_ptr<DeviceParts>& parts = life_->current();
    if (!parts) {
        return nullptr;
    }
    return VulkanTexture::create(
        *parts,
        {.format = format,
         .width = static_cast<std::uint32_t>(descriptor.width),
         .height = static_cast<std::uint32_t>(descriptor.height),
         .usage = descriptor.usage == gpu::TextureUsage::renderTarget ? kDrawnUsage : kReadUsage},
        descriptor.pixelFormat);
}

std::shared_ptr<VulkanTexture> VulkanDevice::newSharedTexture(std::uint32_t width,
                                                              std::uint32_t height) {
    const std::shared_ptr<DeviceParts>& parts = life_->current();
    if (!parts) {
        return nullptr;
    }
    const Sharing sharing = parts->context->canShareMemory() ? Sharing::exported : Sharing::none;
    return VulkanTexture::create(*parts,
                                 {.format = VK_FORMAT_B8G8R8A8_UNORM,
                                  .width = width,
                                  .height = height,
                                  .usage = kDrawnUsage,
                                  .sharing = sharing},
                                 gpu::PixelFormat::bgra8Unorm);
}

std::shared_ptr<gpu::Device> VulkanSystem::createSystemDefaultDevice() {
    if (!tried_) {
        tried_ = true;
        DeviceOptions options = options_();
        const auto report = options.report;
        if (auto made = VulkanDevice::create(std::move(options))) {
            device_ = *std::move(made);
        } else if (const std::string sentence = "no GPU: " + made.error(); report) {
            report(sentence);
        } else {
            std::fprintf(stderr, "%s\n", sentence.c_str());
        }
    }
    return device_;
}

} // namespace vantor::vulkan
