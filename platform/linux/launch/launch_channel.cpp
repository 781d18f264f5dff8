#include "platform/linux/launch/launch_channel.h"

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/epoll.h>
#include <unistd.h>

namespace vantor::launch {

LaunchChannel::LaunchChannel(MainLoop& loop, FileDescriptor socket, ChannelHandlers handlers)
    : socket_(std::move(socket)), handlers_(std::move(handlers)),
      watch_(loop.watch(socket_.descriptor(), EPOLLIN, [this](std::uint32_t) { drain(); })) {
    // A request for a display may follow the announcement of it on another socket.
    watch_->setUrgency(Urgency::urgent);
}

LaunchChannel::~LaunchChannel() = default;

std::optional<FileDescriptor> LaunchChannel::takeFromEnvironment() {
    const char* count = std::getenv("LISTEN_FDS");
    const char* owner = std::getenv("LISTEN_PID");
    const bool ours = count != nullptr && std::string_view(count) == "1" &&
                      (owner == nullptr || std::to_string(getpid()) == owner);
    unsetenv("LISTEN_FDS");
    unsetenv("LISTEN_PID");
    if (!ours || fcntl(kLaunchDescriptor, F_SETFD, FD_CLOEXEC) < 0) {
        return std::nullopt;
    }
    return FileDescriptor(kLaunchDescriptor);
}

bool LaunchChannel::requestOpen(std::string_view identifier) const {
    LaunchRecord record{};
    record.kind = Kind::open;
    if (identifier.size() >= record.identifier.size()) {
        return false;
    }
    std::copy(identifier.begin(), identifier.end(), record.identifier.begin());
    return socket_.send(record);
}

void LaunchChannel::tellLinks(std::uint32_t displayID, std::uint32_t frameRate) const {
    LaunchRecord record{};
    record.kind = Kind::links;
    record.displayID = displayID;
    record.frameRate = frameRate;
    static_cast<void>(socket_.send(record));
}

void LaunchChannel::drain() {
    while (watch_) {
        auto next = socket_.receive();
        if (std::holds_alternative<Nothing>(next)) {
            return;
        }
        if (const auto* ended = std::get_if<Ended>(&next)) {
            close(ended->reason);
            return;
        }
        if (!handle(std::get<Received>(std::move(next)))) {
            return;
        }
    }
}

bool LaunchChannel::handle(Received received) {
    const LaunchRecord& record = received.record;
    switch (record.kind) {
    case Kind::connect:
        if (!received.descriptor) {
            close("a connect record carries no socket");
            return false;
        }
        handlers_.connect(std::move(received.descriptor));
        return true;
    case Kind::attach: {
        const std::optional<FileDescriptor> socket = handlers_.attach(record.contextID);
        LaunchRecord answer{};
        answer.kind = Kind::attached;
        answer.contextID = record.contextID;
        if (!socket_.send(answer, socket ? socket->get() : -1)) {
            close("the agent does not take an answer");
            return false;
        }
        return true;
    }
    case Kind::screens:
        handlers_.screens(std::span(record.screens).first(record.screenCount));
        return true;
    case Kind::tick:
        handlers_.tick(record.displayID);
        return true;
    case Kind::attached:
    case Kind::open:
    case Kind::links:
        break;
    }
    close("the agent sent a record that only the extension sends");
    return false;
}

void LaunchChannel::close(const std::string& reason) {
    watch_.reset();
    handlers_.closed(reason);
}

} // namespace vantor::launch
