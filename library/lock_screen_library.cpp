#include "library/lock_screen_library.h"

#include "bridge/carrier.h"
#include "library/app_state.h"
#include "platform/bundle.h"
#include "platform/platform.h"
#include "render/shader_gpu.h"

namespace vantor {

LockScreenLibrary& LockScreenLibrary::shared() {
    static LockScreenLibrary& instance = *[] {
        auto* made = new LockScreenLibrary(platform(), ShaderGPU::shared());
        WallpaperResolver::install(made);
        return made;
    }();
    return instance;
}

LockScreenLibrary::LockScreenLibrary(Platform& platform, ShaderGPU& gpu)
    : platform_(platform), identifiers_(vantor::identifiers(platform)),
      appStateURL_(vantor::appStateURL(platform)),
      thumbnails_(gpu, platform.bundle().homeDirectory() / "Library" / "Caches" / "Thumbnails") {}

const DesktopState& LockScreenLibrary::desktop() { return desktop_ ? *desktop_ : rereadDesktop(); }

const DesktopState& LockScreenLibrary::rereadDesktop() {
    return desktop_.emplace(readAppState(platform_, appStateURL_));
}

std::optional<std::filesystem::path> LockScreenLibrary::stillURL(std::string_view id) const {
    return platform_.bundle().resource(id, "jpg", "Stills");
}

std::optional<Resolved> LockScreenLibrary::resolve(const std::optional<std::string>& configuration,
                                                   std::optional<std::uint32_t> displayID) {
    if (configuration && *configuration != kMatchDesktop) {
        const ShaderCatalog::Entry* entry = ShaderCatalog::entry(*configuration);
        return entry != nullptr ? std::optional(resolve(*entry)) : std::nullopt;
    }
    if (const Resolved* shown = desktop().shader(displayID)) {
        return *shown;
    }
    return resolve(matchFallback());
}

Resolved LockScreenLibrary::resolve(const ShaderCatalog::Entry& entry) const {
    Resolved resolved;
    resolved.key = entry.id;
    if (entry.source) {
        resolved.source = *entry.source;
    } else {
        resolved.key += "#still";
        resolved.still = stillURL(entry.id);
    }
    return resolved;
}

bool LockScreenLibrary::isNonShader(std::optional<std::uint32_t> displayID) {
    return desktop().isNonShader(displayID);
}

void LockScreenLibrary::addHandler(const std::shared_ptr<ConnectedAgent>& handler) {
    const std::lock_guard guard(lock_);
    std::erase_if(handlers_, [](const auto& known) { return known.expired(); });
    handlers_.push_back(handler);
}

std::vector<std::shared_ptr<ConnectedAgent>> LockScreenLibrary::handlers() {
    const std::lock_guard guard(lock_);
    std::vector<std::shared_ptr<ConnectedAgent>> alive;
    for (const auto& known : handlers_) {
        if (auto handler = known.lock()) {
            alive.push_back(std::move(handler));
        }
    }
    return alive;
}

ObjectRef LockScreenLibrary::archivedViewModels() {
    return PrivateBridge::makeApple(platform_, "WallpaperSettingsViewModelsXPC",
                                    SettingsViewModels::kPayloadName, viewModels());
}

} // namespace vantor
