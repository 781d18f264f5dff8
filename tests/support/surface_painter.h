#pragma once
// Fills a Vulkan surface with a colour: the least that shows a frame on an output.

#include <cstdint>
#include <vulkan/vulkan.h>

namespace vantor {

/// The process's instance with the extensions of X11's and Wayland's surfaces; null without a
/// driver.
VkInstance surfaceInstance();

class SurfacePainter {
  public:
    /// Takes the surface. Throws when the device cannot draw on it, which fails the test that
    /// asked.
    SurfacePainter(VkSurfaceKHR surface, std::uint32_t width, std::uint32_t height);
    ~SurfacePainter();
    SurfacePainter(const SurfacePainter&) = delete;
    SurfacePainter& operator=(const SurfacePainter&) = delete;

    /// Presents a picture of that colour; false when the surface takes none (it has another size,
    /// or its display server is gone).
    [[nodiscard]] bool paint(float red, float green, float blue);

  private:
    VkSurfaceKHR surface_;
    VkPhysicalDevice physicalDevice_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    VkQueue queue_ = VK_NULL_HANDLE;
    VkSwapchainKHR swapchain_ = VK_NULL_HANDLE;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    VkCommandBuffer commands_ = VK_NULL_HANDLE;
    VkFence fence_ = VK_NULL_HANDLE;
};

} // namespace vantor
