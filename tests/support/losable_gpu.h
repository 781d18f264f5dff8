#pragma once
// A GPU that a test can take away: the Vulkan calls that find a device lost, answering so when the
// test says it. One at a time.

#include "platform/linux/gpu/vulkan_context.h"

#include <atomic>

namespace vantor {

class LosableGPU {
  public:
    LosableGPU() {
        lost = false;
        replaceable = true;
    }

    /// For the options of the device under test.
    static vulkan::DeviceCalls calls() {
        return {.createDevice = createDevice, .submit = submit, .wait = wait, .counter = counter};
    }

    /// The device that was made last is lost. What it was given is done first: on a device that is
    /// really lost nothing is under way any more.
    void lose() {
        vkDeviceWaitIdle(latest);
        lost = true;
    }
    /// Whether another device can be made.
    void setReplaceable(bool is) { replaceable = is; }

  private:
    static inline std::atomic<bool> lost = false;
    static inline std::atomic<bool> replaceable = true;
    static inline VkDevice latest = VK_NULL_HANDLE;

    static VkResult createDevice(VkPhysicalDevice physical, const VkDeviceCreateInfo* info,
                                 const VkAllocationCallbacks* callbacks, VkDevice* device) {
        if (!replaceable) {
            return VK_ERROR_INITIALIZATION_FAILED;
        }
        lost = false;
        const VkResult result = vkCreateDevice(physical, info, callbacks, device);
        latest = *device;
        return result;
    }
    static VkResult submit(VkQueue queue, std::uint32_t count, const VkSubmitInfo2* infos,
                           VkFence fence) {
        return lost ? VK_ERROR_DEVICE_LOST : vkQueueSubmit2(queue, count, infos, fence);
    }
    static VkResult wait(VkDevice device, const VkSemaphoreWaitInfo* info, std::uint64_t timeout) {
        return lost ? VK_ERROR_DEVICE_LOST : vkWaitSemaphores(device, info, timeout);
    }
    static VkResult counter(VkDevice device, VkSemaphore semaphore, std::uint64_t* value) {
        return lost ? VK_ERROR_DEVICE_LOST : vkGetSemaphoreCounterValue(device, semaphore, value);
    }
};

} // namespace vantor
