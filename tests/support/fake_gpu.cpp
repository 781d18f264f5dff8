#include "tests/support/fake_gpu.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <utility>

namespace vantor {
namespace {

constexpr std::uint64_t kMaxTextureSide = 16384;
constexpr std::size_t kBytesPerTexel = 4;
/// A new texture holds nothing that a caller may rely on.
constexpr std::uint8_t kUnwritten = 0xA5;

std::atomic<std::uint64_t> lastRegistryID{0x1000};

std::uint8_t unorm(double component) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(component, 0.0, 1.0) * 255));
}

std::array<std::uint8_t, 4> bgra(const Color& color) {
    return {unorm(color.blue), unorm(color.green), unorm(color.red), unorm(color.alpha)};
}

class FakeLibrary : public gpu::Library {
  public:
    explicit FakeLibrary(std::string_view source) : source_(source) {}

    struct EntryPoint : gpu::Function {
        EntryPoint(std::string_view entryName, std::string_view wholeSource)
            : name(entryName), source(wholeSource) {}
        std::string name;
        std::string source;
    };

    std::shared_ptr<gpu::Function> newFunction(std::string_view name) override {
        if (source_.find(name) == std::string::npos) {
            return nullptr;
        }
        return std::make_shared<EntryPoint>(name, source_);
    }

  private:
    std::string source_;
};

class FakeEncoder : public gpu::RenderCommandEncoder {
  public:
    explicit FakeEncoder(FakeDevice& device) : device_(device) {}
    ~FakeEncoder() override = default;

    void begin(const gpu::RenderPassDescriptor& pass) {
        beginEncoding();
        open_ = true;
        pass_ = {};
        pass_.texture = pass.texture;
        pass_.loadAction = pass.loadAction;
        pass_.storeAction = pass.storeAction;
        pass_.clearColor = pass.clearColor;
    }
    bool isOpen() const { return open_; }
    FakePass take() { return std::move(pass_); }

  private:
    void
    setRenderPipelineStateImpl(const std::shared_ptr<gpu::RenderPipelineState>& state) override {
        pass_.pipeline = state;
    }
    void setFragmentBytesImpl(std::span<const std::uint8_t> bytes, std::uint32_t index) override {
        if (device_.records) {
            pass_.fragmentBytes[index].assign(bytes.begin(), bytes.end());
        }
    }
    void setFragmentTextureImpl(const std::shared_ptr<gpu::Texture>& texture,
                                std::uint32_t index) override {
        if (device_.records) {
            pass_.fragmentTextures[index] = texture;
        }
    }
    void drawPrimitivesImpl(gpu::PrimitiveType type, std::uint32_t vertexStart,
                            std::uint32_t vertexCount) override {
        if (device_.records) {
            pass_.draws.push_back({type, vertexStart, vertexCount});
        }
    }
    void endEncodingImpl() override { open_ = false; }

    FakeDevice& device_;
    FakePass pass_;
    bool open_ = false;
};

class FakeCommandBuffer : public gpu::CommandBuffer {
  public:
    explicit FakeCommandBuffer(FakeDevice& device) : device_(device), encoder_(device) {}
    ~FakeCommandBuffer() override { dropDrawable(); }

    void begin() {
        fakeRequire(!recording_, "a command buffer is committed");
        recording_ = true;
        beginRecording();
    }

  private:
    gpu::RenderCommandEncoder*
    renderCommandEncoderImpl(const gpu::RenderPassDescriptor& pass) override {
        if (device_.refusesEncoders) {
            return nullptr;
        }
        fakeRequire(!encoder_.isOpen(), "one encoder is open at a time");
        finishPass();
        encoder_.begin(pass);
        hasPass_ = true;
        return &encoder_;
    }

    void presentDrawableImpl(gpu::DrawableRef drawable) override {
        fakeRequire(drawable_ == nullptr, "a buffer presents one drawable here");
        drawable_ = dynamic_cast<FakePresentable*>(drawable.release());
        fakeRequire(drawable_ != nullptr, "a drawable is presented on its own platform");
    }

    void commitImpl() override {
        fakeRequire(!encoder_.isOpen(), "endEncoding comes before commit");
        finishPass();
        recording_ = false;
        submission_.presentedDrawables = drawable_ != nullptr ? 1 : 0;
        for (const FakePass& pass : submission_.passes) {
            auto* texture = dynamic_cast<FakeTexture*>(pass.texture);
            fakeRequire(texture != nullptr, "a texture is drawn to on its own platform");
            if (pass.loadAction == gpu::LoadAction::clear) {
                texture->fill(bgra(pass.clearColor));
            }
            if (device_.shade) {
                device_.shade(pass, *texture);
            }
        }
        if (FakePresentable* shown = std::exchange(drawable_, nullptr)) {
            shown->show();
        }
        if (device_.records) {
            device_.submissions.push_back(std::move(submission_));
        }
        submission_ = {};
    }

    void waitUntilCompletedImpl() override {
        if (device_.records) {
            device_.submissions.back().waitedFor = true;
        }
    }

    void finishPass() {
        if (std::exchange(hasPass_, false) && device_.records) {
            submission_.passes.push_back(encoder_.take());
        }
    }

    void dropDrawable() {
        if (drawable_ != nullptr) {
            gpu::DrawableRef(drawable_).reset();
        }
    }

    FakeDevice& device_;
    FakeEncoder encoder_;
    FakeSubmission submission_;
    FakePresentable* drawable_ = nullptr;
    bool recording_ = false;
    bool hasPass_ = false;
};

class FakeCommandQueue : public gpu::CommandQueue {
  public:
    explicit FakeCommandQueue(std::shared_ptr<FakeDevice> device)
        : device_(std::move(device)), buffer_(*device_) {}

    gpu::CommandBuffer* commandBuffer() override {
        if (device_->refusesCommandBuffers) {
            return nullptr;
        }
        buffer_.begin();
        return &buffer_;
    }

  private:
    std::shared_ptr<FakeDevice> device_;
    /// Recycled: work is finished as soon as it is committed.
    FakeCommandBuffer buffer_;
};

Error deviceError(std::string message) {
    return {.domain = "FakeDevice", .code = 3, .message = std::move(message)};
}

} // namespace

FakeTexture::FakeTexture(const gpu::TextureDescriptor& descriptor)
    : descriptor_(descriptor), filledWith_{kUnwritten, kUnwritten, kUnwritten, kUnwritten} {}

void FakeTexture::fill(const std::array<std::uint8_t, 4>& texel) {
    filledWith_ = texel;
    texels_.clear();
}

const std::vector<std::uint8_t>& FakeTexture::written() const {
    if (texels_.empty()) {
        texels_.reserve(width() * height() * kBytesPerTexel);
        for (std::uint64_t i = 0; i < width() * height(); ++i) {
            texels_.insert(texels_.end(), filledWith_.begin(), filledWith_.end());
        }
    }
    return texels_;
}

std::vector<std::uint8_t>& FakeTexture::texels() {
    written();
    return texels_;
}

void FakeTexture::getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                               const gpu::Region& region) const {
    for (std::uint64_t y = 0; y < region.height; ++y) {
        const std::size_t from = ((region.y + y) * width() + region.x) * kBytesPerTexel;
        std::memcpy(bytes.data() + y * bytesPerRow, written().data() + from,
                    region.width * kBytesPerTexel);
    }
}

void FakeTexture::replaceRegionImpl(const gpu::Region& region, std::span<const std::uint8_t> bytes,
                                    std::size_t bytesPerRow) {
    for (std::uint64_t y = 0; y < region.height; ++y) {
        const std::size_t to = ((region.y + y) * width() + region.x) * kBytesPerTexel;
        std::memcpy(texels().data() + to, bytes.data() + y * bytesPerRow,
                    region.width * kBytesPerTexel);
    }
}

float FakePass::floatAt(std::uint32_t bufferIndex, std::size_t offset) const {
    const std::vector<std::uint8_t>& bytes = fragmentBytes.at(bufferIndex);
    fakeRequire(offset + sizeof(float) <= bytes.size(), "a float lies inside its buffer");
    float value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

FakeDevice::FakeDevice() : registryID_(++lastRegistryID) {}
FakeDevice::~FakeDevice() = default;

std::shared_ptr<gpu::CommandQueue> FakeDevice::newCommandQueue() {
    if (refusesQueues) {
        return nullptr;
    }
    return std::make_shared<FakeCommandQueue>(
        std::static_pointer_cast<FakeDevice>(shared_from_this()));
}

Result<std::shared_ptr<gpu::Library>> FakeDevice::newLibrary(std::string_view source) {
    compiledSources.emplace_back(source);
    if (source.find("#error") != std::string_view::npos) {
        return Failure{deviceError("program_source:1:2: error: the source asks for it")};
    }
    return std::shared_ptr<gpu::Library>(std::make_shared<FakeLibrary>(source));
}

Result<std::shared_ptr<gpu::RenderPipelineState>>
FakeDevice::newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) {
    if (!descriptor.vertexFunction || !descriptor.fragmentFunction) {
        return Failure{deviceError(descriptor.vertexFunction ? "no fragment function is set"
                                                             : "no vertex function is set")};
    }
    auto pipeline = std::make_shared<FakePipeline>();
    const auto vertex =
        std::dynamic_pointer_cast<FakeLibrary::EntryPoint>(descriptor.vertexFunction);
    const auto fragment =
        std::dynamic_pointer_cast<FakeLibrary::EntryPoint>(descriptor.fragmentFunction);
    fakeRequire(vertex && fragment, "functions are used on their own platform");
    pipeline->colorPixelFormat = descriptor.colorPixelFormat;
    pipeline->vertexName = vertex->name;
    pipeline->fragmentName = fragment->name;
    pipeline->source = fragment->source;
    return std::shared_ptr<gpu::RenderPipelineState>(std::move(pipeline));
}

std::shared_ptr<gpu::Texture> FakeDevice::newTexture(const gpu::TextureDescriptor& descriptor) {
    if (refusesTextures || descriptor.width == 0 || descriptor.height == 0 ||
        descriptor.width > kMaxTextureSide || descriptor.height > kMaxTextureSide) {
        return nullptr;
    }
    if (records) {
        madeTextures.push_back(descriptor);
    }
    return std::make_shared<FakeTexture>(descriptor);
}

const FakePass& FakeDevice::lastPass() const {
    fakeRequire(!submissions.empty() && submissions.back().passes.size() == 1,
                "the latest submission has one pass");
    return submissions.back().passes.front();
}

} // namespace vantor
