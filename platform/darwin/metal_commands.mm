#include "platform/darwin/metal_device.h"

#include "platform/darwin/foundation.h"

#import <Metal/Metal.h>

#include <vector>

namespace vantor::darwin {
namespace {

class MetalEncoder : public gpu::RenderCommandEncoder {
  public:
    void begin(id<MTLRenderCommandEncoder> encoder) {
        encoder_ = encoder;
        beginEncoding();
    }

  private:
    void
    setRenderPipelineStateImpl(const std::shared_ptr<gpu::RenderPipelineState>& pipeline) override {
        [encoder_
            setRenderPipelineState:native<id<MTLRenderPipelineState>>(
                                       static_cast<const MetalPipeline&>(*pipeline).native())];
    }
    void setFragmentBytesImpl(std::span<const std::uint8_t> bytes, std::uint32_t index) override {
        [encoder_ setFragmentBytes:bytes.data() length:bytes.size() atIndex:index];
    }
    void setFragmentTextureImpl(const std::shared_ptr<gpu::Texture>& texture,
                                std::uint32_t index) override {
        id<MTLTexture> bound =
            texture ? native<id<MTLTexture>>(static_cast<const MetalTexture&>(*texture).native())
                    : nil;
        [encoder_ setFragmentTexture:bound atIndex:index];
    }
    void drawPrimitivesImpl(gpu::PrimitiveType type, std::uint32_t vertexStart,
                            std::uint32_t vertexCount) override {
        [encoder_ drawPrimitives:static_cast<MTLPrimitiveType>(type)
                     vertexStart:vertexStart
                     vertexCount:vertexCount];
    }
    void endEncodingImpl() override {
        [encoder_ endEncoding];
        encoder_ = nil;
    }

    id<MTLRenderCommandEncoder> encoder_;
};

class MetalCommandBuffer : public gpu::CommandBuffer {
  public:
    /// The GPU has finished what was committed last.
    bool isIdle() const { return buffer_.status >= MTLCommandBufferStatusCompleted; }
    void begin(id<MTLCommandBuffer> buffer) {
        buffer_ = buffer;
        beginRecording();
    }

  private:
    gpu::RenderCommandEncoder*
    renderCommandEncoderImpl(const gpu::RenderPassDescriptor& pass) override {
        MTLRenderPassDescriptor* wanted = [MTLRenderPassDescriptor renderPassDescriptor];
        MTLRenderPassColorAttachmentDescriptor* color = wanted.colorAttachments[0];
        color.texture =
            native<id<MTLTexture>>(static_cast<const MetalTexture&>(*pass.texture).native());
        color.loadAction = static_cast<MTLLoadAction>(pass.loadAction);
        color.storeAction = static_cast<MTLStoreAction>(pass.storeAction);
        color.clearColor = MTLClearColorMake(pass.clearColor.red, pass.clearColor.green,
                                             pass.clearColor.blue, pass.clearColor.alpha);
        id<MTLRenderCommandEncoder> encoder = [buffer_ renderCommandEncoderWithDescriptor:wanted];
        if (encoder == nil) {
            return nullptr;
        }
        encoder_.begin(encoder);
        return &encoder_;
    }
    void presentDrawableImpl(gpu::DrawableRef drawable) override {
        [buffer_ presentDrawable:native<id<MTLDrawable>>(
                                     static_cast<const MetalDrawable&>(*drawable).native())];
    }
    void commitImpl() override { [buffer_ commit]; }
    void waitUntilCompletedImpl() override { [buffer_ waitUntilCompleted]; }

    id<MTLCommandBuffer> buffer_;
    MetalEncoder encoder_;
};

class MetalQueue : public gpu::CommandQueue {
  public:
    explicit MetalQueue(id<MTLCommandQueue> queue) : queue_(queue) {}

    gpu::CommandBuffer* commandBuffer() override {
        id<MTLCommandBuffer> made = [queue_ commandBuffer];
        if (made == nil) {
            return nullptr;
        }
        MetalCommandBuffer& buffer = idleBuffer();
        buffer.begin(made);
        return &buffer;
    }

  private:
    MetalCommandBuffer& idleBuffer() {
        for (const auto& buffer : buffers_) {
            if (buffer->isIdle()) {
                return *buffer;
            }
        }
        return *buffers_.emplace_back(std::make_unique<MetalCommandBuffer>());
    }

    id<MTLCommandQueue> queue_;
    std::vector<std::unique_ptr<MetalCommandBuffer>> buffers_;
};

} // namespace

std::shared_ptr<gpu::CommandQueue> makeMetalQueue(NativeRef queue) {
    return std::make_shared<MetalQueue>(native<id<MTLCommandQueue>>(queue));
}

} // namespace vantor::darwin
