#include "tests/support/surface_painter.h"

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace vantor {
namespace {

constexpr const char* kInstanceExtensions[] = {"VK_KHR_surface", "VK_KHR_xlib_surface",
                                               "VK_KHR_xcb_surface", "VK_KHR_wayland_surface"};
constexpr const char* kSwapchain = VK_KHR_SWAPCHAIN_EXTENSION_NAME;
constexpr VkImageSubresourceRange kWhole{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};

void require(VkResult result, const char* what) {
    if (result != VK_SUCCESS) {
        throw std::runtime_error(std::string("no ") + what + ": " + std::to_string(result));
    }
}

VkImageMemoryBarrier barrier(VkImage image, VkImageLayout from, VkImageLayout to) {
    VkImageMemoryBarrier made{};
    made.sType = VK_STRUCTURE_TYPE_IMAGE_MEMORY_BARRIER;
    made.srcAccessMask = VK_ACCESS_MEMORY_WRITE_BIT;
    made.dstAccessMask = VK_ACCESS_MEMORY_READ_BIT | VK_ACCESS_MEMORY_WRITE_BIT;
    made.oldLayout = from;
    made.newLayout = to;
    made.srcQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    made.dstQueueFamilyIndex = VK_QUEUE_FAMILY_IGNORED;
    made.image = image;
    made.subresourceRange = kWhole;
    return made;
}

} // namespace

VkInstance surfaceInstance() {
    static const VkInstance instance = [] {
        VkApplicationInfo application{};
        application.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO;
        application.apiVersion = VK_API_VERSION_1_1;
        VkInstanceCreateInfo info{};
        info.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
        info.pApplicationInfo = &application;
        info.enabledExtensionCount = std::size(kInstanceExtensions);
        info.ppEnabledExtensionNames = kInstanceExtensions;
        VkInstance made = VK_NULL_HANDLE;
        vkCreateInstance(&info, nullptr, &made);
        return made;
    }();
    return instance;
}

SurfacePainter::SurfacePainter(VkSurfaceKHR surface, std::uint32_t width, std::uint32_t height)
    : surface_(surface) {
    std::uint32_t count = 1;
    if (vkEnumeratePhysicalDevices(surfaceInstance(), &count, &physicalDevice_) < 0 || count == 0) {
        throw std::runtime_error("no Vulkan device");
    }
    VkBool32 shows = VK_FALSE;
    vkGetPhysicalDeviceSurfaceSupportKHR(physicalDevice_, 0, surface_, &shows);
    if (shows == VK_FALSE) {
        throw std::runtime_error("the first queue family cannot show on the surface");
    }
    const float priority = 1;
    VkDeviceQueueCreateInfo queue{};
    queue.sType = VK_STRUCTURE_TYPE_DEVICE_QUEUE_CREATE_INFO;
    queue.queueCount = 1;
    queue.pQueuePriorities = &priority;
    VkDeviceCreateInfo device{};
    device.sType = VK_STRUCTURE_TYPE_DEVICE_CREATE_INFO;
    device.queueCreateInfoCount = 1;
    device.pQueueCreateInfos = &queue;
    device.enabledExtensionCount = 1;
    device.ppEnabledExtensionNames = &kSwapchain;
    require(vkCreateDevice(physicalDevice_, &device, nullptr, &device_), "device");
    vkGetDeviceQueue(device_, 0, 0, &queue_);

    VkSurfaceCapabilitiesKHR capabilities{};
    require(vkGetPhysicalDeviceSurfaceCapabilitiesKHR(physicalDevice_, surface_, &capabilities),
            "capabilities");
    VkSwapchainCreateInfoKHR swapchain{};
    swapchain.sType = VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR;
    swapchain.surface = surface_;
    swapchain.minImageCount = std::max(capabilities.minImageCount, 3U);
    swapchain.imageFormat = VK_FORMAT_B8G8R8A8_UNORM;
    swapchain.imageColorSpace = VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
    swapchain.imageExtent = {width, height};
    swapchain.imageArrayLayers = 1;
    swapchain.imageUsage = VK_IMAGE_USAGE_TRANSFER_DST_BIT;
    swapchain.preTransform = VK_SURFACE_TRANSFORM_IDENTITY_BIT_KHR;
    swapchain.compositeAlpha = VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR;
    swapchain.presentMode = VK_PRESENT_MODE_MAILBOX_KHR;
    require(vkCreateSwapchainKHR(device_, &swapchain, nullptr, &swapchain_), "swapchain");

    VkCommandPoolCreateInfo pool{};
    pool.sType = VK_STRUCTURE_TYPE_COMMAND_POOL_CREATE_INFO;
    require(vkCreateCommandPool(device_, &pool, nullptr, &pool_), "command pool");
    VkCommandBufferAllocateInfo allocation{};
    allocation.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_ALLOCATE_INFO;
    allocation.commandPool = pool_;
    allocation.commandBufferCount = 1;
    require(vkAllocateCommandBuffers(device_, &allocation, &commands_), "command buffer");
    VkFenceCreateInfo fence{};
    fence.sType = VK_STRUCTURE_TYPE_FENCE_CREATE_INFO;
    require(vkCreateFence(device_, &fence, nullptr, &fence_), "fence");
}

SurfacePainter::~SurfacePainter() {
    vkDeviceWaitIdle(device_);
    vkDestroyFence(device_, fence_, nullptr);
    vkDestroyCommandPool(device_, pool_, nullptr);
    vkDestroySwapchainKHR(device_, swapchain_, nullptr);
    vkDestroyDevice(device_, nullptr);
    vkDestroySurfaceKHR(surfaceInstance(), surface_, nullptr);
}

bool SurfacePainter::paint(float red, float green, float blue) {
    std::uint32_t index = 0;
    if (vkAcquireNextImageKHR(device_, swapchain_, UINT64_MAX, VK_NULL_HANDLE, fence_, &index) !=
        VK_SUCCESS) {
        return false;
    }
    vkWaitForFences(device_, 1, &fence_, VK_TRUE, UINT64_MAX);
    vkResetFences(device_, 1, &fence_);
    std::uint32_t count = 0;
    vkGetSwapchainImagesKHR(device_, swapchain_, &count, nullptr);
    std::vector<VkImage> images(count);
    vkGetSwapchainImagesKHR(device_, swapchain_, &count, images.data());

    VkCommandBufferBeginInfo begin{};
    begin.sType = VK_STRUCTURE_TYPE_COMMAND_BUFFER_BEGIN_INFO;
    vkResetCommandPool(device_, pool_, 0);
    vkBeginCommandBuffer(commands_, &begin);
    const auto draws =
        barrier(images[index], VK_IMAGE_LAYOUT_UNDEFINED, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    vkCmdPipelineBarrier(commands_, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0, nullptr, 0, nullptr, 1, &draws);
    const VkClearColorValue color{{red, green, blue, 1}};
    vkCmdClearColorImage(commands_, images[index], VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, &color, 1,
                         &kWhole);
    const auto shows = barrier(images[index], VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                               VK_IMAGE_LAYOUT_PRESENT_SRC_KHR);
    vkCmdPipelineBarrier(commands_, VK_PIPELINE_STAGE_ALL_COMMANDS_BIT,
                         VK_PIPELINE_STAGE_ALL_COMMANDS_BIT, 0, 0, nullptr, 0, nullptr, 1, &shows);
    vkEndCommandBuffer(commands_);
    VkSubmitInfo submit{};
    submit.sType = VK_STRUCTURE_TYPE_SUBMIT_INFO;
    submit.commandBufferCount = 1;
    submit.pCommandBuffers = &commands_;
    vkQueueSubmit(queue_, 1, &submit, VK_NULL_HANDLE);
    vkQueueWaitIdle(queue_);
    VkPresentInfoKHR present{};
    present.sType = VK_STRUCTURE_TYPE_PRESENT_INFO_KHR;
    present.swapchainCount = 1;
    present.pSwapchains = &swapchain_;
    present.pImageIndices = &index;
    return vkQueuePresentKHR(queue_, &present) == VK_SUCCESS;
}

} // namespace vantor
