#include "extension/lock_screen_extension.h"

#include "bridge/agent_classes.h"
#include "log/ls_log.h"
#include "platform/notifications.h"
#include "platform/platform.h"
#include "render/surface_registry.h"

#include <string>
#include <unistd.h>
#include <vector>

namespace vantor {
namespace {

std::string layoutText(const std::vector<std::string>& missing) {
    if (missing.empty()) {
        return ", runtime layout OK";
    }
    std::string text = ", MISSING: ";
    for (std::size_t i = 0; i < missing.size(); ++i) {
        text += (i == 0 ? "" : ", ") + missing[i];
    }
    return text;
}

} // namespace

LockScreenExtension::LockScreenExtension(const Services& services)
    : services_(services), configuration_(services),
      changes_(services.platform, services.library, services.registry) {
    const std::string start = "INIT pid " + std::to_string(getpid()) + " — ";
    auto framework = services.platform.loader().loadFramework(kFrameworkPath);
    if (!framework) {
        LSLog::write(start + "dlopen failed: " + framework.error());
        return;
    }
    framework_ = *framework;
    LSLog::write(start + "WallpaperExtensionKit loaded" +
                 layoutText(PrivateBridge::missingClasses(services.platform)));
    changes_.startObserving();
    observeScreenLock();
}

void LockScreenExtension::observeScreenLock() {
    Notifications& notifications = services_.platform.notifications();
    notifications.observeDistributed("com.apple.screenIsLocked", [this] { setScreenLocked(true); });
    notifications.observeDistributed("com.apple.screenIsUnlocked",
                                     [this] { setScreenLocked(false); });
}

void LockScreenExtension::setScreenLocked(bool locked) {
    services_.registry.setScreenLocked(locked);
    services_.registry.applyPolicy();
}

} // namespace vantor
