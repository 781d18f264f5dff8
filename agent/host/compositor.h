#pragma once
// Draws a hosted layer tree into an output's image. Main thread.

#include "agent/host/canvas.h"
#include "agent/host/command_buffer.h"
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

/// What is to be seen on an output.
struct Scene {
    /// Null shows black.
    const HostedContext* context = nullptr;
    /// The output's pixels per point.
    double scale = 1;
    /// Lies over everything, in the top left corner; null for none.
    const Picture* overlay = nullptr;
};

/// Draws one output's pictures, opaque.
class Compositor {
  public:
    /// Null when the device can make none.
    static std::unique_ptr<Compositor> create(std::shared_ptr<vulkan::Context> gpu);
    Compositor(const Compositor&) = delete;
    Compositor& operator=(const Compositor&) = delete;

    /// Not busy with the composition before.
    bool isIdle() const { return commands_->isIdle(); }

    /// Draws the tree: backgrounds, stills and frames, each over what lies below. Returns at once;
    /// the frames may be released when isIdle() again. False when it is busy or the device is lost.
    [[nodiscard]] bool compose(const CanvasImage& target, const Scene& scene);

    /// The context of later scenes is another one, whose pictures may bear numbers of the last.
    void forgetStill() { isStillForgotten_ = true; }
    /// The overlay of later scenes may be another one.
    void forgetOverlay() { isOverlayForgotten_ = true; }

  private:
    /// A picture of the CPU's on the device.
    struct Uploaded {
        std::unique_ptr<vulkan::DeviceImage> image;
        std::unique_ptr<vulkan::Buffer> staging;
        std::uint32_t imageID = layerwire::kNoImage;
    };
    /// Where a layer lies on the output.
    struct Placed {
        PixelRect rect;
        /// What of it may be seen.
        PixelRect clip;
        double originX = 0;
        double originY = 0;
    };

    explicit Compositor(std::shared_ptr<vulkan::Context> gpu) : gpu_(std::move(gpu)) {}
    void draw(const HostedContext& context, double scale);
    /// Fills in that layer's place, which follows from its parent's.
    void place(std::span<const layerwire::LayerState> layers, std::size_t index, double scale,
               std::span<Placed> placed) const;
    PixelRect wholeTarget() const;
    bool fillsTarget(const Placed& placed) const;
    /// Orders a write of the target after those before it.
    void startWriting();
    void clear();
    void fill(const Placed& placed, const layerwire::LayerState& layer);
    void drawFrame(const Placed& placed, HostedFrame& hosted);
    /// Makes the frame's image ready to be copied from.
    void takeOver(HostedFrame& hosted);
    void drawPicture(const Placed& placed, const layerwire::LayerState& layer,
                     const Picture& picture);
    void drawOverlay(const Picture& picture);
    /// Brings the picture onto the device; false when there is no memory for it.
    bool upload(Uploaded& place, const Picture& picture) const;
    void stretch(const vulkan::DeviceImage& source, VkImageLayout layout, const PixelRect& target,
                 const PixelRect& area);

    std::shared_ptr<vulkan::Context> gpu_;
    std::unique_ptr<CommandBuffer> commands_;
    /// The last of each.
    Uploaded still_;
    Uploaded overlay_;
    /// Gone with the next composition: the last may still read them.
    bool isStillForgotten_ = false;
    bool isOverlayForgotten_ = false;
    /// What is drawn into, during `compose`.
    vulkan::DeviceImage* target_ = nullptr;
    /// Since the last barrier.
    bool isWritten_ = false;
};

} // namespace vantor::agent
