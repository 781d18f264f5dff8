#include "extension/wallpaper_xpc_handler.h"

#include "bridge/carrier.h"
#include "bridge/remote_context.h"
#include "library/lock_screen_library.h"
#include "log/ls_log.h"
#include "platform/layers.h"
#include "platform/main_queue.h"
#include "platform/platform.h"
#include "platform/workspace.h"
#include "render/checked_integer.h"
#include "render/surface_registry.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace vantor {
namespace {

constexpr const char* kErrorDomain = "VantorLockScreen";
constexpr int kRemoteContextUnavailable = 1;
constexpr int kReplyNotBuildable = 2;
constexpr int kViewModelsUnavailable = 3;

ReflectedRef reflected(const ObjectRef& object) { return object ? object->reflect() : nullptr; }

std::optional<UUID> identifierIn(const ObjectRef& argument) {
    return PrivateBridge::firstUUID(reflected(argument), 0);
}

/// The key of an instance whose request names none: its display stands for it.
UUID synthesised(std::optional<std::uint32_t> displayID) {
    std::array<char, 37> text{};
    std::snprintf(text.data(), text.size(), "00000000-0000-0000-0000-%012x", displayID.value_or(0));
    return *UUID::parse(text.data());
}

/// The shortest decimal form that reads back as the same number, with a fraction: "2.0". Only what
/// is very large or very small carries an exponent.
std::string decimal(double value) {
    // Up to 2^53 every integer has a double of its own, so that its digits say nothing false.
    constexpr double kLargestPlain = 9007199254740992.0;
    constexpr double kSmallestPlain = 1e-4;
    const double magnitude = std::abs(value);
    const bool plain = value == 0 || (magnitude >= kSmallestPlain && magnitude <= kLargestPlain);
    std::array<char, 32> text{};
    const auto [end, status] =
        std::to_chars(text.data(), text.data() + text.size(), value,
                      plain ? std::chars_format::fixed : std::chars_format::scientific);
    std::string out(text.data(), end);
    if (plain && out.find('.') == std::string::npos) {
        out += ".0";
    }
    return out;
}

std::string acquireLine(const UUID& uuid, const PrivateBridge::Creation& creation) {
    return "ACQUIRE " + uuid.text() + " choice=" + creation.configuration.value_or("nil") + " " +
           std::to_string(
               truncatedInteger(creation.size.width, "the width of an acquired wallpaper")) +
           "x" +
           std::to_string(
               truncatedInteger(creation.size.height, "the height of an acquired wallpaper")) +
           "@" + decimal(creation.scale) + "x display=" +
           (creation.displayID ? std::to_string(*creation.displayID) : std::string("nil")) +
           " preview=" + (creation.isPreview ? "true" : "false") +
           " mode=" + creation.presentationMode + "/" + creation.activityState;
}

} // namespace

WallpaperXPCHandler::WallpaperXPCHandler(Platform& platform, LockScreenLibrary& library,
                                         SurfaceRegistry& registry)
    : platform_(platform), library_(library), registry_(registry) {}

std::shared_ptr<AgentProxy> WallpaperXPCHandler::agent() const {
    const std::scoped_lock guard(lock_);
    return agent_;
}

void WallpaperXPCHandler::setAgent(std::shared_ptr<AgentProxy> agent) {
    const std::scoped_lock guard(lock_);
    agent_ = std::move(agent);
}

Error WallpaperXPCHandler::fail(int code, std::string message) {
    return {.domain = kErrorDomain, .code = code, .message = std::move(message)};
}

void WallpaperXPCHandler::invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                                 Reply reply) {
    switch (operation) {
    case WallpaperOperation::acquire:
        return acquire(arguments[0], arguments[1], std::move(reply));
    case WallpaperOperation::update:
        return update(arguments[0], arguments[1], std::move(reply));
    case WallpaperOperation::invalidate:
        return invalidate(arguments[0], std::move(reply));
    case WallpaperOperation::provideSettingsViewModels:
        return provideSettingsViewModels(std::move(reply));
    case WallpaperOperation::invokeContextMenuAction:
        invokeContextMenuAction(arguments[0]);
        return std::move(reply).send(std::nullopt);
    case WallpaperOperation::isChoiceDownloaded:
        return std::move(reply).sendBoolean(true);
    case WallpaperOperation::canSkipShuffledContent:
        return std::move(reply).sendBoolean(false);
    case WallpaperOperation::snapshot:
    case WallpaperOperation::addChoiceRequest:
    case WallpaperOperation::migrateSelectedChoice:
    case WallpaperOperation::handleDebugRequest:
        return std::move(reply).sendNothing();
    case WallpaperOperation::removeChoiceRequest:
    case WallpaperOperation::selectedChoicesDidChange:
    case WallpaperOperation::download:
    case WallpaperOperation::pauseDownload:
    case WallpaperOperation::cancelDownload:
    case WallpaperOperation::resumeDownload:
    case WallpaperOperation::removeDownload:
    case WallpaperOperation::migrate:
    case WallpaperOperation::skipShuffledContent:
    case WallpaperOperation::handleNotification:
        return std::move(reply).send(std::nullopt);
    }
}

template <typename Work>
void WallpaperXPCHandler::onMain(Reply reply, Work work) {
    // The queue takes copyable work; the reply stays one all the same.
    auto owed = std::make_shared<Reply>(std::move(reply));
    platform_.mainQueue().async([self = shared_from_this(), owed = std::move(owed),
                                 work = std::move(work)] { work(*self, std::move(*owed)); });
}

void WallpaperXPCHandler::acquire(const ObjectRef& identifier, const ObjectRef& request,
                                  Reply reply) {
    auto creation = PrivateBridge::parseCreation(reflected(request));
    const UUID uuid = identifierIn(identifier).value_or(synthesised(creation.displayID));
    onMain(std::move(reply),
           [uuid, creation = std::move(creation)](WallpaperXPCHandler& self, Reply owed) {
               self.acquireOnMain(uuid, creation, std::move(owed));
           });
}

void WallpaperXPCHandler::acquireOnMain(const UUID& uuid, const PrivateBridge::Creation& creation,
                                        Reply reply) {
    LSLog::write(acquireLine(uuid, creation));
    registry_.cancelTeardown(uuid);
    LayerTransactions& transactions = platform_.layers().transactions();
    const Rect frame{.origin = {}, .size = creation.size};
    SurfaceRegistry::SurfaceRef surface = registry_.surface(uuid);
    if (surface) {
        surface->presentationMode = creation.presentationMode;
        surface->activityState = creation.activityState;
        {
            const UnanimatedTransaction transaction(transactions);
            surface->root->setFrame(frame);
            surface->root->setContentsScale(creation.scale);
        }
        registry_.resize(*surface, creation.size, creation.scale);
    } else {
        auto context = PrivateBridge::makeRemoteContext(platform_, creation.displayID);
        if (!context) {
            std::move(reply).sendObjectError(
                fail(kRemoteContextUnavailable, "remote CAContext unavailable"));
            return;
        }
        LayerRef root = platform_.layers().makeLayer();
        root->setFrame(frame);
        root->setContentsScale(creation.scale);
        root->setBackgroundColor(Color::gray(0, 1));
        context->object()->perform("setLayer:", root);
        surface = std::make_shared<SurfaceRegistry::Surface>(
            SurfaceRegistry::Surface{.context = std::move(context),
                                     .root = std::move(root),
                                     .displayID = creation.displayID,
                                     .isPreview = creation.isPreview,
                                     .presentationMode = creation.presentationMode,
                                     .activityState = creation.activityState});
        registry_.add(uuid, surface);
    }
    surface->choice = creation.configuration;
    registry_.present(*surface);
    transactions.flush();

    auto object = PrivateBridge::makeApple(platform_, "WallpaperRemoteContextXPC", "UInt32",
                                           surface->context->contextID());
    if (!object) {
        std::move(reply).sendObjectError(
            fail(kReplyNotBuildable, "could not build WallpaperRemoteContextXPC"));
        return;
    }
    std::move(reply).sendObject(std::move(object));
}

void WallpaperXPCHandler::update(const ObjectRef& identifier, const ObjectRef& request,
                                 Reply reply) {
    auto update = PrivateBridge::parseUpdate(reflected(request));
    onMain(std::move(reply), [uuid = identifierIn(identifier),
                              update = std::move(update)](WallpaperXPCHandler& self, Reply owed) {
        self.updateOnMain(uuid, update, std::move(owed));
    });
}

void WallpaperXPCHandler::updateOnMain(const std::optional<UUID>& uuid,
                                       const PrivateBridge::Update& update, Reply reply) {
    std::vector<SurfaceRegistry::SurfaceRef> targets;
    if (auto named = uuid ? registry_.surface(*uuid) : nullptr) {
        targets.push_back(std::move(named));
    } else {
        for (const auto& [id, surface] : registry_.surfaces()) {
            targets.push_back(surface);
        }
    }
    for (const auto& surface : targets) {
        surface->presentationMode = update.presentationMode;
        surface->activityState = update.activityState;
        if (update.size && update.scale && update.size->width > 0) {
            {
                const UnanimatedTransaction transaction(platform_.layers().transactions());
                surface->root->setFrame({.origin = {}, .size = *update.size});
            }
            registry_.resize(*surface, *update.size, *update.scale);
        }
    }
    if (update.presentationMode != "locked") {
        registry_.setScreenLocked(false);
        registry_.applyPolicy();
    }
    registry_.applyPolicy();
    LSLog::write("UPDATE " + (uuid ? uuid->text() : std::string("all")) +
                 " mode=" + update.presentationMode + "/" + update.activityState);
    std::move(reply).send(std::nullopt);
}

void WallpaperXPCHandler::invalidate(const ObjectRef& identifier, Reply reply) {
    onMain(std::move(reply),
           [uuid = identifierIn(identifier)](WallpaperXPCHandler& self, Reply owed) {
               if (uuid) {
                   self.registry_.scheduleTeardown(*uuid);
               }
               LSLog::write("INVALIDATE " + (uuid ? uuid->text() : std::string("nil")));
               std::move(owed).send(std::nullopt);
           });
}

void WallpaperXPCHandler::provideSettingsViewModels(Reply reply) {
    onMain(std::move(reply), [](WallpaperXPCHandler& self, Reply owed) {
        const std::string line = "PROVIDE VIEW MODELS → ";
        if (auto viewModels = self.library_.archivedViewModels()) {
            LSLog::write(line + std::to_string(ShaderCatalog::all.size()) + " tiles");
            std::move(owed).sendObject(std::move(viewModels));
            return;
        }
        LSLog::write(line + "FAILED");
        std::move(owed).sendObjectError(fail(kViewModelsUnavailable, "view models unavailable"));
    });
}

void WallpaperXPCHandler::invokeContextMenuAction(const ObjectRef& menuItemID) {
    std::string text;
    if (menuItemID) {
        text = menuItemID->asString().value_or(menuItemID->description());
    }
    if (text.find("open-app") == std::string::npos) {
        return;
    }
    Workspace& workspace = platform_.workspace();
    if (const auto location = workspace.applicationLocation(library_.identifiers().appBundleID)) {
        workspace.openApplication(*location);
    }
}

} // namespace vantor
