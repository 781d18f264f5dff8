#pragma once
// Carries a change of the host application's state to everything that shows it.

namespace vantor {

class LockScreenLibrary;
class Platform;
class SurfaceRegistry;

/// Main thread only.
class ChangePropagation {
  public:
    /// The three must outlive the process's last notification.
    ChangePropagation(Platform& platform, LockScreenLibrary& library, SurfaceRegistry& registry)
        : platform_(platform), library_(library), registry_(registry) {}

    /// Observes the host application's notification for as long as the process lives; this object
    /// must live as long. Each notification is one propagation, later on the main queue.
    void startObserving();

    /// Reads the state file again, presents the surfaces that follow the desktop, applies the play
    /// policy and sends new view models to every connected agent.
    void appStateDidChange();

  private:
    void tellAgents();

    Platform& platform_;
    LockScreenLibrary& library_;
    SurfaceRegistry& registry_;
};

} // namespace vantor
