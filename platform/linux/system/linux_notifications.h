#pragma once
// Notifications on Linux: signals on the session bus.
//
// A notification is the signal "Posted" of the interface "com.nimbara.vantor.Notifications" at
// "/com/nimbara/vantor", with its name as the one argument (s); distributed and Darwin-style
// observers both hear it. The system's two lock notifications come from logind's session on the
// system bus and from the screen saver's "ActiveChanged" on the session bus: whichever speaks first
// is heard, and the other one that says the same is not. A bus that goes away is followed when it
// comes back. Without a session bus one line is logged, nothing arrives there, and posting fails.

#include "platform/notifications.h"

#include <memory>

namespace vantor {

class MainLoop;
class UnifiedLog;

class LinuxNotifications : public Notifications {
  public:
    LinuxNotifications(MainLoop& loop, UnifiedLog& log);
    ~LinuxNotifications() override;

    void observeDistributed(std::string_view name, std::function<void()> observer) override;
    void observeDarwin(std::string_view name, std::function<void()> observer) override;
    bool postDarwin(std::string_view name) override;

  private:
    class State;
    std::unique_ptr<State> state_;
};

} // namespace vantor
