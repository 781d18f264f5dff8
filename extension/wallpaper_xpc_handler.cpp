#include "extension/wallpaper_xpc_handler.h"

#include "bridge/request_decoding.h"
#include "extension/surface_requests.h"
#include "library/lock_screen_library.h"
#include "platform/main_queue.h"
#include "platform/platform.h"
#include "platform/workspace.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

namespace vantor {
namespace {

constexpr std::string_view kOpenApp = "open-app";

ReflectedRef reflectionOf(const ObjectRef& object) { return object ? object->reflect() : nullptr; }

std::optional<UUID> surfaceKey(const ObjectRef& id) {
    return PrivateBridge::firstUUID(reflectionOf(id), 0);
}

/// Stands for a wallpaper that the agent did not name: its display in the last group.
UUID displayKey(std::optional<std::uint32_t> displayID) {
    char text[37];
    std::snprintf(text, sizeof text, "00000000-0000-0000-0000-%012x", displayID.value_or(0));
    const auto key = UUID::parse(text);
    if (!key) {
        std::abort();
    }
    return *key;
}

/// Posts the half of an operation that belongs to the main thread. The reply travels in a holder
/// because posted work is copyable.
template <typename Work>
void onMain(const Services& services, Reply reply, Work work) {
    auto held = std::make_shared<Reply>(std::move(reply));
    services.platform.mainQueue().async(
        [services, held, work = std::move(work)] { work(services, std::move(*held)); });
}

} // namespace

std::shared_ptr<AgentProxy> WallpaperXPCHandler::agent() const {
    const std::lock_guard guard(mutex_);
    return agent_;
}

void WallpaperXPCHandler::setAgent(std::shared_ptr<AgentProxy> agent) {
    // The old one is released without the lock.
    const std::lock_guard guard(mutex_);
    agent_.swap(agent);
}

void WallpaperXPCHandler::invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                                 Reply reply) {
    using enum WallpaperOperation;
    switch (operation) {
    case acquire:
        this->acquire(arguments.at(0), arguments.at(1), std::move(reply));
        return;
    case update:
        this->update(arguments.at(0), arguments.at(1), std::move(reply));
        return;
    case invalidate:
        this->invalidate(arguments.at(0), std::move(reply));
        return;
    case provideSettingsViewModels:
        onMain(services_, std::move(reply), provideSettingsViewModelsOnMain);
        return;
    case invokeContextMenuAction:
        this->invokeContextMenuAction(arguments.at(0));
        std::move(reply).send(std::nullopt);
        return;
    case isChoiceDownloaded:
        std::move(reply).sendBoolean(true);
        return;
    case canSkipShuffledContent:
        std::move(reply).sendBoolean(false);
        return;
    case snapshot:
    case addChoiceRequest:
    case migrateSelectedChoice:
    case handleDebugRequest:
        std::move(reply).sendNothing();
        return;
    case removeChoiceRequest:
    case selectedChoicesDidChange:
    case download:
    case pauseDownload:
    case cancelDownload:
    case resumeDownload:
    case removeDownload:
    case migrate:
    case skipShuffledContent:
    case handleNotification:
        std::move(reply).send(std::nullopt);
        return;
    }
    std::fprintf(stderr, "operation %d is none of the protocol's\n", static_cast<int>(operation));
    std::abort();
}

void WallpaperXPCHandler::acquire(const ObjectRef& id, const ObjectRef& request, Reply reply) {
    PrivateBridge::Creation creation = PrivateBridge::parseCreation(reflectionOf(request));
    const UUID key = surfaceKey(id).value_or(displayKey(creation.displayID));
    onMain(services_, std::move(reply),
           [key, creation = std::move(creation)](const Services& services, Reply owed) {
               acquireOnMain(services, key, creation, std::move(owed));
           });
}

void WallpaperXPCHandler::update(const ObjectRef& id, const ObjectRef& request, Reply reply) {
    PrivateBridge::Update update = PrivateBridge::parseUpdate(reflectionOf(request));
    onMain(
        services_, std::move(reply),
        [key = surfaceKey(id), update = std::move(update)](const Services& services, Reply owed) {
            updateOnMain(services, key, update, std::move(owed));
        });
}

void WallpaperXPCHandler::invalidate(const ObjectRef& id, Reply reply) {
    onMain(services_, std::move(reply),
           [key = surfaceKey(id)](const Services& services, Reply owed) {
               invalidateOnMain(services, key, std::move(owed));
           });
}

void WallpaperXPCHandler::invokeContextMenuAction(const ObjectRef& menuItemID) {
    std::string text;
    if (menuItemID) {
        text = menuItemID->asString().value_or(menuItemID->description());
    }
    if (text.find(kOpenApp) == std::string::npos) {
        return;
    }
    Workspace& workspace = services_.platform.workspace();
    if (const auto location =
            workspace.applicationLocation(services_.library.identifiers().appBundleID)) {
        workspace.openApplication(*location);
    }
}

} // namespace vantor
