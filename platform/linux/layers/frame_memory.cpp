#include "platform/linux/layers/frame_memory.h"

#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace vantor {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

} // namespace

std::shared_ptr<FrameMemory> FrameMemory::create(const vulkan::DeviceImage& image,
                                                 std::function<void()> copied) {
    std::shared_ptr<FrameMemory> memory(new FrameMemory(image.context(), std::move(copied)));
    const std::size_t size = std::size_t{image.width()} * image.height() * kBytesPerPixel;
    return memory->makeMemory(size) && memory->makeCommands() ? memory : nullptr;
}

bool FrameMemory::makeMemory(std::size_t size) {
    file_ = FileDescriptor(memfd_create("vantor-frame", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    // Sealed, so that nobody who is given it can take it away from under the mapping.
    if (!file_ || ftruncate(file_.get(), static_cast<off_t>(size)) != 0 ||
        fcntl(file_.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_SEAL) != 0) {
        return false;
    }
    void* const mapped = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file_.get(), 0);
    if (mapped == MAP_FAILED) {
        return false;
    }
    mapped_ = {static_cast<std::uint8_t*>(mapped), size};
    return true;
}

bool FrameMemory::makeCommands() {
    const vulkan::Context& context = *context_;
    staging_ = vulkan::Buffer::create(context_, mapped_.size(), VK_BUFFER_USAGE_TRANSFER_DST_BIT);
    VkCommandPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    pool.queueFamilyIndex = context.queueFamily();
    if (!staging_ || vkCreateCommandPool(context.device(), &pool, nullptr, &pool_) != VK_SUCCESS) {
        return false;
    }
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = pool_;
    allocation.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocation.commandBufferCount = 1;
    return vkAllocateCommandBuffers(context.device(), &allocation, &commands_) == VK_SUCCESS;
}

FrameMemory::~FrameMemory() {
    // No copy is under way: the completion thread keeps this until it ends.
    vkDestroyCommandPool(context_->device(), pool_, nullptr);
    if (!mapped_.empty()) {
        munmap(mapped_.data(), mapped_.size());
    }
}

bool FrameMemory::copy(const vulkan::DeviceParts& parts, vulkan::DeviceImage& image,
                       std::uint64_t sequence) {
    if (started_ == sequence) {
        return true;
    }
    const vulkan::Context& context = *context_;
    VkCommandBufferBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    begin.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    if (parts.context != context_ || vkResetCommandPool(context.device(), pool_, 0) != VK_SUCCESS ||
        vkBeginCommandBuffer(commands_, &begin) != VK_SUCCESS) {
        return false;
    }
    vulkan::transition(context, commands_, image, VK_IMAGE_LAYOUT_GENERAL, vulkan::Contents::kept,
                       vulkan::Ownership::acquiredFromOutside);
    vulkan::copyOut(commands_, image, *staging_);
    vulkan::transition(context, commands_, image, VK_IMAGE_LAYOUT_GENERAL, vulkan::Contents::kept,
                       vulkan::Ownership::releasedOutside);
    const std::uint64_t point =
        vkEndCommandBuffer(commands_) == VK_SUCCESS ? context_->submit(commands_) : 0;
    if (point == 0) {
        return false;
    }
    started_ = sequence;
    parts.completion->notify(point, shared_from_this());
    return true;
}

std::uint64_t FrameMemory::finished(double) {
    std::memcpy(mapped_.data(), staging_->bytes().data(), mapped_.size());
    held_.store(started_, std::memory_order_release);
    copied_();
    return 0;
}

} // namespace vantor
