#include "platform/gpu.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace vantor::gpu {
namespace {

void require(bool holds, const char* message) {
    if (!holds) {
        std::fprintf(stderr, "GPU contract violated: %s\n", message);
        std::abort();
    }
}

std::size_t bytesPerTexel(PixelFormat format) { return format == PixelFormat::invalid ? 0 : 4; }

void requireRegion(const Texture& texture, const Region& region, std::size_t size,
                   std::size_t bytesPerRow) {
    require(region.width <= texture.width() && region.x <= texture.width() - region.width &&
                region.height <= texture.height() && region.y <= texture.height() - region.height,
            "a region lies inside its texture");
    require(bytesPerRow >= region.width * bytesPerTexel(texture.pixelFormat()),
            "a row holds the region's width");
    require(region.height == 0 || size / region.height >= bytesPerRow,
            "the buffer holds the region's rows");
}

} // namespace

void Texture::getBytes(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                       const Region& region) const {
    requireRegion(*this, region, bytes.size(), bytesPerRow);
    getBytesImpl(bytes, bytesPerRow, region);
}

void Texture::replaceRegion(const Region& region, std::span<const std::uint8_t> bytes,
                            std::size_t bytesPerRow) {
    requireRegion(*this, region, bytes.size(), bytesPerRow);
    replaceRegionImpl(region, bytes, bytesPerRow);
}

void RenderCommandEncoder::beginEncoding() {
    encoding_ = true;
    hasPipeline_ = false;
}

void RenderCommandEncoder::setRenderPipelineState(
    const std::shared_ptr<RenderPipelineState>& pipeline) {
    require(encoding_, "an encoder is not used after endEncoding");
    require(pipeline != nullptr, "a pipeline state exists");
    hasPipeline_ = true;
    setRenderPipelineStateImpl(pipeline);
}

void RenderCommandEncoder::setFragmentBytes(std::span<const std::uint8_t> bytes,
                                            std::uint32_t index) {
    require(encoding_, "an encoder is not used after endEncoding");
    require(!bytes.empty() && bytes.size() <= kMaxInlineBytes, "inline bytes are 1 to 4096");
    require(index <= kMaxBufferIndex, "a buffer index is at most 30");
    setFragmentBytesImpl(bytes, index);
}

void RenderCommandEncoder::setFragmentTexture(const std::shared_ptr<Texture>& texture,
                                              std::uint32_t index) {
    require(encoding_, "an encoder is not used after endEncoding");
    require(index <= kMaxTextureIndex, "a texture index is at most 30");
    setFragmentTextureImpl(texture, index);
}

void RenderCommandEncoder::drawPrimitives(PrimitiveType type, std::uint32_t vertexStart,
                                          std::uint32_t vertexCount) {
    require(encoding_, "an encoder is not used after endEncoding");
    require(hasPipeline_, "a draw has a pipeline state");
    drawPrimitivesImpl(type, vertexStart, vertexCount);
}

void RenderCommandEncoder::endEncoding() {
    require(encoding_, "endEncoding is called once");
    encoding_ = false;
    endEncodingImpl();
}

void CommandBuffer::beginRecording() { state_ = State::recording; }

RenderCommandEncoder* CommandBuffer::renderCommandEncoder(const RenderPassDescriptor& pass) {
    require(state_ == State::recording, "a committed buffer records nothing");
    require(pass.texture != nullptr, "a render pass has a texture");
    return renderCommandEncoderImpl(pass);
}

void CommandBuffer::presentDrawable(DrawableRef drawable) {
    require(state_ == State::recording, "a committed buffer presents nothing more");
    require(drawable != nullptr, "a presented drawable exists");
    presentDrawableImpl(std::move(drawable));
}

void CommandBuffer::commit() {
    require(state_ == State::recording, "a buffer is committed once");
    state_ = State::committed;
    commitImpl();
}

void CommandBuffer::waitUntilCompleted() {
    require(state_ == State::committed, "only a committed buffer is waited for");
    waitUntilCompletedImpl();
}

} // namespace vantor::gpu
