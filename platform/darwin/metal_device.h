#pragma once

#include "platform/darwin/native_ref.h"
#include "platform/gpu.h"

namespace vantor::darwin {

/// MTLTexture.
class MetalTexture : public gpu::Texture, public NativeHolder {
  public:
    explicit MetalTexture(NativeRef texture) : texture_(std::move(texture)) {}

    const NativeRef& native() const override { return texture_; }
    std::uint64_t width() const override;
    std::uint64_t height() const override;
    gpu::PixelFormat pixelFormat() const override;

  private:
    void getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                      const gpu::Region& region) const override;
    void replaceRegionImpl(const gpu::Region& region, std::span<const std::uint8_t> bytes,
                           std::size_t bytesPerRow) override;

    NativeRef texture_;
};

/// MTLFunction or MTLRenderPipelineState, as `Base` says.
template <typename Base>
class MetalObject : public Base {
  public:
    explicit MetalObject(NativeRef object) : object_(std::move(object)) {}
    const NativeRef& native() const { return object_; }

  private:
    NativeRef object_;
};
using MetalFunction = MetalObject<gpu::Function>;
using MetalPipeline = MetalObject<gpu::RenderPipelineState>;

/// MTLDevice.
class MetalDevice : public gpu::Device, public NativeHolder {
  public:
    explicit MetalDevice(NativeRef device) : device_(std::move(device)) {}

    const NativeRef& native() const override { return device_; }
    std::uint64_t registryID() const override;
    std::shared_ptr<gpu::CommandQueue> newCommandQueue() override;
    Result<std::shared_ptr<gpu::Library>> newLibrary(std::string_view source) override;
    Result<std::shared_ptr<gpu::RenderPipelineState>>
    newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) override;
    std::shared_ptr<gpu::Texture> newTexture(const gpu::TextureDescriptor& descriptor) override;

  private:
    NativeRef device_;
};

class MetalSystem : public gpu::System {
  public:
    std::shared_ptr<gpu::Device> createSystemDefaultDevice() override;

  private:
    std::shared_ptr<gpu::Device> device_;
};

/// Over an MTLCommandQueue.
std::shared_ptr<gpu::CommandQueue> makeMetalQueue(NativeRef queue);

/// MTLDrawable with its texture. Given back, it is released, and so is free for its layer.
class MetalDrawable : public gpu::Drawable {
  public:
    MetalDrawable(NativeRef drawable, NativeRef texture)
        : drawable_(std::move(drawable)), texture_(std::move(texture)) {}

    const NativeRef& native() const { return drawable_; }
    gpu::Texture& texture() override { return texture_; }

  private:
    void giveBack() override { delete this; }

    NativeRef drawable_;
    MetalTexture texture_;
};

} // namespace vantor::darwin
