#pragma once
// One command buffer, recorded again and again.

#include "platform/linux/gpu/vulkan_context.h"

#include <memory>

namespace vantor::agent {

/// Main thread. Destruction waits for what was submitted last.
class CommandBuffer {
  public:
    /// Null when the device can make none.
    static std::unique_ptr<CommandBuffer> create(std::shared_ptr<vulkan::Context> gpu);
    ~CommandBuffer();
    CommandBuffer(const CommandBuffer&) = delete;
    CommandBuffer& operator=(const CommandBuffer&) = delete;

    VkCommandBuffer handle() const { return commands_; }
    /// Not busy with what was submitted last.
    bool isIdle() const { return gpu_->isDone(point_); }
    /// Begins anew. False while it is busy, or when the device is lost.
    [[nodiscard]] bool begin();
    /// False when the device is lost.
    [[nodiscard]] bool submit(const vulkan::PresentSemaphores& semaphores = {});
    /// Blocks until the device has done what was submitted last. False when it is lost.
    [[nodiscard]] bool wait() const { return gpu_->wait(point_); }

  private:
    explicit CommandBuffer(std::shared_ptr<vulkan::Context> gpu) : gpu_(std::move(gpu)) {}

    std::shared_ptr<vulkan::Context> gpu_;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    VkCommandBuffer commands_ = VK_NULL_HANDLE;
    std::uint64_t point_ = 0;
};

} // namespace vantor::agent
