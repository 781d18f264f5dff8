#include "agent/control/control_socket.h"

#include "platform/linux/system/user_home.h"
#include "platform/linux/whole_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <utility>

namespace vantor::agent {
namespace {

constexpr int kBacklog = 16;
/// How long nobody is accepted when there are no descriptors left. Seconds.
constexpr double kRest = 1;

/// A socket's name as the kernel takes it. It is short, so a long one goes by way of its folder,
/// which stays open while the address is used.
class Address {
  public:
    explicit Address(const std::filesystem::path& file) {
        name_.sun_family = AF_UNIX;
        std::string text = file.string();
        if (text.size() >= sizeof(name_.sun_path)) {
            folder_ = FileDescriptor(
                ::open(file.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
            text =
                "/proc/self/fd/" + std::to_string(folder_.get()) + "/" + file.filename().string();
        }
        text.copy(name_.sun_path, sizeof(name_.sun_path) - 1);
    }
    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&name_); }
    static constexpr socklen_t kSize = sizeof(sockaddr_un);

  private:
    sockaddr_un name_{};
    FileDescriptor folder_;
};

FileDescriptor makeSocket() {
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

std::optional<ucred> peerOf(int socket) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return ::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
               ? std::optional<ucred>(peer)
               : std::nullopt;
}

Failure<ControlSocket::Problem> problem(const std::filesystem::path& file, const std::string& why) {
    return Failure{
        ControlSocket::Problem{.agent = std::nullopt, .sentence = file.string() + ": " + why}};
}

/// Whether the folder is this user's, and nobody else can put a socket there.
bool isPrivate(const std::filesystem::path& folder) {
    struct stat what {};
    return ::stat(folder.c_str(), &what) == 0 && what.st_uid == ::geteuid() &&
           (what.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace

std::optional<std::filesystem::path> controlSocketFile() {
    auto folder = userRuntimeFolder();
    if (!folder) {
        folder = userStateFolder();
    }
    return folder ? std::optional(*folder / "vantor/agent.sock") : std::nullopt;
}

FileDescriptor connectToControlSocket(const std::filesystem::path& file) {
    FileDescriptor socket = makeSocket();
    const Address address(file);
    return ::connect(socket.get(), address.get(), Address::kSize) == 0 ? std::move(socket)
                                                                       : FileDescriptor();
}

Result<std::unique_ptr<ControlSocket>, ControlSocket::Problem>
ControlSocket::listen(MainLoop& loop, const std::filesystem::path& file,
                      std::function<void(FileDescriptor)> accepted) {
    const std::filesystem::path folder = file.parent_path();
    if (auto made = makePrivateFolder(folder); !made) {
        return Failure{Problem{.agent = std::nullopt, .sentence = made.error()}};
    }
    if (!isPrivate(folder)) {
        return problem(folder, "others may write in this folder");
    }
    // Two agents that start at once do not take each other's socket for a dead one's.
    const auto lock = FolderLock::take(folder);
    if (!lock) {
        return Failure{Problem{.agent = std::nullopt, .sentence = lock.error()}};
    }
    if (const FileDescriptor other = connectToControlSocket(file)) {
        const auto peer = peerOf(other.get());
        const pid_t pid = peer ? peer->pid : 0;
        return Failure{Problem{
            .agent = pid, .sentence = "an agent already runs (pid " + std::to_string(pid) + ")"}};
    }
    if (errno == EAGAIN) {
        return Failure{
            Problem{.agent = 0, .sentence = "an agent already runs, and does not answer"}};
    }
    if (errno != ECONNREFUSED && errno != ENOENT) {
        return problem(file, std::strerror(errno));
    }
    ::unlink(file.c_str());
    FileDescriptor socket = makeSocket();
    const Address address(file);
    // The file takes the socket's permissions when it is made.
    if (!socket || ::fchmod(socket.get(), 0600) != 0 ||
        ::bind(socket.get(), address.get(), Address::kSize) != 0 ||
        ::listen(socket.get(), kBacklog) != 0) {
        return problem(file, std::strerror(errno));
    }
    return std::unique_ptr<ControlSocket>(
        new ControlSocket(loop, file, std::move(socket), std::move(accepted)));
}

ControlSocket::ControlSocket(MainLoop& loop, std::filesystem::path file, FileDescriptor socket,
                             std::function<void(FileDescriptor)> accepted)
    : loop_(loop), file_(std::move(file)), socket_(std::move(socket)),
      accepted_(std::move(accepted)),
      ready_(loop.watch(socket_.get(), EPOLLIN, [this](std::uint32_t) { acceptReady(); })) {
    struct stat made {};
    inode_ = ::lstat(file_.c_str(), &made) == 0 ? made.st_ino : 0;
}

ControlSocket::~ControlSocket() {
    if (rest_) {
        rest_->cancel();
    }
    struct stat there {};
    if (::lstat(file_.c_str(), &there) == 0 && there.st_ino == inode_) {
        ::unlink(file_.c_str());
    }
}

void ControlSocket::acceptReady() {
    FileDescriptor connection(
        ::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!connection) {
        if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
            // The caller waits, and so does the loop, which would else be woken at once again.
            ready_->setEvents(0);
            rest_ = loop_.asyncAfter(kRest, [this] { ready_->setEvents(EPOLLIN); });
        }
        return;
    }
    if (const auto peer = peerOf(connection.get()); peer && peer->uid == ::geteuid()) {
        accepted_(std::move(connection));
    }
}

} // namespace vantor::agent
