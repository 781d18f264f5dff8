#pragma once
// A layer that shows what the GPU draws: at most two drawables, each an image whose memory the
// hosting agent can read. Main thread, but for the one call that says so.

#include "platform/linux/gpu/vulkan_device.h"
#include "platform/linux/layers/frame_memory.h"
#include "platform/linux/layers/linux_layer.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

namespace vantor {

/// Wakes the main loop when a frame has been finished. Shared by all layers of a process and their
/// drawables.
class FrameSignal {
  public:
    FrameSignal();
    int descriptor() const { return descriptor_.get(); }
    /// Any thread; allocates nothing and takes no lock.
    void raise();
    void clear();

  private:
    FileDescriptor descriptor_;
};

/// One image of a layer. Kept by its layer, by the hosts that hold it, and by the GPU while it is
/// being drawn.
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
    /// Hands it out to be drawn.
    gpu::DrawableRef acquire(std::uint64_t sequence);
    /// Whether the GPU finished a frame that was not taken yet; takes it.
    bool takeFinished();

    /// The layer shows it, or does not any more.
    void setLatest(bool latest) { latest_ = latest; }
    /// Starts to copy the picture into memory of its own, unless that was done. The drawable needs
    /// a holder until the copy has ended. False when the device is lost or the system has no
    /// memory.
    [[nodiscard]] bool copyToMemory(const vulkan::DeviceParts& parts);
    /// Whether the memory holds the picture.
    bool isInMemory() const { return memory_ && memory_->holds(sequence_); }
    /// Null before the first copy.
    const std::shared_ptr<FrameMemory>& memory() const { return memory_; }

    void addHolder() { ++holders_; }
    void removeHolder() { --holders_; }

    /// Being drawn, or drawn and not taken yet.
    bool isUnderWay() const { return state_.load(std::memory_order_acquire) != State::idle; }
    /// What the GPU spent on the frame that was taken last.
    double seconds() const { return seconds_; }
    void setBands(std::uint32_t bands) { image_->setBands(bands); }

    /// On the completion thread.
    std::uint64_t finished(double seconds) override;

  private:
    enum class State { idle, drawing, finished };
    void giveBack() override;

    std::shared_ptr<vulkan::VulkanTexture> image_;
    std::uint32_t imageID_;
    std::shared_ptr<FrameSignal> signal_;
    std::shared_ptr<FrameMemory> memory_;
    /// Set to finished by the completion thread; everything else is the main thread's.
    std::atomic<State> state_ = State::idle;
    /// Written by the completion thread before it sets the state to finished.
    double seconds_ = 0;
    std::uint64_t sequence_ = 0;
    bool latest_ = false;
    int holders_ = 0;
};

class LinuxMetalLayer final : public LinuxLayer, public MetalLayer {
  public:
    static constexpr std::size_t kDrawables = 2;

    LinuxMetalLayer(std::shared_ptr<LayerChanges> changes, std::shared_ptr<FrameSignal> signal);

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
    /// Whether its last frame took the GPU longer than frames may. Its next one is then drawn in
    /// bands that leave room for the frames of others, and no other one until it is done.
    bool isSlow() const { return bands_ > 1; }

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
    std::uint32_t bands_ = 1;
};

} // namespace vantor
