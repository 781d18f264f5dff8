#include "platform/linux/gpu/vulkan_texture.h"

#include "platform/linux/gpu/vulkan_uploader.h"

namespace vantor::vulkan {

VkFormat formatOf(gpu::PixelFormat format) {
    switch (format) {
    case gpu::PixelFormat::bgra8Unorm:
        return VK_FORMAT_B8G8R8A8_UNORM;
    case gpu::PixelFormat::r32Float:
        return VK_FORMAT_R32_SFLOAT;
    case gpu::PixelFormat::invalid:
        break;
    }
    return VK_FORMAT_UNDEFINED;
}

VulkanTexture::VulkanTexture(std::shared_ptr<Context> context, std::shared_ptr<Uploader> uploader,
                             std::unique_ptr<DeviceImage> image, gpu::PixelFormat format)
    : context_(std::move(context)), uploader_(std::move(uploader)), image_(std::move(image)),
      format_(format) {}

void VulkanTexture::getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                                 const gpu::Region& region) const {
    // A lost device leaves the caller's bytes as they are, as a failed render does.
    static_cast<void>(uploader_->download(*image_, region, bytes, bytesPerRow));
}

void VulkanTexture::replaceRegionImpl(const gpu::Region& region,
                                      std::span<const std::uint8_t> bytes,
                                      std::size_t bytesPerRow) {
    static_cast<void>(uploader_->upload(*image_, region, bytes, bytesPerRow));
}

} // namespace vantor::vulkan
