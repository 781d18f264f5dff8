#pragma once
// The principal object. Constructed once, on the main thread; its observers live as long as the
// process, and so must it.

#include "extension/lock_screen_configuration.h"
#include "extension/services.h"
#include "library/change_propagation.h"
#include "platform/app_extension.h"
#include "platform/loader.h"

#include <memory>

namespace vantor {

class LockScreenExtension : public AppExtension {
  public:
    static constexpr const char* kFrameworkPath =
        "/System/Library/PrivateFrameworks/WallpaperExtensionKit.framework/WallpaperExtensionKit";

    /// Loads the agent's framework and observes changes and the screen's lock. Without the
    /// framework it observes nothing, but connections are still served.
    explicit LockScreenExtension(const Services& services);

    LockScreenConfiguration& configuration() override { return configuration_; }

  private:
    void observeScreenLock();
    void setScreenLocked(bool locked);

    const Services services_;
    LockScreenConfiguration configuration_;
    ChangePropagation changes_;
    /// Null when it could not be loaded.
    std::shared_ptr<LoadedFramework> framework_;
};

} // namespace vantor
