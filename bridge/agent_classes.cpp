#include "bridge/agent_classes.h"

#include "platform/platform.h"

#include <array>

namespace vantor::PrivateBridge {
namespace {

constexpr std::array<std::string_view, 15> kXPCClassNames{
    "WallpaperIDXPC",
    "WallpaperCreationRequestXPC",
    "WallpaperUpdateRequestXPC",
    "WallpaperRemoteContextXPC",
    "WallpaperSnapshotXPC",
    "WallpaperContentTypeSetXPC",
    "WallpaperChoiceIDXPC",
    "WallpaperChoiceIDsXPC",
    "WallpaperExtensionChoiceRequestXPC",
    "WallpaperChoiceRequestAdditionResultXPC",
    "WallpaperDebugRequestXPC",
    "WallpaperDebugResponseXPC",
    "WallpaperMigrationVersionXPC",
    "WallpaperSettingsViewModelsXPC",
    "AuditTokenXPC",
};

constexpr std::array<std::string_view, 6> kNeededAtStartUp{
    "WallpaperIDXPC",
    "WallpaperCreationRequestXPC",
    "WallpaperUpdateRequestXPC",
    "WallpaperRemoteContextXPC",
    "WallpaperSettingsViewModelsXPC",
    "CAContext",
};

constexpr std::array<std::string_view, 7> kPlainClassNames{
    "NSString", "NSNumber", "NSData", "NSArray", "NSDictionary", "NSURL", "NSError"};

} // namespace

std::span<const std::string_view> xpcClassNames() { return kXPCClassNames; }

std::vector<std::string> missingClasses(Platform& platform) {
    std::vector<std::string> missing;
    for (const std::string_view name : kNeededAtStartUp) {
        if (platform.objectRuntime().classNamed(name) == nullptr) {
            missing.emplace_back(name);
        }
    }
    return missing;
}

ClassSet xpcAllowedClasses(Platform& platform) {
    ClassSet allowed;
    const auto append = [&](std::span<const std::string_view> names) {
        for (const std::string_view name : names) {
            if (const ObjectClass* found = platform.objectRuntime().classNamed(name)) {
                allowed.push_back(found);
            }
        }
    };
    append(kPlainClassNames);
    append(kXPCClassNames);
    return allowed;
}

} // namespace vantor::PrivateBridge
