#include "agent/output/wayland/background_output.h"

// Needs the types of the Wayland client before it.
#include <vulkan/vulkan_wayland.h>

namespace vantor::agent::wayland {

VkSurfaceKHR BackgroundOutput::makeSurface(VkInstance instance) {
    // Null where the instance was made without the extension.
    const auto create = reinterpret_cast<PFN_vkCreateWaylandSurfaceKHR>(
        vkGetInstanceProcAddr(instance, "vkCreateWaylandSurfaceKHR"));
    const VkWaylandSurfaceCreateInfoKHR info = {
        .sType = VK_STRUCTURE_TYPE_WAYLAND_SURFACE_CREATE_INFO_KHR,
        .pNext = nullptr,
        .flags = 0,
        .display = connection_.display(),
        .surface = surface_.surface(),
    };
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    if (create == nullptr || create(instance, &info, nullptr, &surface) != VK_SUCCESS) {
        return VK_NULL_HANDLE;
    }
    return surface;
}

void BackgroundOutput::requestRefresh() {
    if (refresh_ == Refresh::asked && ridesOnPresent_) {
        // What was to carry the question may never have been presented.
        ridesOnPresent_ = false;
        surface_.commit();
        connection_.flush();
    }
    if (refresh_ == Refresh::notAsked) {
        ask();
    }
}

void BackgroundOutput::ask() {
    if (visibility_ == Visibility::off) {
        refresh_ = Refresh::postponed;
    } else if (!hasPresented_) {
        refresh_ = Refresh::due;
        connection_.wake();
    } else {
        refresh_ = Refresh::asked;
        ridesOnPresent_ = false;
        surface_.askForFrame();
        surface_.commit();
        connection_.flush();
    }
}

void BackgroundOutput::willPresent() {
    surface_.apply(geometry_);
    hasPresented_ = true;
    if (!surface_.awaitsFrame()) {
        ridesOnPresent_ = true;
        surface_.askForFrame();
    }
    refresh_ = visibility_ == Visibility::off ? Refresh::postponed : Refresh::asked;
}

bool BackgroundOutput::settle(const OutputDescription& description, const SurfaceGeometry& geometry,
                              Visibility visibility) {
    const bool isResized = geometry != geometry_;
    const bool isOther = isResized || description != description_ || visibility != visibility_;
    const bool isSeenAgain = visibility != visibility_ &&
                             (visibility == Visibility::visible || visibility_ == Visibility::off);
    description_ = description;
    geometry_ = geometry;
    visibility_ = visibility;

    if (visibility_ == Visibility::off && refresh_ != Refresh::notAsked) {
        refresh_ = Refresh::postponed;
    } else if (isSeenAgain && (refresh_ == Refresh::asked || refresh_ == Refresh::postponed)) {
        // The compositor may have forgotten what it was asked while nobody could see.
        surface_.dropFrame();
        ask();
    }
    if (surface_.hasNews() && hasPresented_ && !isResized) {
        // Nothing to draw anew, so nothing to ride on.
        surface_.apply(geometry_);
        surface_.commit();
    }
    return isOther;
}

bool BackgroundOutput::takeRefresh() {
    const bool frameCame = surface_.takeFrame();
    if (refresh_ == Refresh::due || (refresh_ == Refresh::asked && frameCame)) {
        refresh_ = Refresh::notAsked;
        return true;
    }
    return false;
}

} // namespace vantor::agent::wayland
