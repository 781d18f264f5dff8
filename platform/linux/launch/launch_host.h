#pragma once
// The agent's end of the launch socket, and the extension's process. Main thread.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/launch/launch_socket.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <sys/types.h>

namespace vantor::launch {

struct LaunchRequest {
    /// The bundle folder ("…/VantorLockScreen.appex").
    std::filesystem::path bundle;
    /// The extension's own home; made when it is missing.
    std::filesystem::path home;
};

struct HostHandlers {
    /// The answer to `attach`: the context's private socket, or none when it does not exist.
    std::function<void(std::uint32_t contextID, FileDescriptor socket)> attached;
    /// The extension asks for an installed application to be opened. May be empty.
    std::function<void(const std::string& identifier)> open = {};
    /// The display's links run at that rate from now on; 0: none runs. May be empty.
    std::function<void(std::uint32_t displayID, std::uint32_t frameRate)> links = {};
    /// The process has ended; `how` reads "exited with status 1" or "was ended by signal 9".
    /// Called once, and nothing after it.
    std::function<void(const std::string& how)> ended;
};

/// A started extension. Destruction closes the launch socket, which the extension obeys by ending,
/// waits a moment for it, and ends it by force otherwise: no process is left behind.
class LaunchHost {
  public:
    /// Starts the extension with standard input, output and error, the launch socket as descriptor
    /// 3 and nothing else, and for good without new privileges. Its home and all that is kept below
    /// a home by default are its own; XDG_DATA_HOME stays the user's, where desktop entries are
    /// looked up. The error is a sentence.
    static Result<std::unique_ptr<LaunchHost>, std::string>
    start(MainLoop& loop, const LaunchRequest& request, HostHandlers handlers);
    ~LaunchHost();
    LaunchHost(const LaunchHost&) = delete;
    LaunchHost& operator=(const LaunchHost&) = delete;

    pid_t processIdentifier() const { return pid_; }

    // Each gives false when the extension is gone or does not keep up.
    [[nodiscard]] bool attach(std::uint32_t contextID) const;
    [[nodiscard]] bool setScreens(std::span<const ScreenRecord> screens) const;
    [[nodiscard]] bool tick(std::uint32_t displayID) const;
    /// Ends the process by force; `ended` follows.
    void kill() const;
    /// Makes one more connection; gives this side's socket, or none.
    FileDescriptor connect() const;

  private:
    LaunchHost(MainLoop& loop, FileDescriptor socket, pid_t pid, FileDescriptor process,
               HostHandlers handlers);
    void drain();
    void reap();

    LaunchSocket socket_;
    pid_t pid_;
    FileDescriptor process_;
    HostHandlers handlers_;
    std::unique_ptr<DescriptorWatch> socketWatch_;
    std::unique_ptr<DescriptorWatch> processWatch_;
    bool reaped_ = false;
};

} // namespace vantor::launch
