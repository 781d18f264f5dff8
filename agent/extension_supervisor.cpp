#include "agent/extension_supervisor.h"

#include "platform/linux/system/linux_media_clock.h"

#include <utility>

namespace vantor::agent {

ExtensionSupervisor::ExtensionSupervisor(MainLoop& loop, launch::LaunchRequest request,
                                         double patience, SupervisorEvents events)
    : loop_(loop), request_(std::move(request)), patience_(patience), events_(std::move(events)),
      alarm_(loop.alarm([this] { restart(); })) {}

ExtensionSupervisor::~ExtensionSupervisor() = default;

Result<Done, std::string> ExtensionSupervisor::start() {
    auto session =
        ExtensionSession::start(loop_, request_, screens_,
                                {.attached = events_.attached,
                                 .ended =
                                     [this](const std::string& how) {
                                         // The session that calls this goes with it.
                                         loop_.async([this, how, alive = std::weak_ptr(alive_)] {
                                             if (!alive.expired()) {
                                                 ended(how);
                                             }
                                         });
                                     },
                                 .openHostApplication = events_.openHostApplication,
                                 .links = events_.links,
                                 .pickerChanged = events_.pickerChanged},
                                patience_);
    if (!session) {
        return Failure{session.error()};
    }
    session_ = std::move(*session);
    events_.started(*session_);
    return Done{};
}

void ExtensionSupervisor::setScreens(std::vector<launch::ScreenRecord> screens) {
    screens_ = std::move(screens);
    if (session_) {
        // One that is gone is noticed by its end.
        static_cast<void>(session_->setScreens(screens_));
    }
}

void ExtensionSupervisor::ended(const std::string& how) {
    session_.reset();
    restartAfter(how);
}

void ExtensionSupervisor::restartAfter(const std::string& how) {
    lastEnd_ = how;
    const RestartPolicy::Verdict verdict = policy_.died(LinuxMediaClock().now());
    alarm_->set(verdict.delay);
    events_.died(how, verdict.delay, verdict.setAside);
}

void ExtensionSupervisor::restart() {
    ++restarts_;
    if (auto started = start(); !started) {
        restartAfter("cannot be started: " + started.error());
    }
}

} // namespace vantor::agent
