#include "platform/linux/launch/launch_socket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>

namespace vantor::launch {
namespace {

/// Room for more descriptors than any record carries, so that a peer that passes too many is seen
/// and not truncated silently.
constexpr std::size_t kDescriptorRoom = 8;

bool mayCarryDescriptor(Kind kind) { return kind == Kind::connect || kind == Kind::attached; }

bool isKnown(Kind kind) {
    switch (kind) {
    case Kind::connect:
    case Kind::attach:
    case Kind::attached:
    case Kind::screens:
    case Kind::tick:
        return true;
    }
    return false;
}

/// Takes every descriptor of the message into ownership; the first is kept in `first`.
std::size_t takeDescriptors(msghdr& message, FileDescriptor& first) {
    std::size_t count = 0;
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
            continue;
        }
        const std::size_t here = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < here; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + i * sizeof(int), sizeof(int));
            FileDescriptor descriptor(number);
            if (count++ == 0) {
                first = std::move(descriptor);
            }
        }
    }
    return count;
}

} // namespace

LaunchSocket::LaunchSocket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {
    const int flags = fcntl(descriptor_.get(), F_GETFL);
    fcntl(descriptor_.get(), F_SETFL, flags | O_NONBLOCK);
}

bool LaunchSocket::send(const LaunchRecord& record, int passed) const {
    iovec part{.iov_base = const_cast<LaunchRecord*>(&record), .iov_len = sizeof(record)};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (passed >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof(control);
        cmsghdr* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(sizeof(int));
        std::memcpy(CMSG_DATA(header), &passed, sizeof(int));
    }
    ssize_t sent = 0;
    do {
        sent = sendmsg(descriptor_.get(), &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(sizeof(record));
}

std::variant<Received, Nothing, Ended> LaunchSocket::receive() const {
    Received received{};
    iovec part{.iov_base = &received.record, .iov_len = sizeof(received.record)};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * kDescriptorRoom)] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    ssize_t size = 0;
    do {
        size = recvmsg(descriptor_.get(), &message, MSG_CMSG_CLOEXEC);
    } while (size < 0 && errno == EINTR);
    if (size < 0) {
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return Nothing{};
        }
        return Ended{std::strerror(errno)};
    }
    const std::size_t descriptors = takeDescriptors(message, received.descriptor);
    if (size == 0 && descriptors == 0) {
        return Ended{"the other process closed the launch socket"};
    }
    if (size != static_cast<ssize_t>(sizeof(received.record)) ||
        (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0) {
        return Ended{"a launch packet of " + std::to_string(size) + " bytes is not the " +
                     std::to_string(sizeof(received.record)) + " of a record"};
    }
    if (!isKnown(received.record.kind)) {
        return Ended{"a launch record has the unknown kind " +
                     std::to_string(static_cast<std::uint32_t>(received.record.kind))};
    }
    if (received.record.screenCount > kMaxScreens) {
        return Ended{"a launch record of " + std::to_string(received.record.screenCount) +
                     " screens exceeds the limit of " + std::to_string(kMaxScreens)};
    }
    const bool wanted = mayCarryDescriptor(received.record.kind);
    if (descriptors > 1 || (descriptors == 1 && !wanted)) {
        return Ended{"a launch record carries " + std::to_string(descriptors) +
                     " descriptors where " + (wanted ? "at most one" : "none") + " belongs"};
    }
    return received;
}

} // namespace vantor::launch
