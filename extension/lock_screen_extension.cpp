#include "extension/lock_screen_extension.h"

#include "bridge/agent_classes.h"
#include "log/ls_log.h"
#include "platform/notifications.h"
#include "platform/platform.h"
#include "render/surface_registry.h"

#include <string>
#include <unistd.h>

namespace vantor {
namespace {

constexpr const char* kFrameworkPath =
    "/System/Library/PrivateFrameworks/WallpaperExtensionKit.framework/WallpaperExtensionKit";

std::string loadedSuffix(const std::vector<std::string>& missing) {
    if (missing.empty()) {
        return ", runtime layout OK";
    }
    std::string suffix = ", MISSING: " + missing.front();
    for (std::size_t i = 1; i < missing.size(); ++i) {
        suffix += ", " + missing[i];
    }
    return suffix;
}

} // namespace

LockScreenExtension::LockScreenExtension(Platform& platform, LockScreenLibrary& library,
                                         SurfaceRegistry& registry)
    : platform_(platform), registry_(registry), configuration_(platform, library, registry),
      propagation_(platform, library, registry) {
    const std::string line = "INIT pid " + std::to_string(getpid()) + " — ";
    auto framework = platform.loader().loadFramework(kFrameworkPath);
    if (!framework) {
        LSLog::write(line + "dlopen failed: " + framework.error());
        return;
    }
    frameworkHandle_ = std::move(*framework);
    LSLog::write(line + "WallpaperExtensionKit loaded" +
                 loadedSuffix(PrivateBridge::missingClasses(platform)));
    propagation_.startObserving();
    observeScreenLock();
}

void LockScreenExtension::observeScreenLock() {
    Notifications& notifications = platform_.notifications();
    notifications.observeDistributed("com.apple.screenIsLocked", [this] { setScreenLocked(true); });
    notifications.observeDistributed("com.apple.screenIsUnlocked",
                                     [this] { setScreenLocked(false); });
}

void LockScreenExtension::setScreenLocked(bool locked) {
    registry_.setScreenLocked(locked);
    registry_.applyPolicy();
}

} // namespace vantor
