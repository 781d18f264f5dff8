#include "extension/services.h"

#include "library/lock_screen_library.h"
#include "platform/platform.h"
#include "render/surface_registry.h"

namespace vantor {

Services Services::shared() {
    // First, since the registry asks it what to show.
    LockScreenLibrary& library = LockScreenLibrary::shared();
    return {
        .platform = vantor::platform(), .library = library, .registry = SurfaceRegistry::shared()};
}

} // namespace vantor
