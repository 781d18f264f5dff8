#pragma once
// Textures over device images. CPU access goes through a staging buffer; uploads are queued before
// whatever is submitted next and nobody waits for them.

#include "platform/gpu.h"
#include "platform/linux/gpu/device_parts.h"

#include <memory>
#include <vector>

namespace vantor::vulkan {

VkFormat formatOf(gpu::PixelFormat format);

class VulkanTexture : public gpu::Texture {
  public:
    /// Null when the device cannot make it.
    static std::shared_ptr<VulkanTexture>
    create(const DeviceParts& parts, const ImageDescription& description, gpu::PixelFormat format);

    std::uint64_t width() const override { return image_->width(); }
    std::uint64_t height() const override { return image_->height(); }
    gpu::PixelFormat pixelFormat() const override { return format_; }

    /// Horizontal bands that pictures are drawn into this in, one after the other; 1 is the whole.
    std::uint32_t bands() const { return bands_; }
    void setBands(std::uint32_t bands) { bands_ = bands; }

    DeviceImage& image() const { return *image_; }
    /// The image with what the CPU wrote, on that life of the device: made again when the device
    /// was replaced. Null when that cannot be done.
    DeviceImage* imageFor(const DeviceParts& parts);

  private:
    VulkanTexture(std::shared_ptr<Uploader> uploader, std::unique_ptr<DeviceImage> image,
                  gpu::PixelFormat format)
        : uploader_(std::move(uploader)), image_(std::move(image)), format_(format) {}
    void getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                      const gpu::Region& region) const override;
    void replaceRegionImpl(const gpu::Region& region, std::span<const std::uint8_t> bytes,
                           std::size_t bytesPerRow) override;

    std::shared_ptr<Uploader> uploader_;
    std::unique_ptr<DeviceImage> image_;
    gpu::PixelFormat format_;
    std::uint32_t bands_ = 1;
    /// What the CPU wrote, rows without padding; empty until it does.
    std::vector<std::uint8_t> written_;
};

} // namespace vantor::vulkan
