#include "agent/host/swapchain.h"

#include "platform/linux/gpu/vulkan_instance.h"

#include <algorithm>
#include <utility>

namespace vantor::agent {
namespace {

constexpr VkImageUsageFlags kScreenUsage =
    VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_DST_BIT;
/// What a surface without a size of its own says.
constexpr std::uint32_t kNoExtent = 0xFFFFFFFF;
/// One on the screen, one on its way there, one to draw into.
constexpr std::uint32_t kImages = 3;

VkSemaphore makeSemaphore(VkDevice device) {
    VkSemaphoreCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_SEMAPHORE_CREATE_INFO;
    VkSemaphore semaphore = VK_NULL_HANDLE;
    return vkCreateSemaphore(device, &info, nullptr, &semaphore) == VK_SUCCESS ? semaphore
                                                                               : VK_NULL_HANDLE;
}

VkExtent2D extentFor(const VkSurfaceCapabilitiesKHR& surface, VkExtent2D wanted) {
    if (surface.currentExtent.width != kNoExtent) {
        return surface.currentExtent;
    }
    return {
        std::clamp(wanted.width, surface.minImageExtent.width, surface.maxImageExtent.width),
        std::clamp(wanted.height, surface.minImageExtent.height, surface.maxImageExtent.height),
    };
}

VkCompositeAlphaFlagBitsKHR compositeAlpha(const VkSurfaceCapabilitiesKHR& surface) {
    return (surface.supportedCompositeAlpha & VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR) != 0
               ? VK_COMPOSITE_ALPHA_OPAQUE_BIT_KHR
               : VK_COMPOSITE_ALPHA_INHERIT_BIT_KHR;
}

} // namespace

Swapchain::Generation::~Generation() {
    for (Slot& slot : slots) {
        slot.image.reset();
        vkDestroySemaphore(gpu->device(), slot.finished, nullptr);
    }
    vkDestroySemaphore(gpu->device(), acquired, nullptr);
    vkDestroySwapchainKHR(gpu->device(), handle, nullptr);
}

std::unique_ptr<Swapchain> Swapchain::create(std::shared_ptr<vulkan::Context> gpu,
                                             VkSurfaceKHR surface, std::uint32_t width,
                                             std::uint32_t height) {
    std::unique_ptr<Swapchain> made(new Swapchain(std::move(gpu), surface));
    made->wanted_ = {width, height};
    return made->chooseFormat() && made->remake() ? std::move(made) : nullptr;
}

Swapchain::~Swapchain() {
    // Presentations have no fence to ask; this happens once for each output that goes.
    vkDeviceWaitIdle(gpu_->device());
    retired_.reset();
    current_.reset();
    vkDestroySurfaceKHR(vulkan::sharedInstance(), surface_, nullptr);
}

bool Swapchain::chooseFormat() {
    VkBool32 canPresent = VK_FALSE;
    if (!gpu_->canPresent() ||
        vkGetPhysicalDeviceSurfaceSupportKHR(gpu_->physicalDevice(), gpu_->queueFamily(), surface_,
                                             &canPresent) != VK_SUCCESS ||
        canPresent == VK_FALSE) {
        return false;
    }
    std::uint32_t count = 0;
    vkGetPhysicalDeviceSurfaceFormatsKHR(gpu_->physicalDevice(), surface_, &count, nullptr);
    std::vector<VkSurfaceFormatKHR> formats(count);
    vkGetPhysicalDeviceSurfaceFormatsKHR(gpu_->physicalDevice(), surface_, &count, formats.data());
    // Frames hold the values that are to be seen; nothing is converted on their way.
    for (const VkFormat wanted : {VK_FORMAT_B8G8R8A8_UNORM, VK_FORMAT_R8G8B8A8_UNORM}) {
        for (const VkSurfaceFormatKHR& offered : formats) {
            if (offered.format == wanted &&
                offered.colorSpace == VK_COLOR_SPACE_SRGB_NONLINEAR_KHR) {
                format_ = wanted;
                return true;
            }
        }
    }
    return false;
}

VkPresentModeKHR Swapchain::presentMode() const {
    std::uint32_t count = 0;
    vkGetPhysicalDeviceSurfacePresentModesKHR(gpu_->physicalDevice(), surface_, &count, nullptr);
    std::vector<VkPresentModeKHR> modes(count);
    vkGetPhysicalDeviceSurfacePresentModesKHR(gpu_->physicalDevice(), surface_, &count,
                                              modes.data());
    // The output says when a frame is welcome; a presentation that waited would hold up the loop,
    // for ever where the display server never answers.
    for (const VkPresentModeKHR wanted :
         {VK_PRESENT_MODE_MAILBOX_KHR, VK_PRESENT_MODE_IMMEDIATE_KHR}) {
        if (std::find(modes.begin(), modes.end(), wanted) != modes.end()) {
            return wanted;
        }
    }
    return VK_PRESENT_MODE_FIFO_KHR;
}

void Swapchain::resize(std::uint32_t width, std::uint32_t height) {
    if (width == wanted_.width && height == wanted_.height) {
        return;
    }
    wanted_ = {width, height};
    if (state_ == CanvasState::usable) {
        state_ = CanvasState::outdated;
    }
}

bool Swapchain::remake() {
    VkSurfaceCapabilitiesKHR surface{};
    if (const VkResult result =
            vkGetPhysicalDeviceSurfaceCapabilitiesKHR(gpu_->physicalDevice(), surface_, &surface);
        result != VK_SUCCESS) {
        note(result);
        return false;
    }
    const VkExtent2D extent = extentFor(surface, wanted_);
    if (extent.width == 0 || extent.height == 0) {
        return true;
    }
    auto next = makeGeneration(surface, extent);
    if (!next) {
        return false;
    }
    index_.reset();
    retired_ = std::exchange(current_, std::move(next));
    extent_ = extent;
    state_ = CanvasState::usable;
    return true;
}

std::unique_ptr<Swapchain::Generation>
Swapchain::makeGeneration(const VkSurfaceCapabilitiesKHR& surface, VkExtent2D extent) {
    VkSwapchainCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_SWAPCHAIN_CREATE_INFO_KHR;
    info.surface = surface_;
    info.minImageCount = std::max(surface.minImageCount, kImages);
    if (surface.maxImageCount != 0) {
        info.minImageCount = std::min(info.minImageCount, surface.maxImageCount);
    }
    info.imageFormat = format_;
    info.imageColorSpace = VK_COLOR_SPACE_SRGB_NONLINEAR_KHR;
    info.imageExtent = extent;
    info.imageArrayLayers = 1;
    info.imageUsage = kScreenUsage;
    info.preTransform = surface.currentTransform;
    info.compositeAlpha = compositeAlpha(surface);
    info.presentMode = presentMode();
    info.clipped = VK_TRUE;
    info.oldSwapchain = current_ ? current_->handle : VK_NULL_HANDLE;
    auto next = std::make_unique<Generation>(gpu_);
    if (const VkResult result = vkCreateSwapchainKHR(gpu_->device(), &info, nullptr, &next->handle);
        result != VK_SUCCESS) {
        next->handle = VK_NULL_HANDLE;
        note(result);
        return nullptr;
    }
    return makeSlots(*next, extent) ? std::move(next) : nullptr;
}

bool Swapchain::makeSlots(Generation& generation, VkExtent2D extent) const {
    std::uint32_t count = 0;
    vkGetSwapchainImagesKHR(gpu_->device(), generation.handle, &count, nullptr);
    std::vector<VkImage> images(count);
    if (vkGetSwapchainImagesKHR(gpu_->device(), generation.handle, &count, images.data()) !=
        VK_SUCCESS) {
        return false;
    }
    generation.acquired = makeSemaphore(gpu_->device());
    for (const VkImage image : images) {
        generation.slots.push_back({.image = vulkan::DeviceImage::borrow(gpu_,
                                                                         {.format = format_,
                                                                          .width = extent.width,
                                                                          .height = extent.height,
                                                                          .usage = kScreenUsage},
                                                                         image),
                                    .finished = makeSemaphore(gpu_->device())});
    }
    return generation.acquired != VK_NULL_HANDLE &&
           std::all_of(generation.slots.begin(), generation.slots.end(), [](const Slot& slot) {
               return slot.image && slot.finished != VK_NULL_HANDLE;
           });
}

std::optional<CanvasImage> Swapchain::begin() {
    if (state_ == CanvasState::lost || (state_ == CanvasState::outdated && !remake()) ||
        state_ == CanvasState::outdated) {
        return std::nullopt;
    }
    if (!index_) {
        std::uint32_t index = 0;
        const VkResult result = vkAcquireNextImageKHR(gpu_->device(), current_->handle, 0,
                                                      current_->acquired, VK_NULL_HANDLE, &index);
        if (result != VK_SUCCESS && result != VK_SUBOPTIMAL_KHR) {
            note(result);
            return std::nullopt;
        }
        index_ = index;
    }
    Slot& slot = current_->slots[*index_];
    return CanvasImage{.image = *slot.image,
                       .semaphores = {.acquired = current_->acquired, .finished = slot.finished},
                       .layout = VK_IMAGE_LAYOUT_PRESENT_SRC_KHR};
}

bool Swapchain::show() {
    const std::uint32_t index = *std::exchange(index_, std::nullopt);
    VkPresentInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_PRESENT_INFO_KHR;
    info.waitSemaphoreCount = 1;
    info.pWaitSemaphores = &current_->slots[index].finished;
    info.swapchainCount = 1;
    info.pSwapchains = &current_->handle;
    info.pImageIndices = &index;
    const VkResult result = gpu_->present(info);
    note(result);
    // The second picture since it was retired follows one that was drawn after its last.
    if (std::exchange(current_->isShown, true)) {
        retired_.reset();
    }
    return result == VK_SUCCESS || result == VK_SUBOPTIMAL_KHR;
}

void Swapchain::note(VkResult result) {
    switch (result) {
    case VK_SUCCESS:
    case VK_SUBOPTIMAL_KHR:
    case VK_NOT_READY:
    case VK_TIMEOUT:
        return;
    case VK_ERROR_OUT_OF_DATE_KHR:
        state_ = CanvasState::outdated;
        return;
    default:
        state_ = CanvasState::lost;
    }
}

} // namespace vantor::agent
