#pragma once
// One Vulkan device, its graphics queue and the clock of the work submitted to it. Shared by what
// draws (the extension) and what composites (the agent). Handles are raw: they live and die with
// the objects that hold a reference to the context. Used on one thread unless said otherwise.

#include "platform/linux/gpu/pipeline_needs.h"
#include "platform/result.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vulkan/vulkan.h>

namespace vantor::vulkan {

inline constexpr std::size_t kUUIDSize = VK_UUID_SIZE;
using DeviceUUID = std::array<std::uint8_t, kUUIDSize>;

/// Memory bound to one buffer or image.
enum class MemoryKind {
    /// The device's own.
    device,
    /// Mapped by the CPU, coherent.
    mapped,
};

/// The Vulkan calls that make a device and that find it lost. Tests put failing ones in their
/// place.
struct DeviceCalls {
    PFN_vkCreateDevice createDevice = vkCreateDevice;
    PFN_vkQueueSubmit2 submit = vkQueueSubmit2;
    PFN_vkWaitSemaphores wait = vkWaitSemaphores;
    PFN_vkGetSemaphoreCounterValue counter = vkGetSemaphoreCounterValue;
};

/// What orders one submission with a presentation engine: it waits for the one before it writes an
/// image, and signals the other once it has. Null for none.
struct PresentSemaphores {
    VkSemaphore acquired = VK_NULL_HANDLE;
    VkSemaphore finished = VK_NULL_HANDLE;
};

class Context : public std::enable_shared_from_this<Context> {
  public:
    /// Makes a device: the one that the environment variable VANTOR_GPU names (see
    /// preferredDevice). The error is a sentence.
    static Result<std::shared_ptr<Context>, std::string> create(const DeviceCalls& calls = {});
    ~Context();
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    VkPhysicalDevice physicalDevice() const { return physicalDevice_; }
    VkDevice device() const { return device_; }
    VkQueue queue() const { return queue_; }
    std::uint32_t queueFamily() const { return queueFamily_; }
    const VkPhysicalDeviceProperties& properties() const { return properties_; }
    const VkPhysicalDeviceLimits& limits() const { return properties_.limits; }
    std::uint32_t maxPushDescriptors() const { return maxPushDescriptors_; }
    /// Of the device and its driver together: memory can be shared between processes in which both
    /// are equal.
    const DeviceUUID& deviceUUID() const { return deviceUUID_; }
    const DeviceUUID& driverUUID() const { return driverUUID_; }
    std::string name() const { return properties_.deviceName; }
    bool canShareMemory() const { return canShareMemory_; }
    /// Whether swapchains can be made.
    bool canPresent() const { return canPresent_; }
    const DeviceAbilities& abilities() const { return abilities_; }

    PFN_vkCmdPushDescriptorSetKHR pushDescriptorSet() const { return pushDescriptorSet_; }
    PFN_vkGetMemoryFdKHR getMemoryDescriptor() const { return getMemoryDescriptor_; }

    /// A memory type among `typeBits` for that use, or nothing.
    std::optional<std::uint32_t> memoryType(std::uint32_t typeBits, MemoryKind kind) const;

    /// Submits a recorded command buffer; gives the point in the device's work at which it is done,
    /// or 0 when the device is lost. Any thread; two meet here only while a slow picture is drawn
    /// in bands.
    std::uint64_t submit(VkCommandBuffer commands, const PresentSemaphores& semaphores = {});
    /// Presents after what was submitted; the result is vkQueuePresentKHR's. Any thread.
    VkResult present(const VkPresentInfoKHR& info);
    /// The last submission's point.
    std::uint64_t lastPoint() const { return lastPoint_.load(std::memory_order_relaxed); }
    /// True on a lost device too, which does nothing more. Any thread.
    bool isDone(std::uint64_t point) const;
    /// Blocks. False when the device is lost. Any thread.
    bool wait(std::uint64_t point) const;
    /// Whether one of the calls above found the device lost; it stays so. Any thread.
    bool isLost() const { return lost_.load(std::memory_order_relaxed); }

  private:
    explicit Context(const DeviceCalls& calls) : calls_(calls) {}
    /// Whether the call succeeded; notes a lost device.
    bool succeeded(VkResult result) const;
    Result<Done, std::string> chooseDevice();
    Result<Done, std::string> createDevice();

    DeviceCalls calls_;
    mutable std::atomic<bool> lost_ = false;
    VkPhysicalDevice physicalDevice_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    VkQueue queue_ = VK_NULL_HANDLE;
    std::uint32_t queueFamily_ = 0;
    VkPhysicalDeviceProperties properties_{};
    VkPhysicalDeviceMemoryProperties memory_{};
    std::uint32_t maxPushDescriptors_ = 0;
    DeviceUUID deviceUUID_{};
    DeviceUUID driverUUID_{};
    bool canShareMemory_ = false;
    bool canPresent_ = false;
    DeviceAbilities abilities_;
    PFN_vkCmdPushDescriptorSetKHR pushDescriptorSet_ = nullptr;
    PFN_vkGetMemoryFdKHR getMemoryDescriptor_ = nullptr;
    VkSemaphore timeline_ = VK_NULL_HANDLE;
    /// Guards submission to the queue, whose order is that of the points.
    std::mutex submission_;
    std::atomic<std::uint64_t> lastPoint_ = 0;
};

} // namespace vantor::vulkan
