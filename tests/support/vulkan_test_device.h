// The Vulkan device under the tests' runner, with the resources that shaders under test read.
#pragma once

#include <cstddef>
#include <cstdint>

#include <vulkan/vulkan.h>

#include "msl/msl.h"

namespace vantor::tests {

class VulkanTestDevice {
  public:
    struct Buffer {
        VkBuffer buffer = VK_NULL_HANDLE;
        VkDeviceMemory memory = VK_NULL_HANDLE;
        std::byte* data = nullptr;
    };
    struct Image {
        VkImage image = VK_NULL_HANDLE;
        VkDeviceMemory memory = VK_NULL_HANDLE;
        VkImageView view = VK_NULL_HANDLE;
    };
    struct ImageShape {
        VkImageType type = VK_IMAGE_TYPE_2D;
        VkImageViewType view = VK_IMAGE_VIEW_TYPE_2D;
        VkFormat format = VK_FORMAT_R32G32B32A32_SFLOAT;
        VkImageUsageFlags usage = 0;
        uint32_t height = kSide;
        uint32_t depth = 1;
        uint32_t layers = 1;
        uint32_t levels = 1;
        VkSampleCountFlagBits samples = VK_SAMPLE_COUNT_1_BIT;
    };

    static constexpr uint32_t kSide = 4;

    VulkanTestDevice() = default;
    VulkanTestDevice(const VulkanTestDevice&) = delete;
    VulkanTestDevice& operator=(const VulkanTestDevice&) = delete;
    ~VulkanTestDevice();

    // With every feature that the machine's device has. False where no Vulkan 1.3 device answers.
    bool open();
    VkDevice handle() const { return device_; }

    Buffer makeBuffer(VkDeviceSize size, VkBufferUsageFlags usage);
    void release(const Buffer& buffer);
    Image makeImage(const ImageShape& shape);
    void release(const Image& image);
    // Texel (x, y) of layer or slice z on level l holds (x, y, x + 4y + 16z, 1 + l); that of a
    // depth texture (x + 4y + 16z) / 128. Every sample of a multisample texture is (1, 2, 3, 4), or
    // 0.5.
    Image makeTexture(const msl::TextureBinding& binding);
    VkSampler makeSampler(const msl::SamplerOptions& options);

    VkCommandBuffer begin();
    // Submits and waits.
    bool finish(VkCommandBuffer commands);
    void transition(VkCommandBuffer commands, VkImage image, VkImageAspectFlags aspect,
                    VkImageLayout from, VkImageLayout to);

  private:
    uint32_t memoryType(uint32_t bits, VkMemoryPropertyFlags wanted) const;
    void clear(const Image& image, bool depth);
    void fill(const Image& image, const ImageShape& shape, msl::TextureComponent component);

    VkInstance instance_ = VK_NULL_HANDLE;
    VkPhysicalDevice physical_ = VK_NULL_HANDLE;
    VkDevice device_ = VK_NULL_HANDLE;
    VkQueue queue_ = VK_NULL_HANDLE;
    VkCommandPool pool_ = VK_NULL_HANDLE;
    VkPhysicalDeviceMemoryProperties memory_{};
};

} // namespace vantor::tests
