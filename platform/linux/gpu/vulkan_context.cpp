#include "platform/linux/gpu/vulkan_context.h"

#include "platform/linux/gpu/device_choice.h"
#include "platform/linux/gpu/vulkan_instance.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

namespace vantor::vulkan {
namespace {

constexpr VkSubgroupFeatureFlags kSubgroupOperations =
    VK_SUBGROUP_FEATURE_BASIC_BIT | VK_SUBGROUP_FEATURE_VOTE_BIT |
    VK_SUBGROUP_FEATURE_ARITHMETIC_BIT | VK_SUBGROUP_FEATURE_BALLOT_BIT |
    VK_SUBGROUP_FEATURE_SHUFFLE_BIT | VK_SUBGROUP_FEATURE_SHUFFLE_RELATIVE_BIT |
    VK_SUBGROUP_FEATURE_QUAD_BIT;

constexpr std::uint32_t kRequiredVersion = VK_API_VERSION_1_3;

std::string sentence(const char* what, VkResult result) {
    return std::string(what) + " fails with Vulkan error " + std::to_string(result);
}

std::optional<std::uint32_t> graphicsFamily(VkPhysicalDevice device) {
    std::uint32_t count = 0;
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, nullptr);
    std::vector<VkQueueFamilyProperties> families(count);
    vkGetPhysicalDeviceQueueFamilyProperties(device, &count, families.data());
    for (std::uint32_t i = 0; i < count; ++i) {
        if ((families[i].queueFlags & VK_QUEUE_GRAPHICS_BIT) != 0) {
            return i;
        }
    }
    return std::nullopt;
}

std::vector<VkExtensionProperties> extensionsOf(VkPhysicalDevice device) {
    std::uint32_t count = 0;
    vkEnumerateDeviceExtensionProperties(device, nullptr, &count, nullptr);
    std::vector<VkExtensionProperties> extensions(count);
    vkEnumerateDeviceExtensionProperties(device, nullptr, &count, extensions.data());
    return extensions;
}

bool has(const std::vector<VkExtensionProperties>& extensions, std::string_view name) {
    return std::any_of(extensions.begin(), extensions.end(),
                       [name](const auto& entry) { return entry.extensionName == name; });
}

bool isUsable(VkPhysicalDevice device) {
    VkPhysicalDeviceProperties properties{};
    vkGetPhysicalDeviceProperties(device, &properties);
    if (properties.apiVersion < kRequiredVersion || !graphicsFamily(device) ||
        !has(extensionsOf(device), VK_KHR_PUSH_DESCRIPTOR_EXTENSION_NAME)) {
        return false;
    }
    VkPhysicalDeviceVulkan13Features features13{};
    features13.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES;
    VkPhysicalDeviceVulkan12Features features12{};
    features12.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_2_FEATURES;
    features12.pNext = &features13;
    VkPhysicalDeviceFeatures2 features{};
    features.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2;
    features.pNext = &features12;
    vkGetPhysicalDeviceFeatures2(device, &features);
    return features13.dynamicRendering == VK_TRUE && features13.synchronization2 == VK_TRUE &&
           features12.timelineSemaphore == VK_TRUE &&
           features.features.robustBufferAccess == VK_TRUE;
}

} // namespace

Result<std::shared_ptr<Context>, std::string> Context::create(const DeviceCalls& calls) {
    const std::shared_ptr<Context> context(new Context(calls));
    for (const auto step : {&Context::chooseDevice, &Context::createDevice}) {
        if (auto made = (context.get()->*step)(); !made) {
            return Failure{made.error()};
        }
    }
    return context;
}

Context::~Context() {
    if (device_ != VK_NULL_HANDLE) {
        vkDeviceWaitIdle(device_);
        vkDestroySemaphore(device_, timeline_, nullptr);
        vkDestroyDevice(device_, nullptr);
    }
}

Result<Done, std::string> Context::chooseDevice() {
    const VkInstance instance = sharedInstance();
    if (instance == VK_NULL_HANDLE) {
        return Failure{std::string("no Vulkan instance can be made")};
    }
    std::uint32_t count = 0;
    vkEnumeratePhysicalDevices(instance, &count, nullptr);
    std::vector<VkPhysicalDevice> devices(count);
    vkEnumeratePhysicalDevices(instance, &count, devices.data());
    std::erase_if(devices, [](VkPhysicalDevice device) { return !isUsable(device); });
    if (devices.empty()) {
        return Failure{std::string("no Vulkan 1.3 device can be used")};
    }
    const char* named = std::getenv("VANTOR_GPU");
    std::vector<DeviceCandidate> candidates;
    for (const VkPhysicalDevice device : devices) {
        VkPhysicalDeviceProperties properties{};
        vkGetPhysicalDeviceProperties(device, &properties);
        candidates.push_back({.name = properties.deviceName, .type = properties.deviceType});
    }
    physicalDevice_ = devices[preferredDevice(candidates, named != nullptr ? named : "")];
    queueFamily_ = *graphicsFamily(physicalDevice_);

    VkPhysicalDevicePushDescriptorPropertiesKHR push{};
    push.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PUSH_DESCRIPTOR_PROPERTIES_KHR;
    VkPhysicalDeviceIDProperties identity{};
    identity.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_ID_PROPERTIES;
    identity.pNext = &push;
    VkPhysicalDeviceSubgroupProperties subgroups{};
    subgroups.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_SUBGROUP_PROPERTIES;
    push.pNext = &subgroups;
    VkPhysicalDeviceProperties2 properties{};
    properties.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_PROPERTIES_2;
    properties.pNext = &identity;
    vkGetPhysicalDeviceProperties2(physicalDevice_, &properties);
    properties_ = properties.properties;
    maxPushDescriptors_ = push.maxPushDescriptors;
    abilities_.subgroups =
        (subgroups.supportedStages & VK_SHADER_STAGE_FRAGMENT_BIT) != 0 &&
        (subgroups.supportedOperations & kSubgroupOperations) == kSubgroupOperations;
    std::memcpy(deviceUUID_.data(), identity.deviceUUID, kUUIDSize);
    std::memcpy(driverUUID_.data(), identity.driverUUID, kUUIDSize);
    vkGetPhysicalDeviceMemoryProperties(physicalDevice_, &memory_);
    return Done{};
}

Result<Done, std::string> Context::createDevice() {
    const auto available = extensionsOf(physicalDevice_);
    std::vector<const char*> extensions{VK_KHR_PUSH_DESCRIPTOR_EXTENSION_NAME};
    canShareMemory_ = has(available, VK_KHR_EXTERNAL_MEMORY_FD_EXTENSION_NAME);
    if (canShareMemory_) {
        extensions.push_back(VK_KHR_EXTERNAL_MEMORY_FD_EXTENSION_NAME);
    }
    canPresent_ = isPresentationEnabled() && has(available, VK_KHR_SWAPCHAIN_EXTENSION_NAME);
    if (canPresent_) {
        extensions.push_back(VK_KHR_SWAPCHAIN_EXTENSION_NAME);
    }
    VkPhysicalDeviceRobustness2FeaturesEXT robustness{};
    robustness.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_ROBUSTNESS_2_FEATURES_EXT;
    VkPhysicalDeviceFeatures2 supported{};
    supported.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2;
    const bool knowsRobustness2 = has(available, VK_EXT_ROBUSTNESS_2_EXTENSION_NAME);
    if (knowsRobustness2) {
        supported.pNext = &robustness;
        extensions.push_back(VK_EXT_ROBUSTNESS_2_EXTENSION_NAME);
    }
    vkGetPhysicalDeviceFeatures2(physicalDevice_, &supported);
    // Reads past a buffer's end give zero where the device can promise it, and stay inside the
    // process's own data everywhere.
    robustness.robustImageAccess2 = VK_FALSE;
    robustness.nullDescriptor = VK_FALSE;

    VkPhysicalDeviceVulkan13Features features13{};
    features13.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_3_FEATURES;
    features13.pNext = knowsRobustness2 ? &robustness : nullptr;
    features13.dynamicRendering = VK_TRUE;
    features13.synchronization2 = VK_TRUE;
    VkPhysicalDeviceVulkan12Features features12{};
    features12.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_VULKAN_1_2_FEATURES;
    features12.pNext = &features13;
    features12.timelineSemaphore = VK_TRUE;
    VkPhysicalDeviceFeatures2 features{};
    features.sType = VK_STRUCTURE_TYPE_PHYSICAL_DEVICE_FEATURES_2;
    features.pNext = &features12;
    features.features.robustBufferAccess = VK_TRUE;
    features.features.shaderInt64 = supported.features.shaderInt64;
    abilities_.int64 = supported.features.shaderInt64 == VK_TRUE;

    const float priority = 1.0F;
    VkDeviceQueueCreateInfo queue{};
    queue.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queue.queueFamilyIndex = queueFamily_;
    queue.queueCount = 1;
    queue.pQueuePriorities = &priority;
    VkDeviceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    info.pNext = &features;
    info.queueCreateInfoCount = 1;
    info.pQueueCreateInfos = &queue;
    info.enabledExtensionCount = static_cast<std::uint32_t>(extensions.size());
    info.ppEnabledExtensionNames = extensions.data();
    if (const VkResult result = calls_.createDevice(physicalDevice_, &info, nullptr, &device_);
        result != VK_SUCCESS) {
        device_ = VK_NULL_HANDLE;
        return Failure{sentence("creating a Vulkan device", result)};
    }
    vkGetDeviceQueue(device_, queueFamily_, 0, &queue_);
    pushDescriptorSet_ = reinterpret_cast<PFN_vkCmdPushDescriptorSetKHR>(
        vkGetDeviceProcAddr(device_, "vkCmdPushDescriptorSetKHR"));
    getMemoryDescriptor_ =
        reinterpret_cast<PFN_vkGetMemoryFdKHR>(vkGetDeviceProcAddr(device_, "vkGetMemoryFdKHR"));

    VkSemaphoreTypeCreateInfo type{};
    type.sType = VK_STRUCTURE_TYPE_SEMAPHORE_TYPE_CREATE_INFO;
    type.semaphoreType = VK_SEMAPHORE_TYPE_TIMELINE;
    VkSemaphoreCreateInfo semaphore{};
    semaphore.sType = VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO;
    semaphore.pNext = &type;
    if (const VkResult result = vkCreateSemaphore(device_, &semaphore, nullptr, &timeline_);
        result != VK_SUCCESS) {
        return Failure{sentence("creating a semaphore", result)};
    }
    return Done{};
}

std::optional<std::uint32_t> Context::memoryType(std::uint32_t typeBits, MemoryKind kind) const {
    const VkMemoryPropertyFlags wanted =
        kind == MemoryKind::device
            ? VK_MEMORY_PROPERTY_DEVICE_LOCAL_BIT
            : VK_MEMORY_PROPERTY_HOST_VISIBLE_BIT | VK_MEMORY_PROPERTY_HOST_COHERENT_BIT;
    // Mapped memory that the CPU caches is read an order of magnitude faster.
    for (const VkMemoryPropertyFlags flags :
         {wanted | VK_MEMORY_PROPERTY_HOST_CACHED_BIT, wanted}) {
        if (kind == MemoryKind::device && flags != wanted) {
            continue;
        }
        for (std::uint32_t i = 0; i < memory_.memoryTypeCount; ++i) {
            if ((typeBits & (1U << i)) != 0 &&
                (memory_.memoryTypes[i].propertyFlags & flags) == flags) {
                return i;
            }
        }
    }
    return std::nullopt;
}

std::uint64_t Context::submit(VkCommandBuffer commands, const PresentSemaphores& semaphores) {
    const std::lock_guard lock(submission_);
    VkCommandBufferSubmitInfo buffer{};
    buffer.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_SUBMIT_INFO;
    buffer.commandBuffer = commands;
    const auto semaphoreInfo = [](VkSemaphore semaphore, std::uint64_t value) {
        VkSemaphoreSubmitInfo entry{};
        entry.sType = VK_STRUCTURE_TYPE_SEMAPHORE_SUBMIT_INFO;
        entry.semaphore = semaphore;
        entry.value = value;
        entry.stageMask = VK_PIPELINE_STAGE_2_ALL_COMMANDS_BIT;
        return entry;
    };
    const VkSemaphoreSubmitInfo wait = semaphoreInfo(semaphores.acquired, 0);
    const std::array signals{semaphoreInfo(timeline_, lastPoint_ + 1),
                             semaphoreInfo(semaphores.finished, 0)};
    VkSubmitInfo2 info{};
    info.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO_2;
    info.commandBufferInfoCount = 1;
    info.pCommandBufferInfos = &buffer;
    info.waitSemaphoreInfoCount = semaphores.acquired != VK_NULL_HANDLE ? 1 : 0;
    info.pWaitSemaphoreInfos = &wait;
    info.signalSemaphoreInfoCount = semaphores.finished != VK_NULL_HANDLE ? 2 : 1;
    info.pSignalSemaphoreInfos = signals.data();
    return succeeded(calls_.submit(queue_, 1, &info, VK_NULL_HANDLE)) ? ++lastPoint_ : 0;
}

VkResult Context::present(const VkPresentInfoKHR& info) {
    const std::lock_guard lock(submission_);
    const VkResult result = vkQueuePresentKHR(queue_, &info);
    static_cast<void>(succeeded(result));
    return result;
}

bool Context::isDone(std::uint64_t point) const {
    std::uint64_t reached = 0;
    return isLost() || !succeeded(calls_.counter(device_, timeline_, &reached)) || reached >= point;
}

bool Context::wait(std::uint64_t point) const {
    VkSemaphoreWaitInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SEMAPHORE_WAIT_INFO;
    info.semaphoreCount = 1;
    info.pSemaphores = &timeline_;
    info.pValues = &point;
    return succeeded(calls_.wait(device_, &info, UINT64_MAX));
}

bool Context::succeeded(VkResult result) const {
    if (result == VK_ERROR_DEVICE_LOST) {
        lost_.store(true, std::memory_order_relaxed);
    }
    return result == VK_SUCCESS;
}

} // namespace vantor::vulkan
