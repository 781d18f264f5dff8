#include "platform/linux/passed_descriptors.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>

namespace vantor {
namespace {

/// Room for more descriptors than any packet carries, so that a peer that passes too many is seen
/// and not truncated silently.
constexpr std::size_t kDescriptorRoom = 8;

constexpr const char* kClosed = "the other process closed the socket";

/// Takes every descriptor of the message into ownership.
void takeDescriptors(msghdr& message, Packet& packet) {
    for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) {
            continue;
        }
        const std::size_t count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + i * sizeof(int), sizeof(int));
            FileDescriptor descriptor(number);
            if (packet.descriptorCount++ == 0) {
                packet.descriptor = std::move(descriptor);
            }
        }
    }
}

Packet ended(std::string reason) {
    Packet packet;
    packet.outcome = Packet::Outcome::ended;
    packet.reason = std::move(reason);
    return packet;
}

} // namespace

bool sendPacket(int socket, const void* bytes, std::size_t size, int passed) {
    iovec part{.iov_base = const_cast<void*>(bytes), .iov_len = size};
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
        sent = sendmsg(socket, &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(size);
}

Packet receivePacket(int socket, void* bytes, std::size_t room) {
    iovec part{.iov_base = bytes, .iov_len = room};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * kDescriptorRoom)] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    ssize_t size = 0;
    do {
        size = recvmsg(socket, &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT);
    } while (size < 0 && errno == EINTR);
    if (size < 0) {
        if (errno == EAGAIN || errno == EWOULDBLOCK) {
            return {};
        }
        // A peer that left packets unread when it closed resets the connection.
        return ended(errno == ECONNRESET ? kClosed : std::strerror(errno));
    }
    Packet packet;
    takeDescriptors(message, packet);
    if (size == 0) {
        return ended(kClosed);
    }
    if ((message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0) {
        return ended("a packet is larger than any record");
    }
    packet.outcome = Packet::Outcome::received;
    packet.size = static_cast<std::size_t>(size);
    return packet;
}

} // namespace vantor
