#pragma once
// A running extension as the agent uses it: its process, one connection for requests, and the
// screens and ticks it is told of. Main thread.

#include "agent/kit/picker.h"
#include "agent/kit/requests.h"
#include "agent/supervision/answer_watch.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/launch/launch_host.h"
#include "platform/linux/main_loop.h"
#include "platform/linux/system/xpc/xpc_client.h"
#include "platform/result.h"
#include "platform/uuid.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace vantor {
class Platform;
}

namespace vantor::agent {

/// How to start the extension of a bundle folder: with a home of its own under the user's.
launch::LaunchRequest extensionLaunch(Platform& platform, std::filesystem::path bundle);

struct SessionHandlers {
    /// The private socket of a remote context that was asked for, or none when it does not exist.
    std::function<void(std::uint32_t contextID, FileDescriptor socket)> attached;
    /// The extension's process has ended; see launch::HostHandlers. Also when it was ended because
    /// it did not answer.
    std::function<void(const std::string& how)> ended;
    /// The extension asks for the application that it belongs to to be opened. May be empty.
    std::function<void()> openHostApplication = {};
    /// A display's links run at that rate from now on; 0: none runs. May be empty.
    std::function<void(std::uint32_t displayID, std::uint32_t frameRate)> links = {};
    /// The extension offers something else in the picker from now on. May be empty.
    std::function<void(Picker picker)> pickerChanged = {};
};

class ExtensionSession {
  public:
    /// Starts the extension and connects. An extension that answers no request about a wallpaper
    /// for `patience` seconds is ended. The error is a sentence.
    static Result<std::unique_ptr<ExtensionSession>, std::string>
    start(MainLoop& loop, const launch::LaunchRequest& request,
          std::span<const launch::ScreenRecord> screens, SessionHandlers handlers,
          double patience = kPatience);
    ExtensionSession(const ExtensionSession&) = delete;
    ExtensionSession& operator=(const ExtensionSession&) = delete;

    pid_t processIdentifier() const { return host_->processIdentifier(); }

    /// Asks for a wallpaper; `done` gets the identifier of its remote context, or the reason why
    /// there is none.
    void acquire(const UUID& identifier, const CreationRequest& request,
                 std::function<void(Result<std::uint32_t, std::string>)> done);
    /// `done` gets the extension's error, if any.
    void update(const UUID& identifier, const UpdateRequest& request,
                std::function<void(std::optional<Error>)> done);
    void invalidate(const UUID& identifier, std::function<void(std::optional<Error>)> done);

    /// Asks what the extension offers in the picker; the first time it renders the thumbnails.
    void picker(std::function<void(Result<Picker, std::string>)> done);

    /// Asks for the remote context's socket; the answer is `attached`. False when the extension is
    /// gone.
    [[nodiscard]] bool attach(std::uint32_t contextID) { return host_->attach(contextID); }
    /// The displays that there are now. False when the extension is gone.
    [[nodiscard]] bool setScreens(std::span<const launch::ScreenRecord> screens) {
        return host_->setScreens(screens);
    }
    /// The display is about to show a frame.
    void tick(std::uint32_t displayID);

  private:
    ExtensionSession(MainLoop& loop, double patience);
    /// Asks about a wallpaper, and watches for the answer.
    void ask(WallpaperOperation operation, const std::vector<ObjectRef>& arguments,
             std::function<void(const xpc::CallResult&)> done);
    /// Ends an extension that does not answer.
    void giveUp();

    ClassRegistry runtime_;
    std::unique_ptr<launch::LaunchHost> host_;
    double patience_;
    bool hasGivenUp_ = false;
    AnswerWatch answers_;
    std::unique_ptr<xpc::XPCClient> client_;
};

} // namespace vantor::agent
