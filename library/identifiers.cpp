#include "library/identifiers.h"

#include "platform/bundle.h"
#include "platform/platform.h"

namespace vantor {
namespace {

constexpr std::string_view kReleaseApp = "com.nimbara.app";
constexpr std::string_view kExtensionSuffix = ".lockscreen";

std::string hostOf(std::string_view extension) {
    if (!extension.ends_with(kExtensionSuffix)) {
        return std::string(kReleaseApp);
    }
    extension.remove_suffix(kExtensionSuffix.size());
    return std::string(extension);
}

} // namespace

Identifiers Identifiers::fromBundle(const std::optional<std::string>& identifier) {
    Identifiers made;
    made.extensionBundleID = identifier.value_or("com.nimbara.app.lockscreen");
    made.appBundleID = hostOf(made.extensionBundleID);
    made.isDev = made.appBundleID != kReleaseApp;
    made.changedNotification =
        made.isDev ? made.appBundleID + ".lockscreen.changed" : "com.nimbara.lockscreen.changed";
    made.groupID = made.isDev ? "com.nimbara.shaders.dev" : "com.nimbara.shaders";
    made.groupName = made.isDev ? "VantorEngine Dev" : "VantorEngine";
    return made;
}

Identifiers identifiers(Platform& platform) {
    return Identifiers::fromBundle(platform.bundle().identifier());
}

std::string changedNotification(Platform& platform) {
    return identifiers(platform).changedNotification;
}

} // namespace vantor
