#pragma once
// Copies between the CPU and images, outside of render passes. Main thread.

#include "platform/gpu.h"
#include "platform/linux/gpu/vulkan_resources.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vantor::vulkan {

/// Of every format that textures have.
constexpr std::size_t kBytesPerTexel = 4;

class Uploader {
  public:
    /// Null when the device cannot make command buffers.
    static std::shared_ptr<Uploader> create(std::shared_ptr<Context> context);
    ~Uploader();
    Uploader(const Uploader&) = delete;
    Uploader& operator=(const Uploader&) = delete;

    /// Queues a copy of rows of 4-byte texels into the image, which is ready to be sampled after
    /// it. Returns at once. False when the device has no memory for it.
    bool upload(DeviceImage& image, const gpu::Region& region, std::span<const std::uint8_t> bytes,
                std::size_t bytesPerRow);

    /// Reads rows of 4-byte texels out of the image; blocks until the device is done with it.
    bool download(DeviceImage& image, const gpu::Region& region, std::span<std::uint8_t> bytes,
                  std::size_t bytesPerRow);

  private:
    /// An upload that the device may still be reading.
    struct InFlight {
        std::uint64_t point;
        VkCommandBuffer commands;
        std::unique_ptr<Buffer> staging;
    };

    explicit Uploader(std::shared_ptr<Context> context) : context_(std::move(context)) {}
    VkCommandBuffer begin();
    void retire();

    std::shared_ptr<Context> context_;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    std::vector<InFlight> inFlight_;
};

} // namespace vantor::vulkan
