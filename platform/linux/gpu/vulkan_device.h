#pragma once
// The GPU of the seam over one Vulkan device.

#include "platform/gpu.h"
#include "platform/linux/gpu/vulkan_commands.h"

#include <memory>
#include <string>

namespace vantor::vulkan {

class VulkanDevice : public gpu::Device {
  public:
    static Result<std::shared_ptr<VulkanDevice>, std::string> create();

    std::uint64_t registryID() const override;
    std::shared_ptr<gpu::CommandQueue> newCommandQueue() override;
    Result<std::shared_ptr<gpu::Library>> newLibrary(std::string_view source) override;
    Result<std::shared_ptr<gpu::RenderPipelineState>>
    newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) override;
    std::shared_ptr<gpu::Texture> newTexture(const gpu::TextureDescriptor& descriptor) override;

    const std::shared_ptr<Context>& context() const { return parts_->context; }
    /// A texture to draw into whose memory other processes can be given; null when it cannot be.
    std::shared_ptr<VulkanTexture> newSharedTexture(std::uint32_t width, std::uint32_t height);

  private:
    explicit VulkanDevice(std::shared_ptr<DeviceParts> parts) : parts_(std::move(parts)) {}

    std::shared_ptr<DeviceParts> parts_;
};

class VulkanSystem : public gpu::System {
  public:
    /// Tries to make the device once; without one the reason is on standard error.
    std::shared_ptr<gpu::Device> createSystemDefaultDevice() override;

  private:
    bool tried_ = false;
    std::shared_ptr<VulkanDevice> device_;
};

} // namespace vantor::vulkan
