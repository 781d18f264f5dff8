#include "platform/linux/launch/launch_host.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vantor::launch {
namespace {

/// How long an extension may take to end when its agent does, before it is ended by force.
constexpr int kEndMilliseconds = 2000;

std::string description(int status) {
    if (WIFSIGNALED(status)) {
        return "was ended by signal " + std::to_string(WTERMSIG(status));
    }
    return "exited with status " + std::to_string(WEXITSTATUS(status));
}

/// What the extension does not inherit: it has a home of its own, and its own launch.
constexpr std::string_view kReplaced[] = {"HOME",           "LISTEN_FDS",     "LISTEN_FDNAMES",
                                          "LISTEN_PID",     "XDG_CACHE_HOME", "XDG_CONFIG_HOME",
                                          "XDG_STATE_HOME", "XDG_DATA_HOME"};

std::string userDataHome() {
    const char* named = std::getenv("XDG_DATA_HOME");
    if (named != nullptr && *named != '\0') {
        return named;
    }
    const char* home = std::getenv("HOME");
    return std::string(home != nullptr ? home : "") + "/.local/share";
}

/// The child's environment, a text for each variable; made before fork, which must not allocate.
std::vector<std::string> childEnvironment(const std::filesystem::path& home) {
    std::vector<std::string> variables;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const std::string_view name = text.substr(0, text.find('='));
        if (std::find(std::begin(kReplaced), std::end(kReplaced), name) == std::end(kReplaced)) {
            variables.emplace_back(text);
        }
    }
    variables.push_back("HOME=" + home.string());
    variables.push_back("XDG_DATA_HOME=" + userDataHome());
    variables.emplace_back("LISTEN_FDS=1");
    return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> out;
    out.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        out.push_back(text.data());
    }
    out.push_back(nullptr);
    return out;
}

[[noreturn]] void becomeExtension(int socket, pid_t agent, char* const* arguments,
                                  char* const* environment) {
    // A terminal's interrupt is for the agent, which ends its extension in order; and when the
    // agent is killed, an extension that is busy with the GPU must not take its time to notice.
    setsid();
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != agent || prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        _exit(127);
    }
    // A socket that already stands at its place must still lose its close-on-exec flag.
    const bool placed = socket == kLaunchDescriptor ? fcntl(socket, F_SETFD, 0) == 0
                                                    : dup2(socket, kLaunchDescriptor) >= 0;
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    if (placed && syscall(SYS_close_range, kLaunchDescriptor + 1, ~0U, 0) == 0) {
        execve(arguments[0], arguments, environment);
    }
    _exit(127);
}

LaunchRecord recordOf(Kind kind) {
    LaunchRecord record{};
    record.kind = kind;
    return record;
}

} // namespace

Result<std::unique_ptr<LaunchHost>, std::string>
LaunchHost::start(MainLoop& loop, const LaunchRequest& request, HostHandlers handlers) {
    const std::filesystem::path program = request.bundle / request.bundle.stem();
    if (access(program.c_str(), X_OK) != 0) {
        return Failure{program.string() + " cannot be started: " + std::strerror(errno)};
    }
    std::error_code status;
    std::filesystem::create_directories(request.home, status);
    if (status) {
        return Failure{"the extension's home " + request.home.string() +
                       " cannot be made: " + status.message()};
    }
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) {
        return Failure{std::string("no launch socket can be made: ") + std::strerror(errno)};
    }
    FileDescriptor ours(ends[0]);
    const FileDescriptor theirs(ends[1]);

    std::vector<std::string> words{program.string()};
    std::vector<std::string> variables = childEnvironment(request.home);
    const std::vector<char*> arguments = pointers(words);
    const std::vector<char*> environment = pointers(variables);

    const pid_t agent = getpid();
    const pid_t pid = fork();
    if (pid == 0) {
        becomeExtension(theirs.get(), agent, arguments.data(), environment.data());
    }
    if (pid < 0) {
        return Failure{std::string("no process can be started: ") + std::strerror(errno)};
    }
    FileDescriptor process(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
    if (!process) {
        const std::string reason = std::strerror(errno);
        ::kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        return Failure{"the extension's process cannot be watched: " + reason};
    }
    return std::unique_ptr<LaunchHost>(
        new LaunchHost(loop, std::move(ours), pid, std::move(process), std::move(handlers)));
}

LaunchHost::LaunchHost(MainLoop& loop, FileDescriptor socket, pid_t pid, FileDescriptor process,
                       HostHandlers handlers)
    : socket_(std::move(socket)), pid_(pid), process_(std::move(process)),
      handlers_(std::move(handlers)),
      socketWatch_(loop.watch(socket_.descriptor(), EPOLLIN, [this](std::uint32_t) { drain(); })),
      processWatch_(loop.watch(process_.get(), EPOLLIN, [this](std::uint32_t) { reap(); })) {}

LaunchHost::~LaunchHost() {
    if (reaped_) {
        return;
    }
    shutdown(socket_.descriptor(), SHUT_RDWR);
    pollfd waited{.fd = process_.get(), .events = POLLIN, .revents = 0};
    if (poll(&waited, 1, kEndMilliseconds) <= 0) {
        kill();
    }
    waitpid(pid_, nullptr, 0);
}

bool LaunchHost::attach(std::uint32_t contextID) const {
    LaunchRecord record = recordOf(Kind::attach);
    record.contextID = contextID;
    return socket_.send(record);
}

bool LaunchHost::setScreens(std::span<const ScreenRecord> screens) const {
    LaunchRecord record = recordOf(Kind::screens);
    const std::size_t count = std::min(screens.size(), kMaxScreens);
    record.screenCount = static_cast<std::uint32_t>(count);
    std::copy_n(screens.begin(), count, record.screens.begin());
    return socket_.send(record);
}

bool LaunchHost::tick(std::uint32_t displayID) const {
    LaunchRecord record = recordOf(Kind::tick);
    record.displayID = displayID;
    return socket_.send(record);
}

void LaunchHost::kill() const {
    if (!reaped_) {
        ::kill(pid_, SIGKILL);
    }
}

FileDescriptor LaunchHost::connect() const {
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
        return {};
    }
    FileDescriptor ours(ends[0]);
    const FileDescriptor theirs(ends[1]);
    return socket_.send(recordOf(Kind::connect), theirs.get()) ? std::move(ours) : FileDescriptor();
}

void LaunchHost::drain() {
    while (socketWatch_) {
        auto next = socket_.receive();
        if (std::holds_alternative<Nothing>(next)) {
            return;
        }
        auto* received = std::get_if<Received>(&next);
        const Kind kind = received != nullptr ? received->record.kind : Kind{};
        if (kind != Kind::attached && kind != Kind::open && kind != Kind::links) {
            // An extension that closes its end, or talks nonsense, is of no more use; its end, when
            // it has come, is reported from its process.
            socketWatch_.reset();
            shutdown(socket_.descriptor(), SHUT_RDWR);
            ::kill(pid_, SIGTERM);
            return;
        }
        if (kind == Kind::attached) {
            handlers_.attached(received->record.contextID, std::move(received->descriptor));
        } else if (kind == Kind::open && handlers_.open) {
            handlers_.open(received->record.identifier.data());
        } else if (kind == Kind::links && handlers_.links) {
            handlers_.links(received->record.displayID, received->record.frameRate);
        }
    }
}

void LaunchHost::reap() {
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_) {
        return;
    }
    reaped_ = true;
    socketWatch_.reset();
    processWatch_.reset();
    handlers_.ended(description(status));
}

} // namespace vantor::launch
