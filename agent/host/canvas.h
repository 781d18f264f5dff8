#pragma once
// Where the pictures of an output go: onto a screen, or into memory. Main thread.

#include "platform/linux/gpu/vulkan_resources.h"

#include <cstdint>
#include <optional>

namespace vantor::agent {

/// The image that the next picture is drawn into.
struct CanvasImage {
    vulkan::DeviceImage& image;
    /// For the submission that draws.
    vulkan::PresentSemaphores semaphores{};
    /// In which the drawing leaves it.
    VkImageLayout layout = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
};

enum class CanvasState {
    /// As far as is known, a picture can be shown.
    usable,
    /// The next `begin` makes it anew.
    outdated,
    /// What it shows on is gone for good.
    lost,
};

class Canvas {
  public:
    virtual ~Canvas() = default;
    virtual std::uint32_t width() const = 0;
    virtual std::uint32_t height() const = 0;

    /// Never waits. Nothing when there is no image now: all are on their way to the screen, or see
    /// `state`. The drawing before is done. An image that is given and not shown is given again.
    virtual std::optional<CanvasImage> begin() = 0;
    /// Shows the image that `begin` gave, whose drawing was submitted. False when it was lost.
    [[nodiscard]] virtual bool show() = 0;
    virtual CanvasState state() const = 0;
};

} // namespace vantor::agent
