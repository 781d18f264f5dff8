#include "render/surface_registry.h"

#include "log/ls_log.h"
#include "platform/images.h"

#include <utility>

namespace vantor {
namespace {

constexpr const char* kBackdrop = "#backdrop";
constexpr Color kBackdropColor = Color::gray(0.1, 1.0);

bool showsLockScreen(const SurfaceRegistry::Surface& surface) {
    return surface.presentationMode == "locked" || surface.presentationMode == "idle";
}

} // namespace

SurfaceRegistry& SurfaceRegistry::shared() {
    static SurfaceRegistry& instance =
        *new SurfaceRegistry(platform(), ShaderGPU::shared(), WallpaperResolver::installed());
    return instance;
}

SurfaceRegistry::SurfaceRegistry(Platform& platform, ShaderGPU& gpu, WallpaperResolver& resolver,
                                 double teardownGrace)
    : platform_(platform), gpu_(gpu), resolver_(resolver), teardownGrace_(teardownGrace),
      random_(std::random_device{}()), alive_(std::make_shared<SurfaceRegistry*>(this)) {}

SurfaceRegistry::SurfaceRef SurfaceRegistry::surface(const UUID& id) const {
    const auto found = surfaces_.find(id);
    return found != surfaces_.end() ? found->second : nullptr;
}

void SurfaceRegistry::add(const UUID& id, SurfaceRef surface) {
    surfaces_.insert_or_assign(id, std::move(surface));
}

bool SurfaceRegistry::shouldPlay(const Surface& surface) const {
    if (surface.activityState == "suspended" || surface.teardown) {
        return false;
    }
    return surface.isPreview || screenLocked_ || showsLockScreen(surface);
}

bool SurfaceRegistry::showsBackdrop(const Surface& surface) const {
    return surface.choice == kMatchDesktop && !surface.isPreview && !screenLocked_ &&
           !showsLockScreen(surface) && resolver_.isNonShader(surface.displayID);
}

void SurfaceRegistry::present(Surface& surface) {
    if (showsBackdrop(surface)) {
        if (surface.entryID != kBackdrop) {
            showBackdrop(surface);
        }
        return;
    }
    const std::optional<Resolved> resolved = resolver_.resolve(surface.choice, surface.displayID);
    if (resolved && (surface.shader || surface.still) && surface.entryID == resolved->key) {
        if (surface.shader) {
            surface.shader->setLook(resolved->uniforms);
            if (!surface.shader->isPlaying()) {
                surface.shader->renderFrame();
            }
        }
        return;
    }
    clear(surface);
    surface.entryID = resolved ? std::optional(resolved->key) : std::nullopt;
    if (resolved && resolved->source) {
        showShader(surface, *resolved);
    } else if (!resolved || !resolved->still || !showStill(surface, *resolved->still)) {
        LSLog::write("  no offered wallpaper for " + surface.choice.value_or("nil") + " — black");
    }
    if (surface.shader) {
        surface.shader->setPlaying(shouldPlay(surface));
    }
}

void SurfaceRegistry::clear(Surface& surface) const {
    if (surface.shader) {
        surface.shader->stop();
        surface.shader.reset();
    }
    if (surface.still) {
        surface.still->removeFromSuperlayer();
        surface.still.reset();
    }
}

void SurfaceRegistry::showBackdrop(Surface& surface) const {
    clear(surface);
    const LayerRef layer = platform_.layers().makeLayer();
    layer->setBackgroundColor(kBackdropColor);
    layer->setFrame(surface.root->bounds());
    surface.root->addSublayer(layer);
    surface.still = layer;
    surface.entryID = kBackdrop;
}

void SurfaceRegistry::showShader(Surface& surface, const Resolved& resolved) {
    const double startTime = shouldPlay(surface)
                                 ? std::uniform_real_distribution(0.0, kMaxStartTime)(random_)
                                 : kPausedStartTime;
    surface.shader = ShaderSurface::create(platform_, gpu_,
                                           {.entryID = resolved.key,
                                            .source = *resolved.source,
                                            .look = resolved.uniforms,
                                            .in = surface.root,
                                            .size = surface.root->bounds().size,
                                            .scale = surface.root->contentsScale(),
                                            .displayID = surface.displayID,
                                            .startTime = startTime});
}

bool SurfaceRegistry::showStill(Surface& surface, const std::filesystem::path& file) const {
    auto image = platform_.images().read(file);
    if (!image) {
        return false;
    }
    const LayerRef layer = platform_.layers().makeLayer();
    layer->setContents(std::move(image));
    layer->setContentsGravity(ContentsGravity::resizeAspectFill);
    layer->setMasksToBounds(true);
    layer->setFrame(surface.root->bounds());
    layer->setContentsScale(surface.root->contentsScale());
    surface.root->addSublayer(layer);
    surface.still = layer;
    return true;
}

void SurfaceRegistry::applyPolicy() {
    for (const auto& [id, surface] : surfaces_) {
        if (surface->choice == kMatchDesktop && !surface->teardown) {
            present(*surface);
        }
        if (surface->shader) {
            surface->shader->setPlaying(shouldPlay(*surface));
        }
    }
    platform_.layers().transactions().flush();
}

void SurfaceRegistry::refreshAll() {
    for (const auto& [id, surface] : surfaces_) {
        present(*surface);
    }
    platform_.layers().transactions().flush();
}

void SurfaceRegistry::resize(Surface& surface, const Size& size, double scale) {
    if (surface.shader) {
        surface.shader->resize(size, scale);
    }
    const UnanimatedTransaction transaction(platform_.layers().transactions());
    if (surface.still) {
        surface.still->setFrame({.origin = {}, .size = size});
        surface.still->setContentsScale(scale);
    }
}

void SurfaceRegistry::scheduleTeardown(const UUID& id) {
    const SurfaceRef released = surface(id);
    if (!released) {
        return;
    }
    if (released->teardown) {
        released->teardown->cancel();
    }
    if (released->shader) {
        released->shader->setPlaying(false);
    }
    released->teardown =
        platform_.mainQueue().asyncAfter(teardownGrace_, [registry = std::weak_ptr(alive_), id] {
            if (const auto alive = registry.lock()) {
                (*alive)->tearDown(id);
            }
        });
}

void SurfaceRegistry::cancelTeardown(const UUID& id) {
    const SurfaceRef kept = surface(id);
    if (!kept || !kept->teardown) {
        return;
    }
    kept->teardown->cancel();
    kept->teardown.reset();
    if (kept->shader) {
        kept->shader->setPlaying(shouldPlay(*kept));
    }
}

void SurfaceRegistry::tearDown(const UUID& id) {
    const SurfaceRef gone = surface(id);
    if (!gone) {
        return;
    }
    surfaces_.erase(id);
    clear(*gone);
    gone->context->object()->perform("invalidate", nullptr);
    LSLog::write("surface " + id.text() + " torn down (" + std::to_string(surfaces_.size()) +
                 " left)");
}

} // namespace vantor
