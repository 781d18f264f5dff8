#include "platform/linux/gpu/vulkan_resources.h"

#include "platform/linux/gpu/vulkan_instance.h"

namespace vantor::vulkan {
namespace {

VkDeviceMemory allocate(const Context& context, const VkMemoryRequirements& needs, MemoryKind kind,
                        const void* next) {
    const auto type = context.memoryType(needs.memoryTypeBits, kind);
    if (!type) {
        return VK_NULL_HANDLE;
    }
    VkMemoryAllocateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_MEMORY_ALLOCATE_INFO;
    info.pNext = next;
    info.allocationSize = needs.size;
    info.memoryTypeIndex = *type;
    VkDeviceMemory memory = VK_NULL_HANDLE;
    return vkAllocateMemory(context.device(), &info, nullptr, &memory) == VK_SUCCESS
               ? memory
               : VK_NULL_HANDLE;
}

VkMemoryRequirements needsOf(const Context& context, VkImage image) {
    VkMemoryRequirements needs{};
    vkGetImageMemoryRequirements(context.device(), image, &needs);
    return needs;
}

VkBufferImageCopy wholeCopy(const DeviceImage& image) {
    VkBufferImageCopy copy{};
    copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    copy.imageExtent = {image.width(), image.height(), 1};
    return copy;
}

} // namespace

std::unique_ptr<Buffer> Buffer::create(std::shared_ptr<Context> context, VkDeviceSize size,
                                       VkBufferUsageFlags usage) {
    std::unique_ptr<Buffer> buffer(new Buffer(std::move(context)));
    const Context& device = *buffer->context_;
    VkBufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
    info.size = size;
    info.usage = usage;
    if (vkCreateBuffer(device.device(), &info, nullptr, &buffer->buffer_) != VK_SUCCESS) {
        buffer->buffer_ = VK_NULL_HANDLE;
        return nullptr;
    }
    VkMemoryRequirements needs{};
    vkGetBufferMemoryRequirements(device.device(), buffer->buffer_, &needs);
    buffer->memory_ = allocate(device, needs, MemoryKind::mapped, nullptr);
    void* mapped = nullptr;
    if (buffer->memory_ == VK_NULL_HANDLE ||
        vkBindBufferMemory(device.device(), buffer->buffer_, buffer->memory_, 0) != VK_SUCCESS ||
        vkMapMemory(device.device(), buffer->memory_, 0, VK_WHOLE_SIZE, 0, &mapped) != VK_SUCCESS) {
        return nullptr;
    }
    buffer->bytes_ = {static_cast<std::uint8_t*>(mapped), size};
    return buffer;
}

Buffer::~Buffer() {
    vkDestroyBuffer(context_->device(), buffer_, nullptr);
    vkFreeMemory(context_->device(), memory_, nullptr);
}

bool DeviceImage::createImage(bool external) {
    VkExternalMemoryImageCreateInfo shared{};
    shared.sType = VK_STRUCTURE_TYPE_EXTERNAL_MEMORY_IMAGE_CREATE_INFO;
    shared.handleTypes = VK_EXTERNAL_MEMORY_HANDLE_TYPE_OPAQUE_FD_BIT;
    VkImageCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_CREATE_INFO;
    info.pNext = external ? &shared : nullptr;
    info.imageType = VK_IMAGE_TYPE_2D;
    info.format = description_.format;
    info.extent = {description_.width, description_.height, 1};
    info.mipLevels = 1;
    info.arrayLayers = 1;
    info.samples = VK_SAMPLE_COUNT_1_BIT;
    info.tiling = VK_IMAGE_TILING_OPTIMAL;
    info.usage = description_.usage;
    const std::uint32_t largest = context_->limits().maxImageDimension2D;
    if (description_.width == 0 || description_.height == 0 || description_.width > largest ||
        description_.height > largest ||
        vkCreateImage(context_->device(), &info, nullptr, &image_) != VK_SUCCESS) {
        image_ = VK_NULL_HANDLE;
        return false;
    }
    return true;
}

bool DeviceImage::bind(VkDeviceMemory memory) {
    memory_ = memory;
    return memory_ != VK_NULL_HANDLE &&
           vkBindImageMemory(context_->device(), image_, memory_, 0) == VK_SUCCESS && createView();
}

bool DeviceImage::createView() {
    constexpr VkImageUsageFlags kViewed =
        VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_SAMPLED_BIT;
    if ((description_.usage & kViewed) == 0) {
        return true;
    }
    VkImageViewCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_IMAGE_VIEW_CREATE_INFO;
    info.image = image_;
    info.viewType = VK_IMAGE_VIEW_TYPE_2D;
    info.format = description_.format;
    info.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    return vkCreateImageView(context_->device(), &info, nullptr, &view_) == VK_SUCCESS;
}

std::unique_ptr<DeviceImage> DeviceImage::create(std::shared_ptr<Context> context,
                                                 const ImageDescription& description) {
    std::unique_ptr<DeviceImage> image(new DeviceImage(std::move(context), description));
    const bool external = description.sharing == Sharing::exported;
    if (!image->createImage(external)) {
        return nullptr;
    }
    const Context& device = *image->context_;
    VkMemoryDedicatedAllocateInfo dedicated{};
    dedicated.sType = VK_STRUCTURE_TYPE_MEMORY_DEDICATED_ALLOCATE_INFO;
    dedicated.image = image->image_;
    VkExportMemoryAllocateInfo exported{};
    exported.sType = VK_STRUCTURE_TYPE_EXPORT_MEMORY_ALLOCATE_INFO;
    exported.pNext = &dedicated;
    exported.handleTypes = VK_EXTERNAL_MEMORY_HANDLE_TYPE_OPAQUE_FD_BIT;
    const VkMemoryRequirements needs = needsOf(device, image->image_);
    image->memorySize_ = needs.size;
    const bool bound =
        image->bind(allocate(device, needs, MemoryKind::device, external ? &exported : nullptr));
    return bound ? std::move(image) : nullptr;
}

std::unique_ptr<DeviceImage> DeviceImage::import(std::shared_ptr<Context> context,
                                                 const ImageDescription& description,
                                                 FileDescriptor memory, std::uint64_t memorySize) {
    std::unique_ptr<DeviceImage> image(new DeviceImage(std::move(context), description));
    if (!image->createImage(true)) {
        return nullptr;
    }
    const Context& device = *image->context_;
    const VkMemoryRequirements needs = needsOf(device, image->image_);
    if (memorySize != needs.size) {
        return nullptr;
    }
    image->memorySize_ = memorySize;
    VkMemoryDedicatedAllocateInfo dedicated{};
    dedicated.sType = VK_STRUCTURE_TYPE_MEMORY_DEDICATED_ALLOCATE_INFO;
    dedicated.image = image->image_;
    VkImportMemoryFdInfoKHR imported{};
    imported.sType = VK_STRUCTURE_TYPE_IMPORT_MEMORY_FD_INFO_KHR;
    imported.pNext = &dedicated;
    imported.handleType = VK_EXTERNAL_MEMORY_HANDLE_TYPE_OPAQUE_FD_BIT;
    imported.fd = memory.get();
    const VkDeviceMemory bound = allocate(device, needs, MemoryKind::device, &imported);
    if (bound != VK_NULL_HANDLE) {
        // The driver owns the descriptor from here on.
        static_cast<void>(memory.release());
    }
    noteImported(device.device(), image->image_);
    return image->bind(bound) ? std::move(image) : nullptr;
}

std::unique_ptr<DeviceImage> DeviceImage::borrow(std::shared_ptr<Context> context,
                                                 const ImageDescription& description,
                                                 VkImage image) {
    std::unique_ptr<DeviceImage> borrowed(new DeviceImage(std::move(context), description));
    borrowed->image_ = image;
    borrowed->isBorrowed_ = true;
    return borrowed->createView() ? std::move(borrowed) : nullptr;
}

DeviceImage::~DeviceImage() {
    vkDestroyImageView(context_->device(), view_, nullptr);
    if (!isBorrowed_) {
        vkDestroyImage(context_->device(), image_, nullptr);
    }
    vkFreeMemory(context_->device(), memory_, nullptr);
}

FileDescriptor DeviceImage::exportMemory() const {
    VkMemoryGetFdInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_MEMORY_GET_FD_INFO_KHR;
    info.memory = memory_;
    info.handleType = VK_EXTERNAL_MEMORY_HANDLE_TYPE_OPAQUE_FD_BIT;
    int descriptor = -1;
    if (context_->getMemoryDescriptor()(context_->device(), &info, &descriptor) != VK_SUCCESS) {
        return {};
    }
    return FileDescriptor(descriptor);
}

void transition(const Context& context, VkCommandBuffer commands, DeviceImage& image,
                VkImageLayout layout, Contents contents, Ownership ownership) {
    if (ownership == Ownership::releasedOutside && image.layout() != layout) {
        // Both sides of an ownership transfer name the same layouts, and the other one knows only
        // the last.
        transition(context, commands, image, layout, contents);
    }
    VkImageMemoryBarrier2 barrier{};
    barrier.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER_2;
    barrier.srcStageMask = VK_PIPELINE_STAGE_2_ALL_COMMANDS_BIT;
    barrier.srcAccessMask = VK_ACCESS_2_MEMORY_WRITE_BIT;
    barrier.dstStageMask = VK_PIPELINE_STAGE_2_ALL_COMMANDS_BIT;
    barrier.dstAccessMask = VK_ACCESS_2_MEMORY_READ_BIT | VK_ACCESS_2_MEMORY_WRITE_BIT;
    barrier.oldLayout =
        contents == Contents::discarded ? VK_IMAGE_LAYOUT_UNDEFINED : image.layout();
    barrier.newLayout = layout;
    barrier.srcQueueFamilyIndex = ownership == Ownership::acquiredFromOutside
                                      ? VK_QUEUE_FAMILY_EXTERNAL
                                      : context.queueFamily();
    barrier.dstQueueFamilyIndex =
        ownership == Ownership::releasedOutside ? VK_QUEUE_FAMILY_EXTERNAL : context.queueFamily();
    barrier.image = image.handle();
    barrier.subresourceRange = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    VkDependencyInfo dependency{};
    dependency.sType = VK_STRUCTURE_TYPE_DEPENDENCY_INFO;
    dependency.imageMemoryBarrierCount = 1;
    dependency.pImageMemoryBarriers = &barrier;
    vkCmdPipelineBarrier2(commands, &dependency);
    image.setLayout(layout);
}

void makeVisibleToHost(VkCommandBuffer commands) {
    VkMemoryBarrier2 toHost{};
    toHost.sType = VK_STRUCTURE_TYPE_MEMORY_BARRIER_2;
    toHost.srcStageMask = VK_PIPELINE_STAGE_2_COPY_BIT;
    toHost.srcAccessMask = VK_ACCESS_2_TRANSFER_WRITE_BIT;
    toHost.dstStageMask = VK_PIPELINE_STAGE_2_HOST_BIT;
    toHost.dstAccessMask = VK_ACCESS_2_HOST_READ_BIT;
    VkDependencyInfo dependency{};
    dependency.sType = VK_STRUCTURE_TYPE_DEPENDENCY_INFO;
    dependency.memoryBarrierCount = 1;
    dependency.pMemoryBarriers = &toHost;
    vkCmdPipelineBarrier2(commands, &dependency);
}

void copyOut(VkCommandBuffer commands, const DeviceImage& image, const Buffer& buffer) {
    const VkBufferImageCopy copy = wholeCopy(image);
    vkCmdCopyImageToBuffer(commands, image.handle(), image.layout(), buffer.handle(), 1, &copy);
    makeVisibleToHost(commands);
}

void copyIn(VkCommandBuffer commands, const Buffer& buffer, const DeviceImage& image) {
    const VkBufferImageCopy copy = wholeCopy(image);
    vkCmdCopyBufferToImage(commands, buffer.handle(), image.handle(), image.layout(), 1, &copy);
}

} // namespace vantor::vulkan
