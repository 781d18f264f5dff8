#pragma once
// A picture that is kept in the device's memory, for outputs without a screen. Main thread.

#include "agent/host/canvas.h"
#include "agent/host/command_buffer.h"

#include <memory>
#include <span>

namespace vantor::agent {

/// Opaque BGRA, top row first.
class MemoryCanvas : public Canvas {
  public:
    /// Null when the device has no memory for it.
    static std::unique_ptr<MemoryCanvas> create(std::shared_ptr<vulkan::Context> gpu,
                                                std::uint32_t width, std::uint32_t height);

    std::uint32_t width() const override { return image_->width(); }
    std::uint32_t height() const override { return image_->height(); }
    std::optional<CanvasImage> begin() override { return CanvasImage{.image = *image_}; }
    bool show() override { return true; }
    CanvasState state() const override { return CanvasState::usable; }

    /// Copies the picture out: rows of width × 4 bytes. Blocks until the device is done. False when
    /// nothing was drawn yet, or the device is lost.
    [[nodiscard]] bool read(std::span<std::uint8_t> bytes);

  private:
    explicit MemoryCanvas(std::shared_ptr<vulkan::Context> gpu) : gpu_(std::move(gpu)) {}

    std::shared_ptr<vulkan::Context> gpu_;
    std::unique_ptr<vulkan::DeviceImage> image_;
    /// Made when it is first read.
    std::unique_ptr<vulkan::Buffer> readback_;
    std::unique_ptr<CommandBuffer> commands_;
};

} // namespace vantor::agent
