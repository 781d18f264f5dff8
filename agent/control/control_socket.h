#pragma once
// The agent's private socket: how it is asked where there is no session bus, and how a second agent
// notices the first. Main thread.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>

namespace vantor::agent {

/// vantor/agent.sock in the user's folder of sockets, or of state where there is none; nothing
/// where there is neither.
std::optional<std::filesystem::path> controlSocketFile();

/// A connection to the socket; no descriptor, and errno set, when there can be none: EAGAIN when an
/// agent listens and lets too many callers wait.
FileDescriptor connectToControlSocket(const std::filesystem::path& file);

class ControlSocket {
  public:
    struct Problem {
        /// The agent that listens there already, 0 when it is too busy to say who it is; nothing
        /// when it is another problem.
        std::optional<pid_t> agent;
        /// A sentence.
        std::string sentence;
    };

    /// Listens at `file`, for this user alone. A socket whose agent died is taken over. `accepted`
    /// is called with each connection of this user.
    static Result<std::unique_ptr<ControlSocket>, Problem>
    listen(MainLoop& loop, const std::filesystem::path& file,
           std::function<void(FileDescriptor)> accepted);
    /// Removes the socket, unless another one stands in its place.
    ~ControlSocket();
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

  private:
    ControlSocket(MainLoop& loop, std::filesystem::path file, FileDescriptor socket,
                  std::function<void(FileDescriptor)> accepted);
    void acceptReady();

    MainLoop& loop_;
    std::filesystem::path file_;
    /// The file's number on its device, by which it is known again.
    ino_t inode_ = 0;
    FileDescriptor socket_;
    std::function<void(FileDescriptor)> accepted_;
    std::unique_ptr<DescriptorWatch> ready_;
    /// The end of a rest from accepting.
    std::shared_ptr<WorkItem> rest_;
};

} // namespace vantor::agent
