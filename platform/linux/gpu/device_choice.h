#pragma once
// Which of the machine's devices is drawn on.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vulkan/vulkan.h>

namespace vantor::vulkan {

struct DeviceCandidate {
    std::string name;
    VkPhysicalDeviceType type = VK_PHYSICAL_DEVICE_TYPE_OTHER;
};

/// The index of the candidate to draw on; there is at least one. `wanted` is a candidate's index or
/// a part of its name in any case. Where it names none, and where it names several, a discrete
/// device goes before an integrated before a virtual before a software one, and of two alike the
/// first.
std::size_t preferredDevice(std::span<const DeviceCandidate> candidates, std::string_view wanted);

} // namespace vantor::vulkan
