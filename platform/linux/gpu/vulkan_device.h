#pragma once
// The GPU of the seam over one Vulkan device.

#include "platform/gpu.h"
#include "platform/linux/gpu/vulkan_commands.h"

#include <functional>
#include <memory>
#include <string>

namespace vantor::vulkan {

class VulkanDevice : public gpu::Device {
  public:
    static Result<std::shared_ptr<VulkanDevice>, std::string> create(DeviceOptions options = {});

    /// Of the device that was made first: what is kept by it stays valid when the device is lost
    /// and replaced.
    std::uint64_t registryID() const override { return registryID_; }
    std::shared_ptr<gpu::CommandQueue> newCommandQueue() override;
    Result<std::shared_ptr<gpu::Library>> newLibrary(std::string_view source) override;
    /// Draws with the new pipeline once, out of sight: software devices compile at the first draw,
    /// on threads of their own, and the first picture then does not wait for that.
    Result<std::shared_ptr<gpu::RenderPipelineState>>
    newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) override;
    std::shared_ptr<gpu::Texture> newTexture(const gpu::TextureDescriptor& descriptor) override;

    /// Null while the device is lost and cannot be replaced.
    std::shared_ptr<DeviceParts> parts() { return life_->current(); }
    /// A texture to draw into whose memory other processes can be given, where the device does such
    /// a thing; null when it cannot be made.
    std::shared_ptr<VulkanTexture> newSharedTexture(std::uint32_t width, std::uint32_t height);

  private:
    explicit VulkanDevice(std::shared_ptr<DeviceLife> life);
    void warmUp(const DeviceParts& parts, const std::shared_ptr<gpu::RenderPipelineState>& pipeline,
                gpu::PixelFormat format);

    std::shared_ptr<DeviceLife> life_;
    std::uint64_t registryID_ = 0;
    VulkanQueue warmUps_;
};

class VulkanSystem : public gpu::System {
  public:
    /// `options` is asked when the device is made.
    explicit VulkanSystem(std::function<DeviceOptions()> options = [] { return DeviceOptions{}; })
        : options_(std::move(options)) {}

    /// Tries to make the device once; without one the reason is reported.
    std::shared_ptr<gpu::Device> createSystemDefaultDevice() override;

  private:
    std::function<DeviceOptions()> options_;
    bool tried_ = false;
    std::shared_ptr<VulkanDevice> device_;
};

} // namespace vantor::vulkan
