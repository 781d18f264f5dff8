#include "extension/surface_requests.h"

#include "bridge/carrier.h"
#include "bridge/remote_context.h"
#include "extension/number_text.h"
#include "library/lock_screen_library.h"
#include "log/ls_log.h"
#include "platform/layers.h"
#include "platform/platform.h"
#include "render/checked_integer.h"
#include "render/surface_registry.h"
#include "shaders/shader_catalog.h"

#include <string>
#include <utility>

namespace vantor {
namespace {

constexpr const char* kErrorDomain = "VantorLockScreen";

enum class ErrorCode {
    remoteContextUnavailable = 1,
    replyNotBuildable = 2,
    viewModelsUnavailable = 3,
};

Error fail(ErrorCode code, const char* message) {
    return {.domain = kErrorDomain, .code = static_cast<int>(code), .message = message};
}

std::string textOf(const std::optional<UUID>& id, const char* absent) {
    return id ? id->text() : absent;
}

std::string acquireLine(const UUID& id, const PrivateBridge::Creation& creation) {
    return "ACQUIRE " + id.text() + " choice=" + creation.configuration.value_or("nil") + " " +
           std::to_string(truncatedInteger(creation.size.width, "a wallpaper's width")) + "x" +
           std::to_string(truncatedInteger(creation.size.height, "a wallpaper's height")) + "@" +
           decimalText(creation.scale) +
           "x display=" + (creation.displayID ? std::to_string(*creation.displayID) : "nil") +
           " preview=" + (creation.isPreview ? "true" : "false") +
           " mode=" + creation.presentationMode + "/" + creation.activityState;
}

SurfaceRegistry::SurfaceRef makeSurface(Platform& platform,
                                        const PrivateBridge::Creation& creation) {
    auto context = PrivateBridge::makeRemoteContext(platform, creation.displayID);
    if (!context) {
        return nullptr;
    }
    const LayerRef root = platform.layers().makeLayer();
    root->setFrame({.origin = {}, .size = creation.size});
    root->setContentsScale(creation.scale);
    root->setBackgroundColor(Color::gray(0, 1));
    context->object()->perform("setLayer:", root);
    return std::make_shared<SurfaceRegistry::Surface>(
        SurfaceRegistry::Surface{.context = std::move(context),
                                 .root = root,
                                 .displayID = creation.displayID,
                                 .isPreview = creation.isPreview,
                                 .presentationMode = creation.presentationMode,
                                 .activityState = creation.activityState});
}

/// Scale is left alone where none is given.
void sizeRoot(Platform& platform, const LayerRef& root, const Size& size,
              std::optional<double> scale) {
    const UnanimatedTransaction transaction(platform.layers().transactions());
    root->setFrame({.origin = {}, .size = size});
    if (scale) {
        root->setContentsScale(*scale);
    }
}

void apply(const Services& services, SurfaceRegistry::Surface& surface,
           const PrivateBridge::Update& update) {
    surface.presentationMode = update.presentationMode;
    surface.activityState = update.activityState;
    if (update.size && update.scale && update.size->width > 0) {
        // Unlike an acquire, an update leaves the root's scale alone.
        sizeRoot(services.platform, surface.root, *update.size, std::nullopt);
        services.registry.resize(surface, *update.size, *update.scale);
    }
}

} // namespace

void acquireOnMain(const Services& services, const UUID& id,
                   const PrivateBridge::Creation& creation, Reply reply) {
    LSLog::write(acquireLine(id, creation));
    SurfaceRegistry& registry = services.registry;
    registry.cancelTeardown(id);
    SurfaceRegistry::SurfaceRef surface = registry.surface(id);
    if (surface) {
        surface->presentationMode = creation.presentationMode;
        surface->activityState = creation.activityState;
        sizeRoot(services.platform, surface->root, creation.size, creation.scale);
        registry.resize(*surface, creation.size, creation.scale);
    } else {
        surface = makeSurface(services.platform, creation);
        if (!surface) {
            std::move(reply).sendObjectError(
                fail(ErrorCode::remoteContextUnavailable, "remote CAContext unavailable"));
            return;
        }
        registry.add(id, surface);
    }
    surface->choice = creation.configuration;
    registry.present(*surface);
    services.platform.layers().transactions().flush();

    ObjectRef context = PrivateBridge::makeApple(services.platform, "WallpaperRemoteContextXPC",
                                                 "UInt32", surface->context->contextID());
    if (!context) {
        std::move(reply).sendObjectError(
            fail(ErrorCode::replyNotBuildable, "could not build WallpaperRemoteContextXPC"));
        return;
    }
    std::move(reply).sendObject(std::move(context));
}

void updateOnMain(const Services& services, const std::optional<UUID>& id,
                  const PrivateBridge::Update& update, Reply reply) {
    SurfaceRegistry& registry = services.registry;
    if (const auto target = id ? registry.surface(*id) : nullptr) {
        apply(services, *target, update);
    } else {
        for (const auto& [key, surface] : registry.surfaces()) {
            apply(services, *surface, update);
        }
    }
    if (update.presentationMode != "locked") {
        registry.setScreenLocked(false);
        registry.applyPolicy();
    }
    registry.applyPolicy();
    LSLog::write("UPDATE " + textOf(id, "all") + " mode=" + update.presentationMode + "/" +
                 update.activityState);
    std::move(reply).send(std::nullopt);
}

void invalidateOnMain(const Services& services, const std::optional<UUID>& id, Reply reply) {
    if (id) {
        services.registry.scheduleTeardown(*id);
    }
    LSLog::write("INVALIDATE " + textOf(id, "nil"));
    std::move(reply).send(std::nullopt);
}

void provideSettingsViewModelsOnMain(const Services& services, Reply reply) {
    ObjectRef viewModels = services.library.archivedViewModels();
    if (!viewModels) {
        LSLog::write("PROVIDE VIEW MODELS → FAILED");
        std::move(reply).sendObjectError(
            fail(ErrorCode::viewModelsUnavailable, "view models unavailable"));
        return;
    }
    LSLog::write("PROVIDE VIEW MODELS → " + std::to_string(ShaderCatalog::all.size()) + " tiles");
    std::move(reply).sendObject(std::move(viewModels));
}

} // namespace vantor
