#pragma once
// Keeps an extension running: one that died is started again, after a while that grows. Main
// thread.

#include "agent/extension_session.h"
#include "agent/supervision/restart_policy.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor::agent {

struct SupervisorEvents {
    /// A new process has started, which knows of no wallpaper yet.
    std::function<void(ExtensionSession& session)> started;
    /// The process ended, and is started again in so many seconds. With `setAside`, what it was
    /// showing is not to be shown again.
    std::function<void(const std::string& how, double delay, bool setAside)> died;
    /// As those of a session, of whichever runs.
    std::function<void(std::uint32_t contextID, FileDescriptor socket)> attached;
    std::function<void(std::uint32_t displayID, std::uint32_t frameRate)> links;
    std::function<void()> openHostApplication;
    std::function<void(Picker picker)> pickerChanged;
};

class ExtensionSupervisor {
  public:
    /// `patience` is that of its sessions.
    ExtensionSupervisor(MainLoop& loop, launch::LaunchRequest request, double patience,
                        SupervisorEvents events);
    /// Ends the extension, and waits for its end.
    ~ExtensionSupervisor();
    ExtensionSupervisor(const ExtensionSupervisor&) = delete;
    ExtensionSupervisor& operator=(const ExtensionSupervisor&) = delete;

    /// Starts it for the first time; `started` is called before this returns. The error is a
    /// sentence.
    Result<Done, std::string> start();

    /// Null between a death and the next start.
    ExtensionSession* session() const { return session_.get(); }
    /// The displays that there are, which every session is told.
    void setScreens(std::vector<launch::ScreenRecord> screens);

    /// Since the first start.
    std::uint32_t restarts() const { return restarts_; }
    /// How it ended last; empty when it has not.
    const std::string& lastEnd() const { return lastEnd_; }

  private:
    void ended(const std::string& how);
    void restart();
    void restartAfter(const std::string& how);

    MainLoop& loop_;
    launch::LaunchRequest request_;
    double patience_;
    SupervisorEvents events_;
    std::vector<launch::ScreenRecord> screens_;
    RestartPolicy policy_;
    std::unique_ptr<ExtensionSession> session_;
    /// Until the next start.
    std::unique_ptr<Alarm> alarm_;
    std::uint32_t restarts_ = 0;
    std::string lastEnd_;
    /// Held weakly by what was posted and may run when this is gone.
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

} // namespace vantor::agent
