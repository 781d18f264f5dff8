#include "agent/host/memory_canvas.h"

#include <cstring>

namespace vantor::agent {
namespace {

constexpr VkImageUsageFlags kMemoryUsage = VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT |
                                           VK_IMAGE_USAGE_TRANSFER_DST_BIT |
                                           VK_IMAGE_USAGE_TRANSFER_SRC_BIT;

} // namespace

std::unique_ptr<MemoryCanvas> MemoryCanvas::create(std::shared_ptr<vulkan::Context> gpu,
                                                   std::uint32_t width, std::uint32_t height) {
    std::unique_ptr<MemoryCanvas> made(new MemoryCanvas(std::move(gpu)));
    made->commands_ = CommandBuffer::create(made->gpu_);
    made->image_ = vulkan::DeviceImage::create(made->gpu_, {.format = VK_FORMAT_B8G8R8A8_UNORM,
                                                            .width = width,
                                                            .height = height,
                                                            .usage = kMemoryUsage});
    return made->image_ && made->commands_ ? std::move(made) : nullptr;
}

bool MemoryCanvas::read(std::span<std::uint8_t> bytes) {
    const VkDeviceSize size = VkDeviceSize{width()} * height() * 4;
    if (!readback_) {
        readback_ = vulkan::Buffer::create(gpu_, size, VK_BUFFER_USAGE_TRANSFER_DST_BIT);
    }
    if (!readback_ || bytes.size() < size || image_->layout() == VK_IMAGE_LAYOUT_UNDEFINED ||
        !commands_->begin()) {
        return false;
    }
    vulkan::transition(*gpu_, commands_->handle(), *image_, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL);
    vulkan::copyOut(commands_->handle(), *image_, *readback_);
    if (!commands_->submit() || !commands_->wait()) {
        return false;
    }
    std::memcpy(bytes.data(), readback_->bytes().data(), size);
    return true;
}

} // namespace vantor::agent
