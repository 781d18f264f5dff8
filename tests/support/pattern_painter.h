#pragma once
// Shows a pattern on an output through a swapchain, as the agent shows its pictures.

#include "agent/host/command_buffer.h"
#include "agent/host/swapchain.h"
#include "agent/output/output.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

namespace vantor::tests {

/// Red, green and blue of the pixel at (x, y).
using Pattern = std::function<std::array<std::uint8_t, 3>(std::uint32_t x, std::uint32_t y)>;

class PatternPainter {
  public:
    /// Null when the device cannot show pictures on the output.
    static std::unique_ptr<PatternPainter> create(std::shared_ptr<vulkan::Context> gpu,
                                                  agent::Output& output, Pattern pattern);

    /// Fills the output with the pattern. False when there is no image to draw into now.
    bool paint();

  private:
    PatternPainter(std::shared_ptr<vulkan::Context> gpu, agent::Output& output, Pattern pattern)
        : gpu_(std::move(gpu)), output_(output), pattern_(std::move(pattern)) {}
    /// Makes the picture where it is for another image than this; false when there is no memory.
    bool draw(const vulkan::DeviceImage& image);

    std::shared_ptr<vulkan::Context> gpu_;
    agent::Output& output_;
    const Pattern pattern_;
    /// The pattern at the size of the canvas.
    std::unique_ptr<vulkan::Buffer> picture_;
    std::uint32_t pictureWidth_ = 0;
    std::uint32_t pictureHeight_ = 0;
    std::unique_ptr<agent::Swapchain> canvas_;
    std::unique_ptr<agent::CommandBuffer> commands_;
};

} // namespace vantor::tests
