#include "platform/linux/gpu/device_choice.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace vantor::vulkan {
namespace {

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool contains(std::string_view text, std::string_view part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(),
                       [](char a, char b) { return lowered(a) == lowered(b); }) != text.end();
}

std::optional<std::size_t> indexOf(std::string_view text) {
    std::size_t index = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, index);
    return error == std::errc() && rest == end ? std::optional(index) : std::nullopt;
}

int speedOf(VkPhysicalDeviceType type) {
    switch (type) {
    case VK_PHYSICAL_DEVICE_TYPE_DISCRETE_GPU:
        return 3;
    case VK_PHYSICAL_DEVICE_TYPE_INTEGRATED_GPU:
        return 2;
    case VK_PHYSICAL_DEVICE_TYPE_VIRTUAL_GPU:
        return 1;
    default:
        return 0;
    }
}

} // namespace

std::size_t preferredDevice(std::span<const DeviceCandidate> candidates, std::string_view wanted) {
    if (const auto index = indexOf(wanted); index && *index < candidates.size()) {
        return *index;
    }
    const auto rank = [wanted](const DeviceCandidate& candidate) {
        const bool isNamed = !wanted.empty() && contains(candidate.name, wanted);
        return std::pair(isNamed, speedOf(candidate.type));
    };
    const auto best = std::max_element(
        candidates.begin(), candidates.end(),
        [&](const auto& one, const auto& other) { return rank(one) < rank(other); });
    return static_cast<std::size_t>(best - candidates.begin());
}

} // namespace vantor::vulkan
