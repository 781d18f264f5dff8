#pragma once
// A GPU that records what it is asked to draw. It keeps textures in memory, clears them as passes
// say, and shades them only if a test tells it how.

#include "platform/gpu.h"
#include "tests/support/fake_contract.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

/// A source that the fake compiler takes.
constexpr const char* kFakeShader = "vertex v_main fragment f_main";

class FakeDevice;
class FakeTexture;

/// A presented drawable's way back to its layer; implemented by the fake layers.
class FakePresentable : public gpu::Drawable {
  public:
    /// The GPU has finished the buffer that presents it.
    virtual void show() = 0;

  protected:
    ~FakePresentable() override = default;
};

class FakeTexture : public gpu::Texture {
  public:
    explicit FakeTexture(const gpu::TextureDescriptor& descriptor);

    std::uint64_t width() const override { return descriptor_.width; }
    std::uint64_t height() const override { return descriptor_.height; }
    gpu::PixelFormat pixelFormat() const override { return descriptor_.pixelFormat; }

    const gpu::TextureDescriptor& descriptor() const { return descriptor_; }
    /// Rows without padding, four bytes a texel.
    std::vector<std::uint8_t>& texels();
    /// Gives every texel these bytes.
    void fill(const std::array<std::uint8_t, 4>& texel);

  private:
    void getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                      const gpu::Region& region) const override;
    void replaceRegionImpl(const gpu::Region& region, std::span<const std::uint8_t> bytes,
                           std::size_t bytesPerRow) override;
    const std::vector<std::uint8_t>& written() const;

    gpu::TextureDescriptor descriptor_;
    /// What every texel holds while texels_ is empty: most textures are never looked at.
    std::array<std::uint8_t, 4> filledWith_;
    mutable std::vector<std::uint8_t> texels_;
};

class FakePipeline : public gpu::RenderPipelineState {
  public:
    gpu::PixelFormat colorPixelFormat = gpu::PixelFormat::invalid;
    std::string vertexName;
    std::string fragmentName;
    /// What it was compiled from.
    std::string source;
};

struct FakeDraw {
    gpu::PrimitiveType type;
    std::uint32_t vertexStart;
    std::uint32_t vertexCount;
};

/// One render pass of a committed buffer.
struct FakePass {
    gpu::Texture* texture = nullptr;
    gpu::LoadAction loadAction{};
    gpu::StoreAction storeAction{};
    Color clearColor;
    std::shared_ptr<gpu::RenderPipelineState> pipeline;
    std::map<std::uint32_t, std::vector<std::uint8_t>> fragmentBytes;
    std::map<std::uint32_t, std::shared_ptr<gpu::Texture>> fragmentTextures;
    std::vector<FakeDraw> draws;

    /// The 32-bit float at that byte offset of a fragment buffer.
    float floatAt(std::uint32_t bufferIndex, std::size_t offset) const;
};

struct FakeSubmission {
    std::vector<FakePass> passes;
    int presentedDrawables = 0;
    bool waitedFor = false;
};

/// Compiles every source that does not hold the word "#error"; a library has the entry points whose
/// names stand in its source.
class FakeDevice : public gpu::Device {
  public:
    FakeDevice();
    ~FakeDevice() override;

    std::uint64_t registryID() const override { return registryID_; }
    std::shared_ptr<gpu::CommandQueue> newCommandQueue() override;
    Result<std::shared_ptr<gpu::Library>> newLibrary(std::string_view source) override;
    Result<std::shared_ptr<gpu::RenderPipelineState>>
    newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) override;
    std::shared_ptr<gpu::Texture> newTexture(const gpu::TextureDescriptor& descriptor) override;

    // Steps that a test lets fail.
    bool refusesQueues = false;
    bool refusesTextures = false;
    bool refusesCommandBuffers = false;
    bool refusesEncoders = false;

    /// Off for tests that count allocations: nothing is recorded then.
    bool records = true;
    /// Called for each pass of a committed buffer after its texture was cleared.
    std::function<void(const FakePass&, FakeTexture&)> shade;

    /// Sources in the order in which they were compiled, failures included.
    std::vector<std::string> compiledSources;
    std::vector<FakeSubmission> submissions;
    std::vector<gpu::TextureDescriptor> madeTextures;

    /// The only pass of the latest submission.
    const FakePass& lastPass() const;

  private:
    std::uint64_t registryID_;
};

class FakeGPUSystem : public gpu::System {
  public:
    std::shared_ptr<gpu::Device> createSystemDefaultDevice() override { return device; }

    /// Null on a system without a GPU.
    std::shared_ptr<FakeDevice> device = std::make_shared<FakeDevice>();
};

} // namespace vantor
