#include "extension/lock_screen_configuration.h"

#include "bridge/agent_classes.h"
#include "extension/caller_check.h"
#include "extension/wallpaper_xpc_handler.h"
#include "library/lock_screen_library.h"
#include "log/ls_log.h"
#include "platform/platform.h"

#include <string>

namespace vantor {

bool LockScreenConfiguration::accept(const std::shared_ptr<XPCConnection>& connection) {
    const std::string pid = std::to_string(connection->processIdentifier());
    LSLog::write("accept pid " + pid);
    if (!CallerCheck::isApple(platform_.codeIdentity(), connection->processIdentifier())) {
        LSLog::write("XPC rejected: non-Apple caller pid " + pid);
        return false;
    }

    XPCInterface exported(kWallpaperProtocolName);
    const ClassSet allowed = PrivateBridge::xpcAllowedClasses(platform_);
    for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
        exported.setClasses(allowed, slot);
    }
    connection->setExportedInterface(std::move(exported));
    connection->setRemoteObjectInterface(XPCInterface(kAgentProtocolName));

    const auto handler = std::make_shared<WallpaperXPCHandler>(platform_, library_, registry_);
    auto proxy = connection->remoteObjectProxy();
    if (proxy && proxy->conformsTo(kAgentProtocolName)) {
        handler->setAgent(std::move(proxy));
    }
    connection->setExportedObject(handler);
    connection->setInvalidationHandler([weak = std::weak_ptr(handler)] {
        if (const auto alive = weak.lock()) {
            alive->setAgent(nullptr);
        }
    });
    connection->setRefusalHandler([this](const std::string& why) { connectionRefused(why); });
    library_.addHandler(handler);
    connection->resume();
    return true;
}

void LockScreenConfiguration::connectionRefused(const std::string& sentence) {
    LSLog::write("XPC refused: " + sentence);
}

} // namespace vantor
