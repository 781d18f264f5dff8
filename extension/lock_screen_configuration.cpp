#include "extension/lock_screen_configuration.h"

#include "bridge/agent_classes.h"
#include "extension/caller_check.h"
#include "extension/wallpaper_xpc_handler.h"
#include "library/lock_screen_library.h"
#include "log/ls_log.h"
#include "platform/platform.h"

#include <string>
#include <utility>

namespace vantor {
namespace {

XPCInterface exportedInterface(Platform& platform) {
    XPCInterface interface(kWallpaperProtocolName);
    const ClassSet allowed = PrivateBridge::xpcAllowedClasses(platform);
    for (const ArgumentSlot& slot : WallpaperXPCHandler::argumentSlots()) {
        interface.setClasses(allowed, slot);
    }
    return interface;
}

} // namespace

bool LockScreenConfiguration::accept(const std::shared_ptr<XPCConnection>& connection) {
    const std::string pid = std::to_string(connection->processIdentifier());
    LSLog::write("accept pid " + pid);
    if (!CallerCheck::isApple(services_.platform.codeIdentity(), *connection)) {
        LSLog::write("XPC rejected: non-Apple caller pid " + pid);
        return false;
    }
    connection->setExportedInterface(exportedInterface(services_.platform));
    connection->setRemoteObjectInterface(XPCInterface(kAgentProtocolName));

    auto handler = std::make_shared<WallpaperXPCHandler>(services_);
    auto proxy = connection->remoteObjectProxy();
    handler->setAgent(proxy && proxy->conformsTo(kAgentProtocolName) ? std::move(proxy) : nullptr);
    connection->setExportedObject(handler);
    connection->setInvalidationHandler([weak = std::weak_ptr(handler)] {
        if (const auto alive = weak.lock()) {
            alive->setAgent(nullptr);
        }
    });
    connection->setRefusalHandler(
        [](const std::string& sentence) { LSLog::write("XPC refused: " + sentence); });
    services_.library.addHandler(handler);
    connection->resume();
    return true;
}

} // namespace vantor
