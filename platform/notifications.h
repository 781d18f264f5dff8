#pragma once
// Notifications between processes.
//   Linux: session-bus signals; screen lock from the session manager and the screen saver, both
//   mapped to the system's two names. Without a session bus one line is logged and nothing arrives.
//   macOS: NSDistributedNotificationCenter and the Darwin notify centre.

#include <functional>
#include <string>
#include <string_view>

namespace vantor {

/// Observers live as long as the process. Main thread.
class Notifications {
  public:
    virtual ~Notifications() = default;

    /// Distributed notifications of that name, from any sender, delivered on the main queue.
    virtual void observeDistributed(std::string_view name, std::function<void()> observer) = 0;

    /// Darwin-style notifications (a name and nothing else), delivered at once on the main thread.
    virtual void observeDarwin(std::string_view name, std::function<void()> observer) = 0;
    /// False when nobody can be told.
    virtual bool postDarwin(std::string_view name) = 0;
};

} // namespace vantor
