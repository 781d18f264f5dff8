#pragma once
// Recording and submitting. Command buffers, their uniform memory and their references are
// recycled, so that a steady frame allocates nothing. Main thread.

#include "platform/gpu.h"
#include "platform/linux/gpu/banded_picture.h"
#include "platform/linux/gpu/device_parts.h"
#include "platform/linux/gpu/vulkan_pipeline.h"
#include "platform/linux/gpu/vulkan_texture.h"

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace vantor::vulkan {

/// A drawable whose picture is a Vulkan image that other processes may read.
class VulkanDrawable : public gpu::Drawable,
                       public Awaiting,
                       public std::enable_shared_from_this<VulkanDrawable> {};

class VulkanEncoder : public gpu::RenderCommandEncoder {
  public:
    /// Uniform bytes that one command buffer can hold.
    static constexpr std::size_t kUniformBytes = 16 * gpu::kMaxInlineBytes;

    explicit VulkanEncoder(const DeviceParts& parts) : parts_(parts) {}

    /// Starts the pass, one horizontal band of it in each of the command buffers. The references
    /// that it takes are kept in `kept`, the bytes in `uniforms`.
    void begin(std::span<const VkCommandBuffer> bands, const gpu::RenderPassDescriptor& pass,
               std::vector<std::shared_ptr<const void>>& kept, const Buffer& uniforms,
               std::size_t& uniformsUsed);

  private:
    /// Where a fragment buffer's bytes stand in the uniform memory; size 0 is unbound.
    struct Bound {
        VkDeviceSize offset = 0;
        VkDeviceSize size = 0;
    };

    void
    setRenderPipelineStateImpl(const std::shared_ptr<gpu::RenderPipelineState>& pipeline) override;
    void setFragmentBytesImpl(std::span<const std::uint8_t> bytes, std::uint32_t index) override;
    void setFragmentTextureImpl(const std::shared_ptr<gpu::Texture>& texture,
                                std::uint32_t index) override;
    void drawPrimitivesImpl(gpu::PrimitiveType type, std::uint32_t vertexStart,
                            std::uint32_t vertexCount) override;
    void endEncodingImpl() override;
    void beginBand(VkCommandBuffer commands, const gpu::RenderPassDescriptor& pass,
                   const DeviceImage& image, const VkRect2D& area) const;
    void pushResources();

    const DeviceParts& parts_;
    std::span<const VkCommandBuffer> bands_;
    std::vector<std::shared_ptr<const void>>* kept_ = nullptr;
    const Buffer* uniforms_ = nullptr;
    std::size_t* uniformsUsed_ = nullptr;
    /// Null without a pipeline that this device can draw with.
    const PipelineObjects* pipeline_ = nullptr;
    std::array<Bound, gpu::kMaxBufferIndex + 1> buffers_{};
    std::array<DeviceImage*, gpu::kMaxTextureIndex + 1> textures_{};
};

class VulkanCommandBuffer : public gpu::CommandBuffer {
  public:
    /// Null when the device cannot make one.
    static std::unique_ptr<VulkanCommandBuffer> create(std::shared_ptr<const DeviceParts> parts);
    ~VulkanCommandBuffer() override;

    /// Neither recording nor under way.
    bool isIdle() const;
    bool isOf(const DeviceParts& parts) const { return parts_.get() == &parts; }
    /// Makes an idle buffer record.
    bool begin();

  private:
    explicit VulkanCommandBuffer(std::shared_ptr<const DeviceParts> parts)
        : parts_(std::move(parts)), encoder_(*parts_) {}
    gpu::RenderCommandEncoder*
    renderCommandEncoderImpl(const gpu::RenderPassDescriptor& pass) override;
    void presentDrawableImpl(gpu::DrawableRef drawable) override;
    void commitImpl() override;
    void waitUntilCompletedImpl() override;
    /// Has that many command buffers recording.
    bool record(std::size_t count);
    /// `shown` is told when the work is done. False when the device is lost.
    bool submit(const std::shared_ptr<Awaiting>& shown);

    std::shared_ptr<const DeviceParts> parts_;
    VulkanEncoder encoder_;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    /// The first is recorded always; further ones hold the further bands of a picture.
    std::vector<VkCommandBuffer> commands_;
    std::size_t used_ = 0;
    /// The last picture, if it was drawn in bands.
    std::shared_ptr<BandedPicture> banded_;
    std::unique_ptr<Buffer> uniforms_;
    std::size_t uniformsUsed_ = 0;
    /// What the GPU still reads.
    std::vector<std::shared_ptr<const void>> kept_;
    VulkanDrawable* presented_ = nullptr;
    std::uint64_t point_ = 0;
    bool recording_ = false;
};

class VulkanQueue : public gpu::CommandQueue {
  public:
    /// Buffers that may be under way at once.
    static constexpr std::size_t kMaxBuffers = 256;

    explicit VulkanQueue(std::shared_ptr<DeviceLife> life) : life_(std::move(life)) {}
    gpu::CommandBuffer* commandBuffer() override;

  private:
    std::shared_ptr<DeviceLife> life_;
    std::vector<std::unique_ptr<VulkanCommandBuffer>> buffers_;
};

} // namespace vantor::vulkan
