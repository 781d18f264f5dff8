#include "agent/host/command_buffer.h"

namespace vantor::agent {

std::unique_ptr<CommandBuffer> CommandBuffer::create(std::shared_ptr<vulkan::Context> gpu) {
    std::unique_ptr<CommandBuffer> made(new CommandBuffer(std::move(gpu)));
    const VkDevice device = made->gpu_->device();
    VkCommandPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    pool.queueFamilyIndex = made->gpu_->queueFamily();
    if (vkCreateCommandPool(device, &pool, nullptr, &made->pool_) != VK_SUCCESS) {
        return nullptr;
    }
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = made->pool_;
    allocation.level = VK_COMMAND_BUFFER_LEVEL_PRIMARY;
    allocation.commandBufferCount = 1;
    return vkAllocateCommandBuffers(device, &allocation, &made->commands_) == VK_SUCCESS
               ? std::move(made)
               : nullptr;
}

CommandBuffer::~CommandBuffer() {
    static_cast<void>(gpu_->wait(point_));
    vkDestroyCommandPool(gpu_->device(), pool_, nullptr);
}

bool CommandBuffer::begin() {
    VkCommandBufferBeginInfo info{};
    info.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    info.flags = VK_COMMAND_BUFFER_USAGE_ONE_TIME_SUBMIT_BIT;
    return isIdle() && vkResetCommandPool(gpu_->device(), pool_, 0) == VK_SUCCESS &&
           vkBeginCommandBuffer(commands_, &info) == VK_SUCCESS;
}

bool CommandBuffer::submit(const vulkan::PresentSemaphores& semaphores) {
    if (vkEndCommandBuffer(commands_) != VK_SUCCESS) {
        return false;
    }
    point_ = gpu_->submit(commands_, semaphores);
    return point_ != 0;
}

} // namespace vantor::agent
