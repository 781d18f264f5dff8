#pragma once
// Draws a hosted layer tree into an output's image. Main thread.

#include "agent/host/hosted_context.h"
#include "platform/linux/gpu/vulkan_resources.h"

#include <cstdint>
#include <memory>
#include <span>

namespace vantor::agent {

/// Pixels, right and bottom excluded.
struct PixelRect {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;

    bool isEmpty() const { return left >= right || top >= bottom; }
    std::int32_t width() const { return right - left; }
    std::int32_t height() const { return bottom - top; }
    bool operator==(const PixelRect&) const = default;
};

/// One output's picture, in the device's memory: opaque BGRA, top row first.
class Compositor {
  public:
    /// Null when the device has no memory for it.
    static std::unique_ptr<Compositor> create(std::shared_ptr<vulkan::Context> gpu,
                                              std::uint32_t width, std::uint32_t height);
    ~Compositor();
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

    std::uint32_t width() const { return output_->width(); }
    std::uint32_t height() const { return output_->height(); }

    /// Not busy with the composition before.
    bool isIdle() const;

    /// Draws the tree: backgrounds, stills and frames, each over what lies below. `scale` is the
    /// output's pixels per point. Returns at once; the frames may be released when isIdle() again.
    /// False when it is busy or the device is lost.
    [[nodiscard]] bool compose(const HostedContext& context, double scale);

    /// Copies the picture out: rows of width × 4 bytes. Blocks until the device is done. False when
    /// the device is lost.
    [[nodiscard]] bool read(std::span<std::uint8_t> bytes);

  private:
    /// Where a layer lies on the output.
    struct Placed {
        PixelRect rect;
        /// What of it may be seen.
        PixelRect clip;
        double originX = 0;
        double originY = 0;
    };

    explicit Compositor(std::shared_ptr<vulkan::Context> gpu) : gpu_(std::move(gpu)) {}
    bool begin();
    /// Fills in that layer's place, which follows from its parent's.
    void place(std::span<const layerwire::LayerState> layers, std::size_t index, double scale,
               std::span<Placed> placed) const;
    PixelRect wholeOutput() const;
    bool fillsOutput(const Placed& placed) const;
    /// Orders a write of the output after those before it.
    void startWriting();
    void clear();
    void fill(const Placed& placed, const layerwire::LayerState& layer);
    void drawFrame(const Placed& placed, HostedFrame& hosted);
    /// Makes the frame's image ready to be copied from.
    void takeOver(HostedFrame& hosted);
    void drawPicture(const Placed& placed, const layerwire::LayerState& layer,
                     const Picture& picture);

    std::shared_ptr<vulkan::Context> gpu_;
    std::unique_ptr<vulkan::DeviceImage> output_;
    std::unique_ptr<vulkan::Buffer> readback_;
    /// The last still picture on the device, and which one it is.
    std::unique_ptr<vulkan::DeviceImage> still_;
    std::unique_ptr<vulkan::Buffer> stillStaging_;
    std::uint32_t stillID_ = layerwire::kNoImage;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    VkCommandBuffer commands_ = VK_NULL_HANDLE;
    std::uint64_t point_ = 0;
    /// Since the last barrier.
    bool isWritten_ = false;
};

} // namespace vantor::agent
