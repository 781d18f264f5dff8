#pragma once
// A bus daemon of a test's own, which can go away and come back at the same address.

#include "platform/linux/file_descriptor.h"
#include "tests/support/temporary_folder.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantor {

class PrivateBus {
  public:
    /// `variable` is the environment variable that names this kind of bus; it stays set.
    explicit PrivateBus(const char* variable) {
        setenv(variable, address().c_str(), 1);
        start();
    }
    ~PrivateBus() { stop(); }
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Returns when clients can connect.
    void start() {
        pid_ = fork();
        if (pid_ == 0) {
            // It complains of limits that it may not raise.
            static_cast<void>(std::freopen("/dev/null", "w", stderr));
            execlp("dbus-daemon", "dbus-daemon", "--session", "--nofork", "--nopidfile",
                   ("--address=" + address()).c_str(), nullptr);
            _exit(127);
        }
        for (int i = 0; i < 1000 && !accepts(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }
    void stop() {
        if (pid_ > 0) {
            kill(pid_, SIGTERM);
            waitpid(pid_, nullptr, 0);
            std::error_code ignored;
            std::filesystem::remove(socketFile(), ignored);
            pid_ = -1;
        }
    }

    std::string address() const { return "unix:path=" + socketFile().string(); }

  private:
    std::filesystem::path socketFile() const { return folder_.path() / "bus"; }

    /// The socket's file is there a moment before anybody can connect to it.
    bool accepts() const {
        sockaddr_un name{};
        name.sun_family = AF_UNIX;
        socketFile().string().copy(name.sun_path, sizeof(name.sun_path) - 1);
        const FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        return ::connect(client.get(), reinterpret_cast<const sockaddr*>(&name), sizeof(name)) == 0;
    }

    TemporaryFolder folder_;
    pid_t pid_ = -1;
};

} // namespace vantor
