#include "extension/process_entry.h"

#include "extension/lock_screen_extension.h"
#include "library/lock_screen_library.h"
#include "log/ls_log.h"
#include "platform/loader.h"
#include "platform/platform.h"
#include "render/surface_registry.h"

#include <cstdio>
#include <cstdlib>

namespace vantor {
namespace {

bool entered = false;

int serve(Platform& platform) {
    auto served = platform.appExtensionRuntime().main([&platform] {
        // The library first: it is what the registry asks.
        LockScreenLibrary& library = LockScreenLibrary::shared();
        return std::make_unique<LockScreenExtension>(platform, library, SurfaceRegistry::shared());
    });
    if (!served) {
        std::fprintf(stderr, "the extension cannot run: %s\n", served.error().c_str());
        std::abort();
    }
    return EXIT_SUCCESS;
}

} // namespace

int processEntry(Platform& platform, int argc, char** argv) {
    if (entered) {
        return serve(platform);
    }
    entered = true;
    void* const runtime = platform.loader().symbol("NSExtensionMain");
    if (runtime == nullptr) {
        LSLog::write("NSExtensionMain unavailable — cannot serve");
        return EXIT_FAILURE;
    }
    return reinterpret_cast<ExtensionMainFunction>(runtime)(argc, argv);
}

} // namespace vantor
