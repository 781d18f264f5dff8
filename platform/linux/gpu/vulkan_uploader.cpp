#include "platform/linux/gpu/vulkan_uploader.h"

#include <algorithm>
#include <cstring>

namespace vantor::vulkan {
namespace {

VkBufferImageCopy2 copyOf(const gpu::Region& region) {
    VkBufferImageCopy2 copy{};
    copy.sType = VK_STRUCTURE_TYPE_BUFFER_IMAGE_COPY_2;
    copy.imageSubresource = {VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};
    copy.imageOffset = {static_cast<std::int32_t>(region.x), static_cast<std::int32_t>(region.y),
                        0};
    copy.imageExtent = {static_cast<std::uint32_t>(region.width),
                        static_cast<std::uint32_t>(region.height), 1};
    return copy;
}

std::size_t packedSize(const gpu::Region& region) {
    return static_cast<std::size_t>(region.width * region.height) * kBytesPerTexel;
}

} // namespace

std::shared_ptr<Uploader> Uploader::create(std::shared_ptr<Context> context) {
    std::shared_ptr<Uploader> uploader(new Uploader(std::move(context)));
    VkCommandPoolCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    info.flags = VK_COMMAND_POOL_CREATE_TRANSIENT_BIT;
    info.queueFamilyIndex = uploader->context_->queueFamily();
    const Context& device = *uploader->context_;
    return vkCreateCommandPool(device.device(), &info, nullptr, &uploader->pool_) == VK_SUCCESS
               ? uploader
               : nullptr;
}

Uploader::~Uploader() {
    for (const InFlight& upload : inFlight_) {
        context_->wait(upload.point);
    }
    vkDestroyCommandPool(context_->device(), pool_, nullptr);
}

void Uploader::retire() {
    std::erase_if(inFlight_, [this](const InFlight& upload) {
        if (!context_->isDone(upload.point)) {
            return false;
        }
        vkFreeCommandBuffers(context_->device(), pool_, 1, &upload.commands);
        return true;
    });
}

VkCommandBuffer Uploader::begin() {
    retire();
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = pool_;
    allocation.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocation.commandBufferCount = 1;
    VkCommandBuffer commands = VK_NULL_HANDLE;
    if (vkAllocateCommandBuffers(context_->device(), &allocation, &commands) != VK_SUCCESS) {
        return VK_NULL_HANDLE;
    }
    VkCommandBufferBeginInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    vkBeginCommandBuffer(commands, &info);
    return commands;
}

bool Uploader::upload(DeviceImage& image, const gpu::Region& region,
                      std::span<const std::uint8_t> bytes, std::size_t bytesPerRow) {
    auto staging = Buffer::create(context_, packedSize(region), VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
    const VkCommandBuffer commands = staging ? begin() : VK_NULL_HANDLE;
    if (commands == VK_NULL_HANDLE) {
        return false;
    }
    const std::size_t row = static_cast<std::size_t>(region.width) * kBytesPerTexel;
    for (std::size_t y = 0; y < region.height; ++y) {
        std::memcpy(staging->bytes().data() + y * row, bytes.data() + y * bytesPerRow, row);
    }
    transition(*context_, commands, image, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    const VkBufferImageCopy2 copy = copyOf(region);
    VkCopyBufferToImageInfo2 info{};
    info.sType = VK_STRUCTURE_TYPE_COPY_BUFFER_TO_IMAGE_INFO_2;
    info.srcBuffer = staging->handle();
    info.dstImage = image.handle();
    info.dstImageLayout = VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL;
    info.regionCount = 1;
    info.pRegions = &copy;
    vkCmdCopyBufferToImage2(commands, &info);
    transition(*context_, commands, image, VK_IMAGE_LAYOUT_SHADER_READ_ONLY_OPTIMAL);
    vkEndCommandBuffer(commands);
    const std::uint64_t point = context_->submit(commands);
    inFlight_.push_back({point, commands, std::move(staging)});
    return point != 0;
}

bool Uploader::download(DeviceImage& image, const gpu::Region& region,
                        std::span<std::uint8_t> bytes, std::size_t bytesPerRow) {
    auto staging = Buffer::create(context_, packedSize(region), VK_BUFFER_USAGE_TRANSFER_DST_BIT);
    const VkCommandBuffer commands = staging ? begin() : VK_NULL_HANDLE;
    if (commands == VK_NULL_HANDLE) {
        return false;
    }
    transition(*context_, commands, image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL);
    const VkBufferImageCopy2 copy = copyOf(region);
    VkCopyImageToBufferInfo2 info{};
    info.sType = VK_STRUCTURE_TYPE_COPY_IMAGE_TO_BUFFER_INFO_2;
    info.srcImage = image.handle();
    info.srcImageLayout = VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL;
    info.dstBuffer = staging->handle();
    info.regionCount = 1;
    info.pRegions = &copy;
    vkCmdCopyImageToBuffer2(commands, &info);
    makeVisibleToHost(commands);
    vkEndCommandBuffer(commands);
    const std::uint64_t point = context_->submit(commands);
    const bool done = point != 0 && context_->wait(point);
    if (done) {
        const std::size_t row = static_cast<std::size_t>(region.width) * kBytesPerTexel;
        for (std::size_t y = 0; y < region.height; ++y) {
            std::memcpy(bytes.data() + y * bytesPerRow, staging->bytes().data() + y * row, row);
        }
    }
    vkFreeCommandBuffers(context_->device(), pool_, 1, &commands);
    return done;
}

} // namespace vantor::vulkan
