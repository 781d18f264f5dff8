#include "platform/linux/gpu/vulkan_instance.h"

#include "platform/linux/gpu/vulkan_resources.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace vantor::vulkan {
namespace {

/// Asks for a buffer of no bytes for no use.
void misuseVulkan() {
    setenv("VANTOR_GPU_VALIDATION", "1", 1);
    auto context = Context::create();
    VkBufferCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_BUFFER_CREATE_INFO;
    VkBuffer buffer = VK_NULL_HANDLE;
    vkCreateBuffer((*context)->device(), &info, nullptr, &buffer);
}

TEST(VulkanInstanceDeathTest, TheFirstValidationMessageEndsAValidatedProcess) {
    // A process of its own, in which no instance exists yet.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(misuseVulkan(), "Vulkan validation: .*vkCreateBuffer");
}

} // namespace
} // namespace vantor::vulkan
