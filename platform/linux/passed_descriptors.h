#pragma once
// Packets of a SOCK_SEQPACKET socket with descriptors beside them.

#include "platform/linux/file_descriptor.h"

#include <cstddef>
#include <string>

namespace vantor {

/// Sends one packet, with one descriptor when `passed` is none below 0. Never blocks, allocates
/// nothing. False when the peer is gone or its buffer is full.
[[nodiscard]] bool sendPacket(int socket, const void* bytes, std::size_t size, int passed);

/// What one look at a socket gave.
struct Packet {
    enum class Outcome { received, nothing, ended };

    Outcome outcome = Outcome::nothing;
    /// Of a received packet; a larger one than there was room for has ended the peer.
    std::size_t size = 0;
    /// All that came with it; only the first is kept, the others are closed.
    std::size_t descriptorCount = 0;
    FileDescriptor descriptor;
    /// Why the peer is gone.
    std::string reason;
};

/// Takes one packet of at most `room` bytes. Never blocks.
Packet receivePacket(int socket, void* bytes, std::size_t room);

} // namespace vantor
