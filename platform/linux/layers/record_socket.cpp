#include "platform/linux/layers/record_socket.h"

#include "platform/linux/passed_descriptors.h"

namespace vantor::layerwire {

bool RecordSocket::sendBytes(const void* bytes, std::size_t size, int passed) const {
    return sendPacket(descriptor_.get(), bytes, size, passed);
}

std::variant<Received, Nothing, Ended> RecordSocket::receive() const {
    Received received{};
    Packet packet = receivePacket(descriptor_.get(), received.bytes.data(), received.bytes.size());
    if (packet.outcome == Packet::Outcome::nothing) {
        return Nothing{};
    }
    if (packet.outcome == Packet::Outcome::ended) {
        return Ended{packet.reason};
    }
    const std::size_t expected =
        packet.size >= sizeof(Header) ? sizeOf(received.kind()) : std::size_t{0};
    if (packet.size != expected) {
        return Ended{"a layer packet of " + std::to_string(packet.size) +
                     " bytes is no record of its kind"};
    }
    const std::size_t wanted = carriesDescriptor(received.kind()) ? 1 : 0;
    if (packet.descriptorCount != wanted) {
        return Ended{"a layer record carries " + std::to_string(packet.descriptorCount) +
                     " descriptors where " + std::to_string(wanted) + " belong"};
    }
    received.descriptor = std::move(packet.descriptor);
    return received;
}

} // namespace vantor::layerwire
