#pragma once
// Follows the conditions as the system tells them: the lock through the platform's notifications,
// sleep and the active session through logind, the battery through UPower. What nobody tells stays
// at its harmless value. Main thread; nothing polls.

#include "agent/conditions/conditions.h"
#include "platform/linux/system/followed_bus.h"

#include <functional>
#include <memory>

namespace vantor {
class Platform;
}

namespace vantor::agent {

class SystemConditions {
  public:
    /// `changed` is called from the loop; never after destruction.
    SystemConditions(Platform& platform, MainLoop& loop, std::function<void()> changed);
    ~SystemConditions();
    SystemConditions(const SystemConditions&) = delete;
    SystemConditions& operator=(const SystemConditions&) = delete;

    const Conditions& current() const { return current_; }

  private:
    void set(bool Conditions::*member, bool value);
    int prepare(sd_bus* bus);
    static int preparesForSleep(sd_bus_message* message, void* data, sd_bus_error* error);
    static int gotSession(sd_bus_message* reply, void* data, sd_bus_error* error);
    static int sessionChanged(sd_bus_message* message, void* data, sd_bus_error* error);
    static int gotActive(sd_bus_message* reply, void* data, sd_bus_error* error);
    static int powerChanged(sd_bus_message* message, void* data, sd_bus_error* error);
    static int gotOnBattery(sd_bus_message* reply, void* data, sd_bus_error* error);

    std::function<void()> changed_;
    Conditions current_;
    /// Held weakly by observers, which live as long as the process.
    std::shared_ptr<SystemConditions*> self_ = std::make_shared<SystemConditions*>(this);
    std::unique_ptr<UnifiedLogger> log_;
    FollowedBus bus_;
};

} // namespace vantor::agent
