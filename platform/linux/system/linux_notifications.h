#pragma once
// Notifications on Linux: signals on the session bus.
//
// A notification is the signal "Posted" of the interface "com.nimbara.vantor.Notifications" at
// "/com/nimbara/vantor", with its name as the one argument (s); distributed and Darwin-style
// observers both hear it. The screen saver's "ActiveChanged" is heard as the system's two lock
// notifications. Without a session bus one line is logged, nothing arrives, and posting fails.

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
    struct State;
    /// Connects on first use.
    bool connected();
    std::unique_ptr<State> state_;
};

} // namespace vantor
