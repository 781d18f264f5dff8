#pragma once
// The GPU, in the shape of Metal.
//   Linux: Vulkan 1.3, with the project's own compiler for shader sources; viewports are flipped so
//   that clip space and fragment positions are Metal's.
//   macOS: Metal.
//
// Public methods check their arguments (a violated contract is our own mistake and stops the
// process); the virtual ones behind them do the platform's part. Numeric values of enumerations are
// Metal's.

#include "platform/geometry.h"
#include "platform/result.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace vantor::gpu {

enum class PixelFormat : std::uint32_t { invalid = 0, r32Float = 55, bgra8Unorm = 80 };
enum class TextureUsage : std::uint32_t { shaderRead = 1, renderTarget = 4 };
/// Shared textures can be read and written by the CPU.
enum class StorageMode : std::uint32_t { shared = 0 };
enum class LoadAction : std::uint32_t { dontCare = 0, load = 1, clear = 2 };
enum class StoreAction : std::uint32_t { dontCare = 0, store = 1 };
enum class PrimitiveType : std::uint32_t { triangle = 3 };

inline constexpr std::size_t kMaxInlineBytes = 4096;
inline constexpr std::uint32_t kMaxBufferIndex = 30;
inline constexpr std::uint32_t kMaxTextureIndex = 30;

struct TextureDescriptor {
    PixelFormat pixelFormat = PixelFormat::bgra8Unorm;
    /// Texels. 0, or more than the device has, makes creation fail.
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    TextureUsage usage = TextureUsage::renderTarget;
    StorageMode storageMode = StorageMode::shared;
};

struct Region {
    std::uint64_t x = 0;
    std::uint64_t y = 0;
    std::uint64_t width = 0;
    std::uint64_t height = 0;
};

/// A 2-D texture without mipmaps.
class Texture {
  public:
    virtual ~Texture() = default;

    virtual std::uint64_t width() const = 0;
    virtual std::uint64_t height() const = 0;
    virtual PixelFormat pixelFormat() const = 0;

    /// Copies texels out, top row first. `bytes` holds at least bytesPerRow × region.height. The
    /// GPU must be done with the texture (see CommandBuffer::waitUntilCompleted).
    void getBytes(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                  const Region& region) const;
    /// Copies texels in; the same shape.
    void replaceRegion(const Region& region, std::span<const std::uint8_t> bytes,
                       std::size_t bytesPerRow);

  private:
    virtual void getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                              const Region& region) const = 0;
    virtual void replaceRegionImpl(const Region& region, std::span<const std::uint8_t> bytes,
                                   std::size_t bytesPerRow) = 0;
};

/// One entry point of a library.
class Function {
  public:
    virtual ~Function() = default;
};

/// A compiled source.
class Library {
  public:
    virtual ~Library() = default;
    /// Null when the source has no entry point of that name.
    virtual std::shared_ptr<Function> newFunction(std::string_view name) = 0;
};

/// Blending off, no depth or stencil attachment, no vertex descriptor.
struct RenderPipelineDescriptor {
    std::shared_ptr<Function> vertexFunction;
    std::shared_ptr<Function> fragmentFunction;
    PixelFormat colorPixelFormat = PixelFormat::bgra8Unorm;
};

class RenderPipelineState {
  public:
    virtual ~RenderPipelineState() = default;
};

/// Something a layer shows next. Held by at most one owner; dropped unpresented, it goes back to
/// its layer.
class Drawable {
  public:
    virtual Texture& texture() = 0;

  protected:
    virtual ~Drawable() = default;

  private:
    friend struct DrawableReturn;
    /// The drawable will not be presented; its layer may hand it out again.
    virtual void giveBack() = 0;
};
struct DrawableReturn {
    void operator()(Drawable* drawable) const { drawable->giveBack(); }
};
using DrawableRef = std::unique_ptr<Drawable, DrawableReturn>;

/// One colour attachment. Its texture lives until the GPU has finished the pass (a drawable's does
/// by itself).
struct RenderPassDescriptor {
    Texture* texture = nullptr;
    LoadAction loadAction = LoadAction::clear;
    StoreAction storeAction = StoreAction::store;
    Color clearColor{.red = 0, .green = 0, .blue = 0, .alpha = 1};
};

/// Records one render pass. Owned by its command buffer; not used after endEncoding.
class RenderCommandEncoder {
  public:
    void setRenderPipelineState(const std::shared_ptr<RenderPipelineState>& pipeline);
    /// Copies at most kMaxInlineBytes into the command stream.
    void setFragmentBytes(std::span<const std::uint8_t> bytes, std::uint32_t index);
    /// Null unbinds: reads then give zero.
    void setFragmentTexture(const std::shared_ptr<Texture>& texture, std::uint32_t index);
    void drawPrimitives(PrimitiveType type, std::uint32_t vertexStart, std::uint32_t vertexCount);
    void endEncoding();

  protected:
    virtual ~RenderCommandEncoder() = default;
    /// For the platform, before it hands the encoder out again.
    void beginEncoding();

  private:
    virtual void setRenderPipelineStateImpl(const std::shared_ptr<RenderPipelineState>&) = 0;
    virtual void setFragmentBytesImpl(std::span<const std::uint8_t> bytes, std::uint32_t index) = 0;
    virtual void setFragmentTextureImpl(const std::shared_ptr<Texture>& texture,
                                        std::uint32_t index) = 0;
    virtual void drawPrimitivesImpl(PrimitiveType type, std::uint32_t vertexStart,
                                    std::uint32_t vertexCount) = 0;
    virtual void endEncodingImpl() = 0;

    bool encoding_ = false;
    bool hasPipeline_ = false;
};

/// A list of commands. Owned by its queue: valid until it is committed and, when it is waited for,
/// until waitUntilCompleted returns. Must be committed.
class CommandBuffer {
  public:
    /// Null when no encoder can be had (the pass is then skipped).
    RenderCommandEncoder* renderCommandEncoder(const RenderPassDescriptor& pass);
    /// The drawable is shown once the GPU has finished this buffer.
    void presentDrawable(DrawableRef drawable);
    /// Hands the work to the GPU and returns at once.
    void commit();
    /// Blocks until the GPU has finished this (committed) buffer.
    void waitUntilCompleted();

  protected:
    virtual ~CommandBuffer() = default;
    /// For the platform, before it hands the buffer out again.
    void beginRecording();

  private:
    virtual RenderCommandEncoder* renderCommandEncoderImpl(const RenderPassDescriptor& pass) = 0;
    virtual void presentDrawableImpl(DrawableRef drawable) = 0;
    virtual void commitImpl() = 0;
    virtual void waitUntilCompletedImpl() = 0;

    enum class State { recording, committed, idle };
    State state_ = State::idle;
};

class CommandQueue {
  public:
    virtual ~CommandQueue() = default;
    /// Null when none can be had. Buffers are recycled: a steady frame allocates nothing.
    virtual CommandBuffer* commandBuffer() = 0;
};

/// Used on the main thread; libraries may be compiled on others.
class Device : public std::enable_shared_from_this<Device> {
  public:
    virtual ~Device() = default;

    /// Unique per GPU within the process.
    virtual std::uint64_t registryID() const = 0;
    virtual std::shared_ptr<CommandQueue> newCommandQueue() = 0;
    /// Compiles a source in the Metal Shading Language. The error's message is the compiler's whole
    /// text: one "program_source:LINE:COLUMN: error: …" per finding.
    virtual Result<std::shared_ptr<Library>> newLibrary(std::string_view source) = 0;
    /// A descriptor without a vertex or fragment function is an error.
    virtual Result<std::shared_ptr<RenderPipelineState>>
    newRenderPipelineState(const RenderPipelineDescriptor& descriptor) = 0;
    /// Null when the device cannot make it.
    virtual std::shared_ptr<Texture> newTexture(const TextureDescriptor& descriptor) = 0;
};

class System {
  public:
    virtual ~System() = default;
    /// The system default device, or null. Every call gives the same one.
    virtual std::shared_ptr<Device> createSystemDefaultDevice() = 0;
};

} // namespace vantor::gpu
