#pragma once
// A layer that shows what the GPU draws: at most two drawables, each an image whose memory the
// hosting agent can read. Main thread, but for the one call that says so.

#include "platform/linux/gpu/vulkan_device.h"
#include "platform/linux/layers/linux_layer.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

namespace vantor {

class LayerDrawable;

/// Wakes the main loop when a frame has been finished, and keeps the drawables of layers that went
/// while the GPU was drawing. Shared by all layers of a process.
class FrameSignal {
  public:
    FrameSignal();
    ~FrameSignal();
    FrameSignal(const FrameSignal&) = delete;
    FrameSignal& operator=(const FrameSignal&) = delete;

    int descriptor() const { return descriptor_.get(); }
    /// Any thread; allocates nothing and takes no lock.
    void raise();
    void clear();

    /// Keeps a drawable until the GPU has done with it.
    void adopt(std::shared_ptr<LayerDrawable> drawable);
    /// Lets go of adopted drawables that the GPU has done with.
    void releaseAdopted();

  private:
    FileDescriptor descriptor_;
    std::vector<std::shared_ptr<LayerDrawable>> adopted_;
};

/// One image of a layer. It lives while its layer, a host link or the frame signal keeps it, which
/// together outlast whatever the GPU does with it.
class LayerDrawable final : public vulkan::VulkanDrawable {
  public:
    LayerDrawable(std::shared_ptr<vulkan::VulkanTexture> image, std::uint32_t imageID,
                  std::shared_ptr<FrameSignal> signal);
    ~LayerDrawable() override = default;

    gpu::Texture& texture() override { return *image_; }
    vulkan::DeviceImage& image() const { return image_->image(); }
    std::uint32_t imageID() const { return imageID_; }
    /// Of this drawable's frame among its layer's frames.
    std::uint64_t sequence() const { return sequence_; }

    /// Not being drawn, not shown, not held by a host.
    bool isFree() const;
    /// Handed out, or under way on the GPU.
    bool isBusy() const;
    /// Hands it out to be drawn.
    gpu::DrawableRef acquire(std::uint64_t sequence);
    /// Whether the GPU finished a frame that was not taken yet; takes it.
    bool takeFinished();

    /// The layer shows it, or does not any more.
    void setLatest(bool latest) { latest_ = latest; }
    void addHolder() { ++holders_; }
    void removeHolder() { --holders_; }

    /// On the completion thread.
    void finished() override;

  private:
    enum class State { idle, drawing, finished };
    void giveBack() override;

    std::shared_ptr<vulkan::VulkanTexture> image_;
    std::uint32_t imageID_;
    std::shared_ptr<FrameSignal> signal_;
    /// Set to finished by the completion thread; everything else is the main thread's.
    std::atomic<State> state_ = State::idle;
    std::uint64_t sequence_ = 0;
    bool latest_ = false;
    int holders_ = 0;
};

class LinuxMetalLayer final : public LinuxLayer, public MetalLayer {
  public:
    static constexpr std::size_t kDrawables = 2;

    LinuxMetalLayer(std::shared_ptr<LayerChanges> changes, std::shared_ptr<FrameSignal> signal);
    ~LinuxMetalLayer() override;

    const ObjectClass& objectClass() const override;
    LinuxMetalLayer* metal() override { return this; }

    void setDevice(std::shared_ptr<gpu::Device> device) override;
    void setPixelFormat(gpu::PixelFormat format) override;
    void setFramebufferOnly(bool) override {}
    void setOpaque(bool) override {}
    void setMaximumDrawableCount(int count) override;
    void setDrawableSize(const Size& size) override { drawableSize_ = size; }
    Size drawableSize() const override { return drawableSize_; }
    gpu::DrawableRef nextDrawable() override;

    /// Takes every finished frame; true when the layer shows another one than before.
    bool takeFinished();
    /// What the layer shows; null before the first frame.
    const std::shared_ptr<LayerDrawable>& latest() const { return latest_; }
    const std::array<std::shared_ptr<LayerDrawable>, kDrawables>& drawables() const {
        return drawables_;
    }
    const std::shared_ptr<vulkan::VulkanDevice>& device() const { return device_; }

    // The virtual base's members that both sides inherit.
    using LinuxLayer::addSublayer;
    using LinuxLayer::backgroundColor;
    using LinuxLayer::contentsScale;
    using LinuxLayer::frame;
    using LinuxLayer::removeFromSuperlayer;
    using LinuxLayer::setBackgroundColor;
    using LinuxLayer::setContents;
    using LinuxLayer::setContentsGravity;
    using LinuxLayer::setContentsScale;
    using LinuxLayer::setFrame;
    using LinuxLayer::setMasksToBounds;

  private:
    std::shared_ptr<FrameSignal> signal_;
    std::shared_ptr<vulkan::VulkanDevice> device_;
    gpu::PixelFormat pixelFormat_ = gpu::PixelFormat::bgra8Unorm;
    Size drawableSize_;
    std::array<std::shared_ptr<LayerDrawable>, kDrawables> drawables_;
    std::shared_ptr<LayerDrawable> latest_;
    std::uint64_t lastSequence_ = 0;
};

} // namespace vantor
