#pragma once
// What the machine and the session are doing, as far as wallpapers should know.

namespace vantor::agent {

struct Conditions {
    /// The session's screen is locked.
    bool isLocked = false;
    /// The machine is about to sleep, or sleeps.
    bool isAsleep = false;
    /// The session is the one that is seen; another one may have been switched to.
    bool isSessionActive = true;
    /// The machine runs on its battery.
    bool isOnBattery = false;

    bool operator==(const Conditions&) const = default;
};

} // namespace vantor::agent
