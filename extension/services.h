#pragma once
// What the extension's objects work with; all of it lives as long as the process.

namespace vantor {

class LockScreenLibrary;
class Platform;
class SurfaceRegistry;

struct Services {
    Platform& platform;
    LockScreenLibrary& library;
    SurfaceRegistry& registry;

    /// The process-wide ones, on the installed platform.
    static Services shared();
};

} // namespace vantor
