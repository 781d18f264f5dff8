#pragma once
// The extension's end of the launch socket. Main thread, unless a member says otherwise.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/launch/launch_socket.h"
#include "platform/linux/main_loop.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantor::launch {

/// What the agent's words mean to the extension. All on the main thread.
struct ChannelHandlers {
    /// A connection's stream socket.
    std::function<void(FileDescriptor)> connect;
    /// The private socket of that remote context, or nothing when there is none.
    std::function<std::optional<FileDescriptor>(std::uint32_t contextID)> attach;
    std::function<void(std::span<const ScreenRecord>)> screens;
    std::function<void(std::uint32_t displayID)> tick;
    /// The agent is gone, or broke the wire. Called once; nothing is called after it.
    std::function<void(const std::string& reason)> closed;
};

class LaunchChannel {
  public:
    LaunchChannel(MainLoop& loop, FileDescriptor socket, ChannelHandlers handlers);
    ~LaunchChannel();
    LaunchChannel(const LaunchChannel&) = delete;
    LaunchChannel& operator=(const LaunchChannel&) = delete;

    /// The launch socket that the process was started with (LISTEN_FDS), taken from the environment
    /// so that no child inherits the word; nothing when it was started otherwise.
    static std::optional<FileDescriptor> takeFromEnvironment();

    /// Asks the agent to open an installed application; false when it cannot be asked. Any thread.
    [[nodiscard]] bool requestOpen(std::string_view identifier) const;

    /// Tells the agent how fast the display's links run. An agent that cannot be told is gone.
    void tellLinks(std::uint32_t displayID, std::uint32_t frameRate) const;

  private:
    void drain();
    bool handle(Received received);
    void close(const std::string& reason);

    LaunchSocket socket_;
    ChannelHandlers handlers_;
    std::unique_ptr<DescriptorWatch> watch_;
};

} // namespace vantor::launch
