#pragma once
// A drawable's finished picture in memory that any process can map, for a host that does not draw
// on the same device.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/gpu/device_parts.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

namespace vantor {

/// Main thread, but for the end of a copy.
class FrameMemory final : public vulkan::Awaiting,
                          public std::enable_shared_from_this<FrameMemory> {
  public:
    /// Memory for pictures of the image's size. `copied` is called on the completion thread after
    /// each copy. Null when the system has none.
    static std::shared_ptr<FrameMemory> create(const vulkan::DeviceImage& image,
                                               std::function<void()> copied);
    ~FrameMemory() override;
    FrameMemory(const FrameMemory&) = delete;
    FrameMemory& operator=(const FrameMemory&) = delete;

    /// Rows of blue, green, red, alpha without padding; its size is sealed.
    int descriptor() const { return file_.get(); }

    /// Starts to copy the image's picture, which is number `sequence` of its layer, unless that was
    /// done. The image stays as it is until the copy ends. `parts` are those of its device. False
    /// when the device is lost.
    [[nodiscard]] bool copy(const vulkan::DeviceParts& parts, vulkan::DeviceImage& image,
                            std::uint64_t sequence);
    /// Whether the memory holds that picture.
    bool holds(std::uint64_t sequence) const {
        return held_.load(std::memory_order_acquire) == sequence;
    }

    /// On the completion thread.
    std::uint64_t finished(double seconds) override;

  private:
    FrameMemory(std::shared_ptr<vulkan::Context> context, std::function<void()> copied)
        : context_(std::move(context)), copied_(std::move(copied)) {}
    bool makeMemory(std::size_t size);
    bool makeCommands();

    std::shared_ptr<vulkan::Context> context_;
    std::function<void()> copied_;
    FileDescriptor file_;
    std::span<std::uint8_t> mapped_;
    std::unique_ptr<vulkan::Buffer> staging_;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    VkCommandBuffer commands_ = VK_NULL_HANDLE;
    /// The picture whose copy was started last. Read by the completion thread, which is told of
    /// each copy after this is set.
    std::uint64_t started_ = 0;
    /// The picture that the memory holds; 0 for none.
    std::atomic<std::uint64_t> held_ = 0;
};

} // namespace vantor
