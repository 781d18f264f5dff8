#pragma once
// The extension's principal object.

#include "extension/lock_screen_configuration.h"
#include "library/change_propagation.h"
#include "platform/app_extension.h"
#include "platform/loader.h"

#include <memory>

namespace vantor {

class LockScreenLibrary;
class Platform;
class SurfaceRegistry;

/// Construction loads the agent's private framework and, with it loaded, observes the host
/// application's changes and the screen lock for the rest of the process's life. Without the
/// framework the extension still serves what it can. Main thread; never destroyed.
class LockScreenExtension : public AppExtension {
  public:
    LockScreenExtension(Platform& platform, LockScreenLibrary& library, SurfaceRegistry& registry);

    AppExtensionConfiguration& configuration() override { return configuration_; }

  private:
    void observeScreenLock();
    void setScreenLocked(bool locked);

    Platform& platform_;
    SurfaceRegistry& registry_;
    LockScreenConfiguration configuration_;
    ChangePropagation propagation_;
    std::shared_ptr<LoadedFramework> frameworkHandle_;
};

} // namespace vantor
