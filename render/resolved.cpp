#include "render/resolved.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace vantor {
namespace {

std::atomic<WallpaperResolver*> installedResolver{nullptr};

} // namespace

void WallpaperResolver::install(WallpaperResolver* resolver) { installedResolver = resolver; }

WallpaperResolver& WallpaperResolver::installed() {
    WallpaperResolver* resolver = installedResolver;
    if (resolver == nullptr) {
        std::fputs("no wallpaper resolver is installed\n", stderr);
        std::abort();
    }
    return *resolver;
}

} // namespace vantor
