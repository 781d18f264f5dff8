#pragma once
// Buffers and images with their memory, each with one owner, and the barriers between their uses.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/gpu/vulkan_context.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace vantor::vulkan {

/// A mapped buffer.
class Buffer {
  public:
    /// Null when the device has no memory for it.
    static std::unique_ptr<Buffer> create(std::shared_ptr<Context> context, VkDeviceSize size,
                                          VkBufferUsageFlags usage);
    ~Buffer();
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    VkBuffer handle() const { return buffer_; }
    std::span<std::uint8_t> bytes() const { return bytes_; }

  private:
    explicit Buffer(std::shared_ptr<Context> context) : context_(std::move(context)) {}

    std::shared_ptr<Context> context_;
    VkBuffer buffer_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
    std::span<std::uint8_t> bytes_;
};

/// How an image's memory relates to other processes.
enum class Sharing { none, exported };

struct ImageDescription {
    VkFormat format = VK_FORMAT_B8G8R8A8_UNORM;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    VkImageUsageFlags usage = 0;
    Sharing sharing = Sharing::none;
};

/// A 2-D image with one level and a view of it.
class DeviceImage {
  public:
    /// Null when the device has no memory for it or cannot make one of that shape.
    static std::unique_ptr<DeviceImage> create(std::shared_ptr<Context> context,
                                               const ImageDescription& description);
    /// An image over memory that another process exported: same description, same device. Takes the
    /// descriptor. `memorySize` is what the exporter allocated. Null when it cannot be imported.
    static std::unique_ptr<DeviceImage> import(std::shared_ptr<Context> context,
                                               const ImageDescription& description,
                                               FileDescriptor memory, std::uint64_t memorySize);
    /// An image that a swapchain owns, which must outlive this. Null when it can have no view.
    static std::unique_ptr<DeviceImage> borrow(std::shared_ptr<Context> context,
                                               const ImageDescription& description, VkImage image);
    ~DeviceImage();
    DeviceImage(const DeviceImage&) = delete;
    DeviceImage& operator=(const DeviceImage&) = delete;

    const std::shared_ptr<Context>& context() const { return context_; }
    VkImage handle() const { return image_; }
    VkImageView view() const { return view_; }
    const ImageDescription& description() const { return description_; }
    std::uint32_t width() const { return description_.width; }
    std::uint32_t height() const { return description_.height; }
    VkFormat format() const { return description_.format; }
    std::uint64_t memorySize() const { return memorySize_; }

    /// A descriptor of the memory of an exported image, for another process; none when the system
    /// gives none.
    FileDescriptor exportMemory() const;

    /// The layout that the image is in after everything recorded so far.
    VkImageLayout layout() const { return layout_; }
    void setLayout(VkImageLayout layout) { layout_ = layout; }

  private:
    DeviceImage(std::shared_ptr<Context> context, const ImageDescription& description)
        : context_(std::move(context)), description_(description) {}
    bool createImage(bool external);
    bool bind(VkDeviceMemory memory);
    /// True also for an image whose use needs none.
    bool createView();

    std::shared_ptr<Context> context_;
    ImageDescription description_;
    bool isBorrowed_ = false;
    VkImage image_ = VK_NULL_HANDLE;
    VkDeviceMemory memory_ = VK_NULL_HANDLE;
    VkImageView view_ = VK_NULL_HANDLE;
    std::uint64_t memorySize_ = 0;
    VkImageLayout layout_ = VK_IMAGE_LAYOUT_UNDEFINED;
};

/// Between which queue families an image passes.
enum class Ownership { kept, acquiredFromOutside, releasedOutside };

enum class Contents { kept, discarded };

/// Records a full barrier that brings an image from its layout into another.
void transition(const Context& context, VkCommandBuffer commands, DeviceImage& image,
                VkImageLayout layout, Contents contents = Contents::kept,
                Ownership ownership = Ownership::kept);

/// Records that the host may read what copies before have written.
void makeVisibleToHost(VkCommandBuffer commands);

/// Records a copy of the whole image, rows without padding, which the CPU finds in the mapped
/// buffer once the device has done it. The image is in a layout that can be copied from.
void copyOut(VkCommandBuffer commands, const DeviceImage& image, const Buffer& buffer);

/// Records a copy the other way; the image is in a layout that can be copied to.
void copyIn(VkCommandBuffer commands, const Buffer& buffer, const DeviceImage& image);

} // namespace vantor::vulkan
