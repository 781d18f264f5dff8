#pragma once
// Pictures on a window or a desktop, through a swapchain that is made anew when the surface's size
// changes. Main thread.

#include "agent/host/canvas.h"

#include <memory>
#include <vector>

namespace vantor::agent {

class Swapchain : public Canvas {
  public:
    /// Takes the surface. Null when the device cannot show pictures on it, or has no memory.
    static std::unique_ptr<Swapchain> create(std::shared_ptr<vulkan::Context> gpu,
                                             VkSurfaceKHR surface, std::uint32_t width,
                                             std::uint32_t height);
    ~Swapchain() override;
    Swapchain(const Swapchain&) = delete;
    Swapchain& operator=(const Swapchain&) = delete;

    /// From the next `begin` on.
    void resize(std::uint32_t width, std::uint32_t height);

    std::uint32_t width() const override { return extent_.width; }
    std::uint32_t height() const override { return extent_.height; }
    std::optional<CanvasImage> begin() override;
    bool show() override;
    CanvasState state() const override { return state_; }

  private:
    struct Slot {
        std::unique_ptr<vulkan::DeviceImage> image;
        /// Signalled when it is drawn, waited for by its presentation.
        VkSemaphore finished = VK_NULL_HANDLE;
    };
    /// A swapchain with its images; one is retired when the next is made.
    struct Generation {
        explicit Generation(std::shared_ptr<vulkan::Context> context) : gpu(std::move(context)) {}
        ~Generation();
        Generation(const Generation&) = delete;
        Generation& operator=(const Generation&) = delete;

        std::shared_ptr<vulkan::Context> gpu;
        VkSwapchainKHR handle = VK_NULL_HANDLE;
        std::vector<Slot> slots;
        VkSemaphore acquired = VK_NULL_HANDLE;
        /// A picture of it was shown.
        bool isShown = false;
    };

    Swapchain(std::shared_ptr<vulkan::Context> gpu, VkSurfaceKHR surface)
        : gpu_(std::move(gpu)), surface_(surface) {}
    bool chooseFormat();
    VkPresentModeKHR presentMode() const;
    /// Makes the swapchain for the size; true also when the surface has no size now.
    bool remake();
    std::unique_ptr<Generation> makeGeneration(const VkSurfaceCapabilitiesKHR& surface,
                                               VkExtent2D extent);
    bool makeSlots(Generation& generation, VkExtent2D extent) const;
    void note(VkResult result);

    std::shared_ptr<vulkan::Context> gpu_;
    VkSurfaceKHR surface_;
    VkFormat format_ = VK_FORMAT_UNDEFINED;
    /// What was asked for; the surface may have a size of its own.
    VkExtent2D wanted_{};
    VkExtent2D extent_{};
    CanvasState state_ = CanvasState::outdated;
    std::unique_ptr<Generation> current_;
    /// What it showed may still be on its way to the screen.
    std::unique_ptr<Generation> retired_;
    /// Acquired and not shown yet.
    std::optional<std::uint32_t> index_;
};

} // namespace vantor::agent
