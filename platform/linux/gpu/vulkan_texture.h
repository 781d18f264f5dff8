#pragma once
// Textures over device images. CPU access goes through a staging buffer; uploads are queued before
// whatever is submitted next and nobody waits for them.

#include "platform/gpu.h"
#include "platform/linux/gpu/vulkan_resources.h"

#include <memory>

namespace vantor::vulkan {

class Uploader;

VkFormat formatOf(gpu::PixelFormat format);

class VulkanTexture : public gpu::Texture {
  public:
    VulkanTexture(std::shared_ptr<Context> context, std::shared_ptr<Uploader> uploader,
                  std::unique_ptr<DeviceImage> image, gpu::PixelFormat format);

    std::uint64_t width() const override { return image_->width(); }
    std::uint64_t height() const override { return image_->height(); }
    gpu::PixelFormat pixelFormat() const override { return format_; }
    DeviceImage& image() const { return *image_; }

  private:
    void getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                      const gpu::Region& region) const override;
    void replaceRegionImpl(const gpu::Region& region, std::span<const std::uint8_t> bytes,
                           std::size_t bytesPerRow) override;

    std::shared_ptr<Context> context_;
    std::shared_ptr<Uploader> uploader_;
    std::unique_ptr<DeviceImage> image_;
    gpu::PixelFormat format_;
};

} // namespace vantor::vulkan
