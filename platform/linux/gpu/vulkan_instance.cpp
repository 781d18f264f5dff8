#include "platform/linux/gpu/vulkan_instance.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace vantor::vulkan {
namespace {

constexpr const char* kValidationLayer = "VK_LAYER_KHRONOS_validation";
/// How the layer's messages name an image that noteImported was told of.
constexpr const char* kImportedName = "imported from another process";

/// What lets pictures onto screens, of which an instance has those that its system offers.
constexpr const char* kSurfaceExtensions[] = {"VK_KHR_surface", "VK_KHR_wayland_surface",
                                              "VK_KHR_xcb_surface", "VK_KHR_xlib_surface"};

bool isValidating() {
    static const bool validating = [] {
        const char* const asked = std::getenv("VANTOR_GPU_VALIDATION");
        return asked != nullptr && std::string_view(asked) == "1";
    }();
    return validating;
}

/// The layer takes an imported image for one in the undefined layout until this process has brought
/// it into another, although an ownership transfer from outside says which one it is in.
bool isAboutImportedLayout(std::string_view message) {
    return message.find(kImportedName) != std::string_view::npos &&
           message.find("current layout is VK_IMAGE_LAYOUT_UNDEFINED") != std::string_view::npos;
}

VKAPI_ATTR VkBool32 VKAPI_CALL takeMessage(VkDebugUtilsMessageSeverityFlagBitsEXT,
                                           VkDebugUtilsMessageTypeFlagsEXT,
                                           const VkDebugUtilsMessengerCallbackDataEXT* data,
                                           void*) {
    if (!isAboutImportedLayout(data->pMessage)) {
        std::fprintf(stderr, "Vulkan validation: %s\n", data->pMessage);
        std::abort();
    }
    return VK_FALSE;
}

bool isPresenting = false;

std::vector<const char*> surfaceExtensions() {
    if (!isPresenting) {
        return {};
    }
    std::uint32_t count = 0;
    vkEnumerateInstanceExtensionProperties(nullptr, &count, nullptr);
    std::vector<VkExtensionProperties> offered(count);
    vkEnumerateInstanceExtensionProperties(nullptr, &count, offered.data());
    std::vector<const char*> names;
    for (const char* name : kSurfaceExtensions) {
        if (std::any_of(offered.begin(), offered.end(), [name](const auto& entry) {
                return std::string_view(entry.extensionName) == name;
            })) {
            names.push_back(name);
        }
    }
    return names;
}

VkInstance makeInstance() {
    VkApplicationInfo application{};
    application.sType = VK_STRUCTURE_TYPE_APPLICATION_INFO;
    application.pApplicationName = "VantorLockScreen";
    application.apiVersion = VK_API_VERSION_1_3;
    VkInstanceCreateInfo info{};
    info.sType = VK_STRUCTURE_TYPE_INSTANCE_CREATE_INFO;
    info.pApplicationInfo = &application;

    VkDebugUtilsMessengerCreateInfoEXT messenger{};
    messenger.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_MESSENGER_CREATE_INFO_EXT;
    messenger.messageSeverity = VK_DEBUG_UTILS_MESSAGE_SEVERITY_WARNING_BIT_EXT |
                                VK_DEBUG_UTILS_MESSAGE_SEVERITY_ERROR_BIT_EXT;
    messenger.messageType = VK_DEBUG_UTILS_MESSAGE_TYPE_VALIDATION_BIT_EXT;
    messenger.pfnUserCallback = takeMessage;
    constexpr VkValidationFeatureEnableEXT kSynchronisation =
        VK_VALIDATION_FEATURE_ENABLE_SYNCHRONIZATION_VALIDATION_EXT;
    VkValidationFeaturesEXT features{};
    features.sType = VK_STRUCTURE_TYPE_VALIDATION_FEATURES_EXT;
    features.pNext = &messenger;
    features.enabledValidationFeatureCount = 1;
    features.pEnabledValidationFeatures = &kSynchronisation;
    std::vector<const char*> extensions = surfaceExtensions();
    if (isValidating()) {
        info.pNext = &features;
        info.enabledLayerCount = 1;
        info.ppEnabledLayerNames = &kValidationLayer;
        extensions.push_back(VK_EXT_DEBUG_UTILS_EXTENSION_NAME);
    }
    info.enabledExtensionCount = static_cast<std::uint32_t>(extensions.size());
    info.ppEnabledExtensionNames = extensions.data();
    VkInstance instance = VK_NULL_HANDLE;
    if (vkCreateInstance(&info, nullptr, &instance) != VK_SUCCESS) {
        return VK_NULL_HANDLE;
    }
    if (isValidating()) {
        const auto create = reinterpret_cast<PFN_vkCreateDebugUtilsMessengerEXT>(
            vkGetInstanceProcAddr(instance, "vkCreateDebugUtilsMessengerEXT"));
        VkDebugUtilsMessengerEXT made = VK_NULL_HANDLE;
        create(instance, &messenger, nullptr, &made);
    }
    return instance;
}

} // namespace

void enablePresentation() { isPresenting = true; }

bool isPresentationEnabled() { return isPresenting; }

VkInstance sharedInstance() {
    static const VkInstance instance = makeInstance();
    return instance;
}

void noteImported(VkDevice device, VkImage image) {
    if (!isValidating()) {
        return;
    }
    static const auto name = reinterpret_cast<PFN_vkSetDebugUtilsObjectNameEXT>(
        vkGetInstanceProcAddr(sharedInstance(), "vkSetDebugUtilsObjectNameEXT"));
    VkDebugUtilsObjectNameInfoEXT info{};
    info.sType = VK_STRUCTURE_TYPE_DEBUG_UTILS_OBJECT_NAME_INFO_EXT;
    info.objectType = VK_OBJECT_TYPE_IMAGE;
    info.objectHandle = reinterpret_cast<std::uint64_t>(image);
    info.pObjectName = kImportedName;
    name(device, &info);
}

} // namespace vantor::vulkan
