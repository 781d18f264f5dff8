#include "platform/linux/gpu/vulkan_texture.h"

#include <algorithm>
#include <cstddef>

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

std::shared_ptr<VulkanTexture> VulkanTexture::create(const DeviceParts& parts,
                                                     const ImageDescription& description,
                                                     gpu::PixelFormat format) {
    auto image = DeviceImage::create(parts.context, description);
    return image ? std::shared_ptr<VulkanTexture>(
                       new VulkanTexture(parts.uploader, std::move(image), format))
                 : nullptr;
}

DeviceImage* VulkanTexture::imageFor(const DeviceParts& parts) {
    if (image_->context() != parts.context) {
        auto again = DeviceImage::create(parts.context, image_->description());
        if (!again) {
            return nullptr;
        }
        image_ = std::move(again);
        uploader_ = parts.uploader;
        if (!written_.empty() && !uploader_->upload(*image_, {.width = width(), .height = height()},
                                                    written_, width() * kBytesPerTexel)) {
            return nullptr;
        }
    }
    return image_.get();
}

void VulkanTexture::getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                                 const gpu::Region& region) const {
    // A lost device leaves the caller's bytes as they are, as a failed render does.
    static_cast<void>(uploader_->download(*image_, region, bytes, bytesPerRow));
}

void VulkanTexture::replaceRegionImpl(const gpu::Region& region,
                                      std::span<const std::uint8_t> bytes,
                                      std::size_t bytesPerRow) {
    written_.resize(width() * height() * kBytesPerTexel);
    for (std::size_t y = 0; y < region.height; ++y) {
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(y * bytesPerRow),
                    region.width * kBytesPerTexel,
                    written_.begin() + static_cast<std::ptrdiff_t>(
                                           ((region.y + y) * width() + region.x) * kBytesPerTexel));
    }
    // On a lost device they go up with the next life's image.
    static_cast<void>(uploader_->upload(*image_, region, bytes, bytesPerRow));
}

} // namespace vantor::vulkan
