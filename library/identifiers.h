#pragma once
// The names under which host application and extension know each other, derived from the
// extension's bundle identifier. A development build of the host application has names of its own.

#include <optional>
#include <string>
#include <string_view>

namespace vantor {

class Platform;

struct Identifiers {
    /// The extension's own bundle identifier, or the released one's for a program outside a bundle.
    std::string extensionBundleID;
    /// The host application's bundle identifier.
    std::string appBundleID;
    /// Whether the host application is a development build.
    bool isDev = false;
    /// Posted by the host application when its state file has changed.
    std::string changedNotification;
    /// The group of the wallpaper picker.
    std::string groupID;
    std::string groupName;

    /// From the extension's bundle identifier; nothing for a program outside a bundle.
    static Identifiers fromBundle(const std::optional<std::string>& identifier);
};

/// Those of the platform's bundle.
Identifiers identifiers(Platform& platform);
std::string changedNotification(Platform& platform);

} // namespace vantor
