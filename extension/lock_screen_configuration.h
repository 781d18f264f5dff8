#pragma once
// Acceptance of the agent's connections.

#include "platform/app_extension.h"

namespace vantor {

class LockScreenLibrary;
class Platform;
class SurfaceRegistry;

class LockScreenConfiguration : public AppExtensionConfiguration {
  public:
    /// The three must outlive every connection.
    LockScreenConfiguration(Platform& platform, LockScreenLibrary& library,
                            SurfaceRegistry& registry)
        : platform_(platform), library_(library), registry_(registry) {}

    /// Checks the caller, sets both interfaces, exports a handler of its own and resumes.
    bool accept(const std::shared_ptr<XPCConnection>& connection) override;
    void connectionRefused(const std::string& sentence) override;

  private:
    Platform& platform_;
    LockScreenLibrary& library_;
    SurfaceRegistry& registry_;
};

} // namespace vantor
